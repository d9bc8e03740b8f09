#include "brivanta_build_config.h"
#include "fakes/fake_application_services.h"
#include "fakes/fake_bundle_info.h"
#include "fakes/fake_preferences.h"
#include "support/launch_counter.h"
#include "support/share_and_rate.h"

#include <gtest/gtest.h>
#include <limits>

namespace brivanta {
namespace {

using namespace testing;

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
        const auto &[sheet, animated] = root.presented.front();
        EXPECT_TRUE(animated);
        ASSERT_EQ(sheet.activityItems.size(), 2u);
        EXPECT_EQ(std::get<QString>(sheet.activityItems[0]), shareText(bundle));
        EXPECT_EQ(std::get<QUrl>(sheet.activityItems[1]).toString(),
            QStringLiteral("https://%1/app/id%2").arg(build::storeHost, build::storeAppId));
        ASSERT_EQ(sheet.popover.has_value(), hasPopover);
        if (hasPopover) { // floating at the centre of the root view, with no arrow
            EXPECT_EQ(sheet.popover->sourceView, &root);
            EXPECT_EQ(sheet.popover->sourceRect, QRectF(522, 370, 0, 0));
            EXPECT_EQ(sheet.popover->permittedArrowDirections, 0u);
        }
    }
}

TEST(ShareApp, WithoutARootInTheFirstWindowOfTheFirstWindowSceneDoesNothingAndTriesNoOther)
{
    // No scene; another kind of scene first; a window scene without windows; a first window without a root.
    // Each but the first has a usable root that a fallback would wrongly pick.
    FakeApplicationServices applications[4];
    applications[1].addScene<FakeOtherScene>();
    applications[2].addScene<FakeWindowScene>();
    auto &noRoot = applications[3].addScene<FakeWindowScene>();
    noRoot.addWindow().root.reset();
    const FakeViewController *bystanders[] = { &applications[1].addWindowSceneWithRoot(),
        &applications[2].addWindowSceneWithRoot(), noRoot.addWindow().root.get() };

    for (FakeApplicationServices &application : applications) {
        shareApp(FakeBundleInfo(), application);
        EXPECT_TRUE(application.openedURLs.empty());
    }
    for (const FakeViewController *bystander : bystanders)
        EXPECT_TRUE(bystander->presented.empty());
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
    EXPECT_EQ(application.reviewRequests, (std::vector<WindowScene *> { &scene, &scene }));

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
