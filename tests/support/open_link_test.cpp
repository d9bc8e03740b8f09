#include "fakes/fake_application_services.h"
#include "support/open_link.h"

#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::FakeApplicationServices;

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
