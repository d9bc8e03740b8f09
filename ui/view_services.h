#pragma once

#include <QObject>

class QQmlEngine;

namespace brivanta {

class DesktopDevice;
class DesktopRatingPrompt;
class DesktopShareSheet;
class MainViewModel;
class SupportActions;

// The objects one QML engine's singletons stand for. The application (or a test) makes them, attaches
// them to the engine before loading a view, and keeps them alive as long as the engine.
class ViewServices : public QObject
{
    Q_OBJECT

public:
    struct Objects
    {
        MainViewModel *mainViewModel = nullptr;
        DesktopDevice *device = nullptr;
        SupportActions *supportActions = nullptr;
        DesktopShareSheet *shareSheet = nullptr;
        DesktopRatingPrompt *ratingPrompt = nullptr;
    };

    static void attach(QQmlEngine &engine, const Objects &objects);
    // The objects attached to the engine; fatal when none were.
    static const Objects &of(const QQmlEngine *engine);

private:
    ViewServices(const Objects &objects, QObject *parent);

    Objects m_objects;
};

} // namespace brivanta
