#include "fakes/fake_bundle_info.h"
#include "fakes/fake_preferences.h"
#include "platform/qt/desktop_application_services.h"
#include "platform/qt/desktop_device.h"
#include "platform/qt/desktop_rating_prompt.h"
#include "platform/qt/desktop_share_sheet.h"
#include "support/launch_counter.h"
#include "support/share_and_rate.h"

#include <QWindow>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::FakeBundleInfo;
using testing::FakePreferences;

struct DesktopApplicationServicesTest : ::testing::Test
{
    DesktopDevice device { QStringLiteral("PC"), QStringLiteral("Debian GNU/Linux"), QStringLiteral("12") };
    DesktopShareSheet shareSheet;
    DesktopRatingPrompt ratingPrompt { QUrl(
        QStringLiteral("https://apps.apple.com/app/id6742517203?action=write-review")) };
    DesktopApplicationServices application { device, shareSheet, ratingPrompt };
    FakeBundleInfo bundle;
    FakePreferences preferences;
};

TEST_F(DesktopApplicationServicesTest, WithoutAWindowThereIsNoSceneAndNothingIsPresented)
{
    EXPECT_TRUE(application.connectedScenes().empty());

    shareApp(bundle, application);
    for (int appearance = 1; appearance <= 5; ++appearance)
        incrementLaunchCount(preferences, application);

    EXPECT_FALSE(shareSheet.isVisible());
    EXPECT_FALSE(ratingPrompt.isVisible());
    EXPECT_EQ(preferences.integerForKey(QStringLiteral("launchCount")), 5);
}

TEST_F(DesktopApplicationServicesTest, AWideWindowSharesInACentredArrowlessPopover)
{
    QWindow window;
    window.resize(1024, 700);
    application.setWindow(&window);
    device.setWindowWidth(1024);

    shareApp(bundle, application);

    ASSERT_TRUE(shareSheet.isVisible());
    EXPECT_TRUE(shareSheet.isPopover());
    EXPECT_TRUE(shareSheet.isCentred());
    EXPECT_EQ(shareSheet.sourceRect(), QRectF(512, 350, 0, 0));
    EXPECT_TRUE(shareSheet.text().startsWith(QStringLiteral("🚀 Check out this app ! 🎉\n")));
}

TEST_F(DesktopApplicationServicesTest, ANarrowWindowSharesInAPlainSheet)
{
    QWindow window;
    window.resize(390, 844);
    application.setWindow(&window);
    device.setWindowWidth(390);

    shareApp(bundle, application);

    ASSERT_TRUE(shareSheet.isVisible());
    EXPECT_FALSE(shareSheet.isPopover());
}

TEST_F(DesktopApplicationServicesTest, AClosedWindowLeavesNoScene)
{
    auto window = std::make_unique<QWindow>();
    application.setWindow(window.get());
    window.reset();

    EXPECT_TRUE(application.connectedScenes().empty());
    shareApp(bundle, application);
    EXPECT_FALSE(shareSheet.isVisible());
}

} // namespace
} // namespace brivanta
