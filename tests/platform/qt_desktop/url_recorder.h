#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QUrl>
#include <vector>

namespace brivanta::testing {

// Catches the https: and mailto: links QDesktopServices::openUrl would hand to the desktop, while alive.
class UrlRecorder final : public QObject
{
    Q_OBJECT

public:
    UrlRecorder()
    {
        for (const char *scheme : schemes)
            QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "open");
    }
    ~UrlRecorder() override
    {
        for (const char *scheme : schemes)
            QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    }

    std::vector<QUrl> opened;

public slots:
    void open(const QUrl &url) { opened.push_back(url); }

private:
    static constexpr const char *schemes[] = { "https", "mailto" };
};

} // namespace brivanta::testing
