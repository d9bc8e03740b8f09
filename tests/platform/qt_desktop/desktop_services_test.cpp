#include "fakes/fake_application_services.h"
#include "fakes/fake_bundle_info.h"
#include "fakes/fake_preferences.h"
#include "platform/qt/desktop_application_services.h"
#include "platform/qt/desktop_device.h"
#include "platform/qt/desktop_rating_prompt.h"
#include "platform/qt/desktop_share_sheet.h"
#include "platform/qt/settings_preferences.h"
#include "support/launch_counter.h"
#include "support/share_and_rate.h"
#include "url_recorder.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QUrlQuery>
#include <QWindow>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

const QString storePage = "https://apps.apple.com/app/id6742517203";
const QUrl review(storePage + "?action=write-review");

TEST(DesktopShareSheet, CopyAndSendByEmailShareTheTextThenTheLinkAndClose)
{
    testing::UrlRecorder recorder;
    DesktopShareSheet sheet;
    const QString text = "Ads & trackers? 🚀 Gone!\n\n", shared = text + storePage;
    sheet.present({ { text, QUrl(storePage) }, std::nullopt });
    sheet.copyToClipboard();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), shared);
    EXPECT_FALSE(sheet.isVisible());

    sheet.present({ { text, QUrl(storePage) }, std::nullopt });
    sheet.sendByEmail();
    ASSERT_EQ(recorder.opened.size(), 1u);
    EXPECT_EQ(recorder.opened[0].toString(QUrl::RemoveQuery), "mailto:");
    EXPECT_EQ(QUrlQuery(recorder.opened[0]).queryItemValue("body", QUrl::FullyDecoded), shared);
    EXPECT_FALSE(sheet.isVisible());
}

TEST(DesktopApplicationServices, PresentsOnlyWhileAWindowIsOpenAndThePromptOpensTheReviewLink)
{
    testing::UrlRecorder recorder;
    DesktopDevice device { "PC", "Debian GNU/Linux", "12" };
    DesktopShareSheet shareSheet;
    DesktopRatingPrompt ratingPrompt(review);
    DesktopApplicationServices application { device, shareSheet, ratingPrompt };
    testing::FakePreferences preferences;
    const auto shareAndAppearFiveTimes = [&] {
        shareApp(testing::FakeBundleInfo(), application);
        for (int appearance = 1; appearance <= 5; ++appearance)
            incrementLaunchCount(preferences, application);
        return std::pair { shareSheet.isVisible(), ratingPrompt.isVisible() };
    };

    EXPECT_EQ(shareAndAppearFiveTimes(), std::pair(false, false)) << "before the window";
    application.setWindow(std::make_unique<QWindow>().get());
    EXPECT_EQ(shareAndAppearFiveTimes(), std::pair(false, false)) << "after the window has closed";
    QWindow window;
    application.setWindow(&window);
    ASSERT_EQ(shareAndAppearFiveTimes(), std::pair(true, true));
    ratingPrompt.openReview();
    EXPECT_EQ(recorder.opened, std::vector { review });
    EXPECT_FALSE(ratingPrompt.isVisible());
}

TEST(SettingsPreferences, TheLaunchCountSurvivesIntoANewStoreAndADamagedOneCountsAgainFromOne)
{
    QTemporaryDir directory;
    const QString file = directory.filePath("Brivanta.conf"), key = "launchCount";
    testing::FakeApplicationServices application;
    SettingsPreferences first(file);
    for (int appearance = 1; appearance <= 3; ++appearance)
        incrementLaunchCount(first, application);
    // A second store on the same file sees each write at once, before the first goes away.
    EXPECT_EQ(SettingsPreferences(file).integerForKey(key), 3);

    for (const char *damaged : { "five", "2.5", "", "99999999999999999999", "0x10" }) {
        QSettings(file, QSettings::NativeFormat).setValue(key, QString::fromUtf8(damaged));
        SettingsPreferences preferences(file);
        incrementLaunchCount(preferences, application);
        EXPECT_EQ(SettingsPreferences(file).integerForKey(key), 1) << damaged;
    }
}

} // namespace
} // namespace brivanta
