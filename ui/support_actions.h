#pragma once

#include <QObject>

namespace brivanta {

class ApplicationServices;
class BundleInfo;
class Device;
class LocaleInfo;

// The support card's, promotion cards' and share-and-rate row's actions, for the views. Main thread only.
class SupportActions : public QObject
{
    Q_OBJECT

public:
    struct Dependencies
    {
        const BundleInfo &bundle;
        const Device &device;
        const LocaleInfo &locale;
        ApplicationServices &application;
    };

    explicit SupportActions(Dependencies dependencies, QObject *parent = nullptr);

    Q_INVOKABLE void contactSupport();
    Q_INVOKABLE void openOrvindoStorePage();
    Q_INVOKABLE void openVelloquinStorePage();
    Q_INVOKABLE void shareApp();
    Q_INVOKABLE void rateApp();

private:
    Dependencies m_dependencies;
};

} // namespace brivanta
