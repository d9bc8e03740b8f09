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

// With a window the UI tests cover these paths; here, before the window and after it closes.
TEST(DesktopApplicationServices, WithoutAWindowThereIsNoSceneAndNothingIsPresented)
{
    DesktopDevice device { QStringLiteral("PC"), QStringLiteral("Debian GNU/Linux"), QStringLiteral("12") };
    DesktopShareSheet shareSheet;
    DesktopRatingPrompt ratingPrompt { QUrl(
        QStringLiteral("https://apps.apple.com/app/id1?action=write-review")) };
    DesktopApplicationServices application { device, shareSheet, ratingPrompt };
    testing::FakeBundleInfo bundle;
    testing::FakePreferences preferences;

    for (const bool closedWindow : { false, true }) {
        if (closedWindow) {
            auto window = std::make_unique<QWindow>();
            application.setWindow(window.get());
        }
        EXPECT_TRUE(application.connectedScenes().empty()) << closedWindow;

        shareApp(bundle, application);
        for (int appearance = 1; appearance <= 5; ++appearance)
            incrementLaunchCount(preferences, application);

        EXPECT_FALSE(shareSheet.isVisible()) << closedWindow;
        EXPECT_FALSE(ratingPrompt.isVisible()) << closedWindow;
    }
    EXPECT_EQ(preferences.integerForKey(QStringLiteral("launchCount")), 10);
}

} // namespace
} // namespace brivanta
