#include "platform/qt/desktop_application_services.h"

#include "platform/qt/desktop_device.h"
#include "platform/qt/desktop_rating_prompt.h"
#include "platform/qt/desktop_share_sheet.h"

#include <QDesktopServices>

namespace brivanta {

class DesktopApplicationServices::RootController final : public ViewController
{
public:
    RootController(const QPointer<QWindow> &window, DesktopShareSheet &shareSheet)
        : m_window(window)
        , m_shareSheet(shareSheet)
    { }

    QRectF viewBounds() const override
    {
        return m_window ? QRectF(0, 0, m_window->width(), m_window->height()) : QRectF();
    }

    // Sheets appear with the in-app sheet's own transition, so "animated" needs no handling here.
    void presentShareSheet(const ShareSheet &sheet, bool) override { m_shareSheet.present(sheet); }

private:
    const QPointer<QWindow> &m_window;
    DesktopShareSheet &m_shareSheet;
};

class DesktopApplicationServices::AppWindow final : public Window
{
public:
    explicit AppWindow(RootController &root)
        : m_root(root)
    { }
    ViewController *rootViewController() const override { return &m_root; }

private:
    RootController &m_root;
};

class DesktopApplicationServices::AppScene final : public WindowScene
{
public:
    explicit AppScene(AppWindow &window)
        : m_window(window)
    { }
    std::vector<Window *> windows() const override { return { &m_window }; }

private:
    AppWindow &m_window;
};

DesktopApplicationServices::DesktopApplicationServices(
    DesktopDevice &device, DesktopShareSheet &shareSheet, DesktopRatingPrompt &ratingPrompt)
    : m_device(device)
    , m_ratingPrompt(ratingPrompt)
    , m_root(std::make_unique<RootController>(m_window, shareSheet))
    , m_appWindow(std::make_unique<AppWindow>(*m_root))
    , m_scene(std::make_unique<AppScene>(*m_appWindow))
{ }

DesktopApplicationServices::~DesktopApplicationServices() = default;

void DesktopApplicationServices::setWindow(QWindow *window)
{
    m_window = window;
}

void DesktopApplicationServices::openURL(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

std::vector<Scene *> DesktopApplicationServices::connectedScenes() const
{
    if (!m_window)
        return {};
    return { m_scene.get() };
}

bool DesktopApplicationServices::shareSheetHasPopover() const
{
    return m_device.isTablet();
}

void DesktopApplicationServices::requestReview(WindowScene &)
{
    m_ratingPrompt.show();
}

} // namespace brivanta
