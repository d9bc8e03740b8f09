#include "brivanta_build_config.h"
#include "fakes/fake_application_services.h"
#include "fakes/fake_bundle_info.h"
#include "fakes/fake_preferences.h"
#include "support/launch_counter.h"
#include "support/share_and_rate.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace brivanta {
namespace {

using testing::FakeApplicationServices;
using testing::FakeBundleInfo;
using testing::FakeOtherScene;
using testing::FakePreferences;
using testing::FakeViewController;
using testing::FakeWindowScene;

const QString launchCount = QStringLiteral("launchCount");

FakeBundleInfo bundleWith(QVariant name, QVariant version)
{
    FakeBundleInfo bundle;
    bundle.dictionary.insert(QStringLiteral("CFBundleName"), name);
    bundle.dictionary.insert(QStringLiteral("CFBundleShortVersionString"), version);
    return bundle;
}

TEST(ShareText, ComposesOpeningNameSpaceVersionAndBodyWithFallbacksForValuesThatAreNotText)
{
    const QByteArray body = "! \xF0\x9F\x8E\x89\n\n"
                            "\xE2\x9C\xA8 Enjoy the latest features, bug fixes, and sleek UI improvements!\n"
                            "\xF0\x9F\x93\xB2 New users, download now! \xF0\x9F\x94\x84 Existing users, "
                            "update for the best experience! \xF0\x9F\x94\xA5\n\n";
    EXPECT_EQ(shareText(bundleWith(QStringLiteral("Brivanta"), QStringLiteral("2.1"))).toUtf8(),
        "\xF0\x9F\x9A\x80 Check out Brivanta 2.1" + body);
    EXPECT_EQ(shareText(bundleWith(42, 2.1)).toUtf8(), "\xF0\x9F\x9A\x80 Check out this app " + body);
}

TEST(ShareApp, PresentsTextThenStoreLinkOnTheRootControllerAnimatedAsAPopoverWhereThereIsOne)
{
    const FakeBundleInfo bundle = bundleWith(QStringLiteral("Brivanta"), QStringLiteral("2.1"));
    for (const bool hasPopover : { false, true }) {
        FakeApplicationServices application;
        application.hasPopover = hasPopover;
        FakeViewController &root = application.addWindowSceneWithRoot();
        root.bounds = QRectF(10, 20, 1024, 700);

        shareApp(bundle, application);

        ASSERT_EQ(root.presented.size(), 1u);
        const auto &presentation = root.presented.front();
        EXPECT_TRUE(presentation.animated);
        const auto &items = presentation.sheet.activityItems;
        ASSERT_EQ(items.size(), 2u);
        EXPECT_EQ(std::get<QString>(items[0]), shareText(bundle));
        EXPECT_EQ(std::get<QUrl>(items[1]).toString(),
            QStringLiteral("https://%1/app/id%2").arg(build::storeHost, build::storeAppId));
        const std::optional<PopoverAnchor> &popover = presentation.sheet.popover;
        ASSERT_EQ(popover.has_value(), hasPopover);
        if (popover) {
            // Floating at the centre of the root view, with no arrow.
            EXPECT_EQ(popover->sourceView, &root);
            EXPECT_EQ(popover->sourceRect, QRectF(522, 370, 0, 0));
            EXPECT_EQ(popover->permittedArrowDirections, 0u);
        }
    }
}

TEST(ShareApp, WithoutARootInTheFirstWindowOfTheFirstWindowSceneDoesNothingAndTriesNoOther)
{
    // Each returns a usable root that a fallback would wrongly pick: in a later scene or a later window.
    const std::function<FakeViewController *(FakeApplicationServices &)> setups[] = {
        [](FakeApplicationServices &) -> FakeViewController * { return nullptr; }, // no scene
        [](FakeApplicationServices &a) {
            a.addScene<FakeOtherScene>();
            return &a.addWindowSceneWithRoot();
        },
        [](FakeApplicationServices &a) { // a window scene without windows
            a.addScene<FakeWindowScene>();
            return &a.addWindowSceneWithRoot();
        },
        [](FakeApplicationServices &a) {
            auto &scene = a.addScene<FakeWindowScene>();
            scene.addWindow().root.reset();
            return scene.addWindow().root.get();
        },
    };
    for (std::size_t i = 0; i < std::size(setups); ++i) {
        FakeApplicationServices application;
        const FakeViewController *bystander = setups[i](application);
        shareApp(FakeBundleInfo(), application);
        EXPECT_TRUE(bystander == nullptr || bystander->presented.empty()) << i;
        EXPECT_TRUE(application.openedURLs.empty()) << i;
    }
}

TEST(ShareAppDeathTest, AStoreLinkThatDoesNotParseIsFatal)
{
    FakeApplicationServices application;
    application.addWindowSceneWithRoot();
    EXPECT_DEATH(
        shareApp(FakeBundleInfo(), application, QStringLiteral("https://apps example.com/app/id1")), "");
}

TEST(LaunchCounter, AsksForAReviewOnEveryFifthAppearanceInTheWindowScene)
{
    FakePreferences preferences;
    FakeApplicationServices application;
    // The prompt needs only the scene, not a window in it (windows matter to the share sheet).
    auto &scene = application.addScene<FakeWindowScene>();

    const std::vector<std::size_t> expectedRequests { 0, 0, 0, 0, 1, 1, 1, 1, 1, 2, 2 };
    for (int appearance = 1; appearance <= 11; ++appearance) {
        incrementLaunchCount(preferences, application);
        EXPECT_EQ(preferences.integerForKey(launchCount), appearance);
        EXPECT_EQ(application.reviewRequests.size(), expectedRequests[appearance - 1]) << appearance;
    }
    for (WindowScene *requested : application.reviewRequests)
        EXPECT_EQ(requested, &scene);

    // From a stored count, too.
    preferences.values.insert(launchCount, qlonglong(1'000'004));
    incrementLaunchCount(preferences, application);
    EXPECT_EQ(preferences.integerForKey(launchCount), 1'000'005);
    EXPECT_EQ(application.reviewRequests.size(), 3u);
}

TEST(LaunchCounter, WithoutAWindowSceneFirstStillCountsButRequestsNothing)
{
    for (const bool otherKindFirst : { false, true }) {
        FakePreferences preferences;
        FakeApplicationServices application;
        if (otherKindFirst) {
            application.addScene<FakeOtherScene>();
            application.addScene<FakeWindowScene>(); // never considered: only the first scene is
        }
        for (int appearance = 1; appearance <= 10; ++appearance)
            incrementLaunchCount(preferences, application);

        EXPECT_EQ(preferences.integerForKey(launchCount), 10) << otherKindFirst;
        EXPECT_EQ(preferences.writes, 10) << otherKindFirst;
        EXPECT_TRUE(application.reviewRequests.empty()) << otherKindFirst;
    }
}

TEST(LaunchCounterDeathTest, OverflowOfTheCounterIsFatal)
{
    FakePreferences preferences;
    preferences.values.insert(launchCount, std::numeric_limits<qlonglong>::max());
    FakeApplicationServices application;
    EXPECT_DEATH(incrementLaunchCount(preferences, application), "");
}

} // namespace
} // namespace brivanta
