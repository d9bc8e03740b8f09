#pragma once

#include "platform/application_services.h"

#include <QPointer>
#include <QWindow>
#include <memory>

namespace brivanta {

class DesktopDevice;
class DesktopRatingPrompt;
class DesktopShareSheet;

// The desktop application: the app's one window is the one window scene, its content the root
// controller's view. Before a window is set there is no scene, so sheets and prompts are silent
// no-ops. Links go to QDesktopServices. Share sheets are popovers while the device has the tablet
// idiom, as on a tablet.
class DesktopApplicationServices final : public ApplicationServices
{
public:
    DesktopApplicationServices(
        DesktopDevice &device, DesktopShareSheet &shareSheet, DesktopRatingPrompt &ratingPrompt);
    ~DesktopApplicationServices() override;

    // The app's window, or nullptr; a destroyed window counts as none.
    void setWindow(QWindow *window);

    void openURL(const QUrl &url) override;
    std::vector<Scene *> connectedScenes() const override;
    bool shareSheetHasPopover() const override;
    void requestReview(WindowScene &scene) override;

private:
    class RootController;
    class AppWindow;
    class AppScene;

    DesktopDevice &m_device;
    DesktopRatingPrompt &m_ratingPrompt;
    QPointer<QWindow> m_window;
    std::unique_ptr<RootController> m_root;
    std::unique_ptr<AppWindow> m_appWindow;
    std::unique_ptr<AppScene> m_scene;
};

} // namespace brivanta
