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
        QDesktopServices::setUrlHandler("https", this, "open");
        QDesktopServices::setUrlHandler("mailto", this, "open");
    }
    ~UrlRecorder() override
    {
        QDesktopServices::unsetUrlHandler("https");
        QDesktopServices::unsetUrlHandler("mailto");
    }

    std::vector<QUrl> opened;

public slots:
    void open(const QUrl &url) { opened.push_back(url); }
};

} // namespace brivanta::testing
