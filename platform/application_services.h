#pragma once

// How the application services seam works. It mirrors the phone platform's object graph on purpose:
// application -> connected scenes -> window scene -> windows -> root view controller, which presents the
// share sheet. The rules in support/ (which scene presents, when a share sheet needs a popover anchor) are
// written against that graph, so the same code drives the phone platform, the Qt backend
// (DesktopApplicationServices: one scene, the app's window, an in-app share sheet and rating prompt) and
// the fakes in tests. Main thread only.

#include <QRectF>
#include <QString>
#include <QUrl>
#include <optional>
#include <variant>
#include <vector>

namespace brivanta {

class WindowScene;
class ViewController;

// Where a popover's arrow may point; none (0) lets the popover float without an arrow.
enum PopoverArrowDirection : unsigned {
    PopoverArrowDirectionNone = 0,
    PopoverArrowDirectionUp = 1u << 0,
    PopoverArrowDirectionDown = 1u << 1,
    PopoverArrowDirectionLeft = 1u << 2,
    PopoverArrowDirectionRight = 1u << 3,
    PopoverArrowDirectionAny = 0xF,
};

// One item handed to the share sheet: a text or a link (kept as a link, not as text).
using ActivityItem = std::variant<QString, QUrl>;

// Anchoring of the share sheet where the phone platform shows it as a popover.
struct PopoverAnchor
{
    ViewController *sourceView = nullptr; // the controller whose view anchors the popover
    QRectF sourceRect; // in the source view's coordinates
    unsigned permittedArrowDirections = PopoverArrowDirectionAny;
};

// The system share sheet, built with an ordered list of items and no custom activities.
struct ShareSheet
{
    std::vector<ActivityItem> activityItems;
    // Set by the caller only when the phone platform presents share sheets as popovers.
    std::optional<PopoverAnchor> popover;
};

// A window's root controller: owns the view that fills the window and presents sheets over it.
class ViewController
{
public:
    virtual ~ViewController() = default;
    // The bounds of the controller's view, in its own coordinates.
    virtual QRectF viewBounds() const = 0;
    // Presents the sheet on this controller itself; no completion.
    virtual void presentShareSheet(const ShareSheet &sheet, bool animated) = 0;
};

class Window
{
public:
    virtual ~Window() = default;
    // Nothing when the window has no root controller yet.
    virtual ViewController *rootViewController() const = 0;
};

// A connected scene. Only window scenes can present a share sheet or a review prompt.
class Scene
{
public:
    virtual ~Scene() = default;
    // This scene as a window scene, or nothing when it is another kind of scene.
    virtual WindowScene *asWindowScene() { return nullptr; }
};

class WindowScene : public Scene
{
public:
    WindowScene *asWindowScene() override { return this; }
    // The scene's windows, first one first; may be empty.
    virtual std::vector<Window *> windows() const = 0;
};

// The shared application's services. Main thread only. Pointers handed out are owned by the
// application and stay valid until control returns to the event loop.
class ApplicationServices
{
public:
    virtual ~ApplicationServices() = default;
    // Hands the URL to the system (browser, mail app, store); the outcome is not reported.
    virtual void openURL(const QUrl &url) = 0;
    // The connected scenes in the phone platform's own iteration order; may be empty.
    virtual std::vector<Scene *> connectedScenes() const = 0;
    // Whether share sheets are shown as popovers (tablets), which then need an anchor.
    virtual bool shareSheetHasPopover() const = 0;
    // Asks the store to show its rating prompt in the scene; whether one appears is not reported.
    virtual void requestReview(WindowScene &scene) = 0;
};

} // namespace brivanta
