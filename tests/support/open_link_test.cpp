#include "brivanta_build_config.h"
#include "fakes/fake_application_services.h"
#include "support/open_link.h"
#include "support/store_links.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::FakeApplicationServices;

TEST(StoreLinks, AreHttpsStorePagesWithTenDigitIdentifiers)
{
    const QRegularExpression storePage(
        QStringLiteral("^https://%1/app/id[0-9]{10}$")
            .arg(QRegularExpression::escape(QString::fromUtf8(build::storeHost))));
    for (const QString &link : { appStorePageLink(), velloquinStorePageLink(), orvindoStorePageLink() })
        EXPECT_TRUE(storePage.match(link).hasMatch()) << link.toStdString();
    EXPECT_EQ(storePageLink(QStringLiteral("1234567890")),
        QStringLiteral("https://%1/app/id1234567890").arg(build::storeHost));
    EXPECT_NE(velloquinStorePageLink(), orvindoStorePageLink());
}

TEST(PromotionCards, EachBadgeTapOpensThatCardsStorePageOnce)
{
    FakeApplicationServices application;

    openVelloquinStorePage(application);
    openOrvindoStorePage(application);
    openVelloquinStorePage(application);

    ASSERT_EQ(application.openedURLs.size(), 3u);
    EXPECT_EQ(application.openedURLs[0].toString(),
        QStringLiteral("https://%1/app/id%2").arg(build::storeHost, build::velloquinAppId));
    EXPECT_EQ(application.openedURLs[1].toString(),
        QStringLiteral("https://%1/app/id%2").arg(build::storeHost, build::orvindoAppId));
    EXPECT_EQ(application.openedURLs[2], application.openedURLs[0]);
}

TEST(OpenLink, IgnoresTextThatIsNotAURL)
{
    FakeApplicationServices application;

    for (const char *text :
        { "", "https://exa mple.com", "https://example.com/%zz", "mailto:a@b?subject=\"x\"" })
        openLink(application, QString::fromUtf8(text));

    EXPECT_TRUE(application.openedURLs.empty());
}

TEST(OpenLink, HandsAWellFormedLinkToTheSystemUnchanged)
{
    FakeApplicationServices application;

    openLink(application, QStringLiteral("mailto:help@example.com?subject=A&B=C%20%F0%9F%9A%80"));

    ASSERT_EQ(application.openedURLs.size(), 1u);
    EXPECT_EQ(
        application.openedURLs.front().toEncoded(), "mailto:help@example.com?subject=A&B=C%20%F0%9F%9A%80");
}

} // namespace
} // namespace brivanta
