#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>
#include <vector>

namespace brivanta::testing {

// Catches what QDesktopServices::openUrl would hand to the desktop, for the given schemes, while alive.
class UrlRecorder final : public QObject
{
    Q_OBJECT

public:
    explicit UrlRecorder(QStringList schemes = { QStringLiteral("https"), QStringLiteral("mailto") })
        : m_schemes(std::move(schemes))
    {
        for (const QString &scheme : m_schemes)
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~UrlRecorder() override
    {
        for (const QString &scheme : m_schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    }

    std::vector<QUrl> opened;

public slots:
    void open(const QUrl &url) { opened.push_back(url); }

private:
    QStringList m_schemes;
};

} // namespace brivanta::testing
