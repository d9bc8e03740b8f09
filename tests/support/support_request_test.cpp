#include "brivanta_build_config.h"
#include "fakes/fake_application_services.h"
#include "fakes/fake_bundle_info.h"
#include "fakes/fake_device.h"
#include "fakes/fake_locale_info.h"
#include "support/percent_encoding.h"
#include "support/support_request.h"

#include <QUrlQuery>
#include <functional>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::FakeApplicationServices;
using testing::FakeBundleInfo;
using testing::FakeDevice;
using testing::FakeLocaleInfo;

// A German user on an iPhone.
struct GermanUser
{
    GermanUser()
    {
        bundle.dictionary.insert(QStringLiteral("CFBundleName"), QStringLiteral("Brivanta"));
        bundle.dictionary.insert(QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.0"));
        locale.languages = { QStringLiteral("de-DE"), QStringLiteral("en") };
        locale.region = QStringLiteral("DE");
        locale.languageNames.insert(QStringLiteral("de-DE"), QStringLiteral("German (Germany)"));
        locale.regionNames.insert(QStringLiteral("DE"), QStringLiteral("Germany"));
        locale.regionNames.insert(QStringLiteral("419"), QStringLiteral("Latin America"));
    }

    QByteArray body() const
    {
        return supportBody(readSupportRequestDetails(bundle, device, locale)).toUtf8();
    }

    FakeBundleInfo bundle;
    FakeDevice device;
    FakeLocaleInfo locale;
};

struct SupportRequestTest : ::testing::Test, GermanUser
{
};

constexpr const char *expectedBody
    = "Hello Support Team, \xF0\x9F\x91\x8B\n\nI need assistance with Brivanta. Below are my app and device "
      "details:\n\n\xF0\x9F\x93\xB1 App Info\n- App Name: Brivanta\n- Version: 1.0\n\n\xF0\x9F\x94\xA7 "
      "Device "
      "Info\n- Model: iPhone\n- OS Version: iOS 17.2\n\n\xF0\x9F\x8C\x8D Locale\n- Language: German "
      "(Germany)\n- "
      "Country: Germany \xF0\x9F\x87\xA9\xF0\x9F\x87\xAA\n\n\xF0\x9F\x93\x9D Issue Description:\n(Please "
      "describe "
      "your issue here...)\n\nThanks for your help! \xF0\x9F\x99\x8F";

TEST_F(SupportRequestTest, SubjectAndBodyAreTheFixedTextsWithTheDetails)
{
    const SupportRequestDetails details = readSupportRequestDetails(bundle, device, locale);
    EXPECT_EQ(supportSubject(details).toUtf8(), "\xF0\x9F\x9A\x80 Support Request - Brivanta");
    EXPECT_EQ(supportBody(details).toUtf8(), expectedBody);
}

TEST_F(SupportRequestTest, OpensTheEncodedMailtoLinkOnce)
{
    FakeApplicationServices application;

    contactSupport(bundle, device, locale, application);

    ASSERT_EQ(application.openedURLs.size(), 1u);
    const QByteArray link = application.openedURLs.front().toEncoded();
    EXPECT_EQ(supportRequestLink(readSupportRequestDetails(bundle, device, locale)).toUtf8(), link);
    EXPECT_TRUE(link.startsWith(QByteArray("mailto:") + build::supportMailbox
        + "?subject=%F0%9F%9A%80%20Support%20Request%20-%20Brivanta&body=Hello%20Support%20Team,%20%F0%9F%91%"
          "8B%0A"))
        << link.toStdString();
    EXPECT_EQ(QUrlQuery(application.openedURLs.front()).queryItemValue("body", QUrl::FullyDecoded).toUtf8(),
        expectedBody);
}

TEST(SupportRequestDetails, FallBacksReachTheBody)
{
    const struct
    {
        const char *what;
        std::function<void(GermanUser &)> change;
        const char *line;
    } cases[] = {
        { "bundle values missing or not text",
            [](auto &t) {
                t.bundle.dictionary.clear();
                t.bundle.dictionary.insert(QStringLiteral("CFBundleShortVersionString"), 3);
            },
            "I need assistance with Unknown App. Below are my app and device details:\n\n\xF0\x9F\x93\xB1 "
            "App "
            "Info\n- App Name: Unknown App\n- Version: Unknown Version\n\n" },
        { "no preferred language", [](auto &t) { t.locale.languages.clear(); },
            "\n- Language: Unknown\n- Country: Germany " },
        { "language without an English name",
            [](auto &t) { t.locale.languages = { QStringLiteral("xx-YY") }; }, "\n- Language: Unknown\n" },
        { "no region", [](auto &t) { t.locale.region.reset(); },
            "\n- Country: Unknown \xF0\x9F\x8F\xB3\xEF\xB8\x8F\n\n" },
        // A three-character region keeps its name but has no flag.
        { "region 419", [](auto &t) { t.locale.region = QStringLiteral("419"); },
            "\n- Country: Latin America \xF0\x9F\x8F\xB3\xEF\xB8\x8F\n\n" },
    };
    for (const auto &c : cases) {
        GermanUser user;
        c.change(user);
        EXPECT_TRUE(user.body().contains(c.line)) << c.what << "\n" << user.body().toStdString();
    }
}

TEST_F(SupportRequestTest, QueryDelimitersInValuesPassUnescaped)
{
    bundle.dictionary.insert(QStringLiteral("CFBundleName"), QStringLiteral("A&b=c?d/e+f"));
    FakeApplicationServices application;

    contactSupport(bundle, device, locale, application);

    ASSERT_EQ(application.openedURLs.size(), 1u);
    EXPECT_TRUE(application.openedURLs.front().toEncoded().contains(
        "?subject=%F0%9F%9A%80%20Support%20Request%20-%20A&b=c?d/e+f&body="));
}

TEST(FlagForRegionCode, IsRegionalIndicatorsOrTheWhiteFlag)
{
    const QByteArray whiteFlag = "\xF0\x9F\x8F\xB3\xEF\xB8\x8F";
    const std::pair<const char *, QByteArray> cases[]
        = { { "de", "\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA" }, { "US", "\xF0\x9F\x87\xBA\xF0\x9F\x87\xB8" },
              { "419", whiteFlag }, { "", whiteFlag }, { "Unknown", whiteFlag },
              // Two characters that are not letters still shift; a shift past U+10FFFF is dropped.
              { "1\xF4\x8F\xBF\xBF", "\xF0\x9F\x87\x96" },
              // An accented letter written with a combining mark is one character.
              { "e\xCC\x81", whiteFlag } };
    for (const auto &[regionCode, flag] : cases)
        EXPECT_EQ(flagForRegionCode(QString::fromUtf8(regionCode)).toUtf8(), flag) << regionCode;
}

TEST(PercentEncodedForURLQuery, KeepsExactlyTheQueryAllowedAsciiCharactersAndEncodesTheRestByteByByte)
{
    QString ascii;
    for (char c = 0x20; c < 0x7F; ++c)
        ascii.append(QLatin1Char(c));
    EXPECT_EQ(percentEncodedForURLQuery(ascii),
        QStringLiteral("%20!%22%23$%25&'()*+,-./0123456789:;%3C=%3E?@ABCDEFGHIJKLMNOPQRSTUVWXYZ%5B%5C%5D%5E_%"
                       "60abcdefghijklmnopqrstuvwxyz%7B%7C%7D~"));
    EXPECT_EQ(percentEncodedForURLQuery(QStringLiteral("a\nc\t\x7F") + QChar(u'\0')),
        QStringLiteral("a%0Ac%09%7F%00"));
    EXPECT_EQ(percentEncodedForURLQuery(QString::fromUtf8("\xF0\x9F\x9A\x80\xC3\xA9")),
        QStringLiteral("%F0%9F%9A%80%C3%A9"));
    // Text that is not valid Unicode encodes to nothing.
    EXPECT_EQ(percentEncodedForURLQuery(QStringLiteral("a") + QChar(char16_t(0xD83D))), QString());
}

} // namespace
} // namespace brivanta
