#pragma once

#include "ui/view_services.h"

#include <QQuickView>
#include <QRect>
#include <QSize>

namespace brivanta {

// The app's one window, showing ContentView. The window stands for the device's screen: it opens at a
// phone's size (smaller, in the phone's proportions, where the screen is too short for it), may be
// resized freely, and its width is the device's screen width (which decides the tablet idiom).
class ContentWindow : public QQuickView
{
    Q_OBJECT

public:
    static constexpr QSize phoneSize { 393, 852 };
    static constexpr QSize tabletSize { 1024, 1366 };
    static constexpr QSize minimumSize { 320, 480 };
    // Room left for the window manager's title bar and frame, which are not known before the window is
    // shown.
    static constexpr int frameAllowance = 48;

    // The first size on a screen whose free area (without panels) is `available`.
    [[nodiscard]] static QSize initialSize(const QRect &available);

    // The objects must outlive the window.
    explicit ContentWindow(const ViewServices::Objects &objects, QWindow *parent = nullptr);
};

} // namespace brivanta
