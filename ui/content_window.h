#pragma once

#include "ui/view_services.h"

#include <QQuickView>
#include <QSize>

namespace brivanta {

// The app's one window, showing ContentView. The window stands for the device's screen: it opens at a
// phone's size, may be resized freely, and its width is the device's screen width (which decides the
// tablet idiom).
class ContentWindow : public QQuickView
{
    Q_OBJECT

public:
    static constexpr QSize phoneSize { 393, 852 };
    static constexpr QSize tabletSize { 1024, 1366 };

    // The objects must outlive the window.
    explicit ContentWindow(const ViewServices::Objects &objects, QWindow *parent = nullptr);
};

} // namespace brivanta
