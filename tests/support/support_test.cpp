#include "brivanta_build_config.h"
#include "fakes/fake_application_services.h"
#include "fakes/fake_bundle_info.h"
#include "fakes/fake_device.h"
#include "fakes/fake_locale_info.h"
#include "fakes/fake_preferences.h"
#include "support/launch_counter.h"
#include "support/open_link.h"
#include "support/percent_encoding.h"
#include "support/share_and_rate.h"
#include "support/support_request.h"

#include <QUrlQuery>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using namespace testing;

const QByteArray whiteFlag = "🏳️";

// A German user on an iPhone.
struct GermanUser
{
    GermanUser()
    {
        bundle.dictionary = { { "CFBundleName", "Brivanta" }, { "CFBundleShortVersionString", "1.0" } };
        locale.languages = { "de-DE", "en" };
        locale.region = "DE";
        locale.languageNames = { { "de-DE", "German (Germany)" } };
        locale.regionNames = { { "DE", "Germany" } };
    }

    QByteArray link()
    {
        FakeApplicationServices application;
        contactSupport(bundle, device, locale, application);
        EXPECT_EQ(application.openedURLs.size(), 1u);
        return application.openedURLs.at(0).toEncoded();
    }
    QByteArray body()
    {
        return QUrlQuery(QUrl::fromEncoded(link())).queryItemValue("body", QUrl::FullyDecoded).toUtf8();
    }

    FakeBundleInfo bundle;
    FakeDevice device;
    FakeLocaleInfo locale;
};

TEST(ContactSupport, OpensOneMailToSupportWithTheFixedSubjectAndBody)
{
    GermanUser user;
    EXPECT_TRUE(user.link().startsWith(QByteArray("mailto:") + build::supportMailbox
        + "?subject=%F0%9F%9A%80%20Support%20Request%20-%20Brivanta&body="));
    EXPECT_EQ(user.body(),
        "Hello Support Team, 👋\n\nI need assistance with Brivanta. Below are my app and device details:\n\n"
        "📱 App Info\n- App Name: Brivanta\n- Version: 1.0\n\n🔧 Device Info\n- Model: iPhone\n"
        "- OS Version: iOS 17.2\n\n🌍 Locale\n- Language: German (Germany)\n- Country: Germany 🇩🇪\n\n"
        "📝 Issue Description:\n(Please describe your issue here...)\n\nThanks for your help! 🙏");
}

// No language at all is what a C locale leaves.
TEST(ContactSupport, MissingDetailsReadUnknownInTheBody)
{
    GermanUser user;
    user.bundle.dictionary = { { "CFBundleShortVersionString", 3 } };
    user.locale.languages = {};
    user.locale.region = std::nullopt;
    const QByteArray body = user.body();
    EXPECT_TRUE(body.contains("- App Name: Unknown App\n- Version: Unknown Version\n\n"))
        << body.toStdString();
    EXPECT_TRUE(body.contains("- Language: Unknown\n- Country: Unknown " + whiteFlag + "\n\n"));
}

TEST(FlagForRegionCode, IsRegionalIndicatorsOrTheWhiteFlag)
{
    // Two characters that are not letters still shift; a shift past U+10FFFF is dropped. An accented letter
    // written with a combining mark is one character.
    const std::pair<const char *, QByteArray> cases[] = { { "de", "🇩🇪" }, { "419", whiteFlag },
        { "1\xF4\x8F\xBF\xBF", "\xF0\x9F\x87\x96" }, { "e\xCC\x81", whiteFlag } };
    for (const auto &[regionCode, flag] : cases)
        EXPECT_EQ(flagForRegionCode(QString::fromUtf8(regionCode)).toUtf8(), flag) << regionCode;
}

TEST(PercentEncodedForURLQuery, KeepsExactlyTheQueryAllowedAsciiCharactersAndEncodesTheRestByteByByte)
{
    QString text;
    for (char c = 0x20; c < 0x7F; ++c)
        text.append(QLatin1Char(c));
    text += QString("\t\x7F") + QChar(u'\0') + QString::fromUtf8("é");
    EXPECT_EQ(percentEncodedForURLQuery(text),
        QStringLiteral("%20!%22%23$%25&'()*+,-./0123456789:;%3C=%3E?@ABCDEFGHIJKLMNOPQRSTUVWXYZ%5B%5C%5D%5E_%"
                       "60abcdefghijklmnopqrstuvwxyz%7B%7C%7D~%09%7F%00%C3%A9"));
    // Text that is not valid Unicode encodes to nothing.
    EXPECT_EQ(percentEncodedForURLQuery(QString("a") + QChar(char16_t(0xD83D))), QString());
}

TEST(OpenLink, HandsAWellFormedLinkToTheSystemUnchangedAndIgnoresOtherText)
{
    FakeApplicationServices application;
    const char *const good = "mailto:help@example.com?subject=A&B=C%20%F0%9F%9A%80";
    for (const char *text :
        { "", "https://exa mple.com", "https://example.com/%zz", "mailto:a@b?subject=\"x\"", good })
        openLink(application, QString::fromUtf8(text));
    EXPECT_EQ(application.openedURLs, std::vector { QUrl::fromEncoded(good) });
}

TEST(ShareApp, PresentsTextThenStoreLinkOnTheRootControllerAnimatedAsAPopoverWhereThereIsOne)
{
    FakeBundleInfo bundle;
    bundle.dictionary = { { "CFBundleName", "Brivanta" }, { "CFBundleShortVersionString", "2.1" } };
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
        EXPECT_EQ(std::get<QString>(sheet.activityItems[0]),
            "🚀 Check out Brivanta 2.1! 🎉\n\n✨ Enjoy the latest features, bug fixes, and sleek UI "
            "improvements!\n"
            "📲 New users, download now! 🔄 Existing users, update for the best experience! 🔥\n\n");
        EXPECT_EQ(std::get<QUrl>(sheet.activityItems[1]).toString(),
            QString("https://%1/app/id%2").arg(build::storeHost, build::storeAppId));
        ASSERT_EQ(sheet.popover.has_value(), hasPopover);
        // Floating at the centre of the root view, with no arrow.
        EXPECT_TRUE(!hasPopover
            || (sheet.popover->sourceView == &root && !sheet.popover->permittedArrowDirections
                && sheet.popover->sourceRect == QRectF(522, 370, 0, 0)));
    }
}

TEST(LaunchCounter, CountsEveryAppearanceAndAsksForAReviewOnEveryFifthInTheFirstScene)
{
    FakePreferences preferences;
    FakeApplicationServices application;
    // The prompt needs only the scene, not a window in it (windows matter to the share sheet).
    auto &scene = application.addScene<FakeWindowScene>();
    for (int appearance = 1; appearance <= 11; ++appearance) {
        incrementLaunchCount(preferences, application);
        EXPECT_EQ(application.reviewRequests.size(), std::size_t(appearance / 5)) << appearance;
    }
    EXPECT_EQ(application.reviewRequests, (std::vector<WindowScene *> { &scene, &scene }));
}

} // namespace
} // namespace brivanta
