#pragma once

#include "platform/application_services.h"

#include <memory>

namespace brivanta::testing {

class FakeViewController final : public ViewController
{
public:
    struct Presentation
    {
        ShareSheet sheet;
        bool animated;
    };

    QRectF bounds { 0, 0, 820, 1180 };
    std::vector<Presentation> presented;

    QRectF viewBounds() const override { return bounds; }
    void presentShareSheet(const ShareSheet &sheet, bool animated) override
    {
        presented.push_back({ sheet, animated });
    }
};

class FakeWindow final : public Window
{
public:
    std::unique_ptr<FakeViewController> root = std::make_unique<FakeViewController>();
    ViewController *rootViewController() const override { return root.get(); }
};

class FakeWindowScene final : public WindowScene
{
public:
    std::vector<std::unique_ptr<FakeWindow>> ownedWindows;

    FakeWindow &addWindow()
    {
        ownedWindows.push_back(std::make_unique<FakeWindow>());
        return *ownedWindows.back();
    }
    std::vector<Window *> windows() const override
    {
        std::vector<Window *> result;
        for (const auto &window : ownedWindows)
            result.push_back(window.get());
        return result;
    }
};

// A scene of another kind (an external display's, say): not a window scene.
class FakeOtherScene final : public Scene
{
};

// Records what the app asks of the application services; scenes are set up by the test, first one first.
class FakeApplicationServices final : public ApplicationServices
{
public:
    std::vector<std::unique_ptr<Scene>> scenes;
    bool hasPopover = false;
    std::vector<QUrl> openedURLs;
    std::vector<WindowScene *> reviewRequests;

    template <typename SceneType> SceneType &addScene()
    {
        scenes.push_back(std::make_unique<SceneType>());
        return static_cast<SceneType &>(*scenes.back());
    }
    // The usual case: one window scene with one window that has a root controller.
    FakeViewController &addWindowSceneWithRoot() { return *addScene<FakeWindowScene>().addWindow().root; }

    void openURL(const QUrl &url) override { openedURLs.push_back(url); }
    std::vector<Scene *> connectedScenes() const override
    {
        std::vector<Scene *> result;
        for (const auto &scene : scenes)
            result.push_back(scene.get());
        return result;
    }
    bool shareSheetHasPopover() const override { return hasPopover; }
    void requestReview(WindowScene &scene) override { reviewRequests.push_back(&scene); }
};

} // namespace brivanta::testing
