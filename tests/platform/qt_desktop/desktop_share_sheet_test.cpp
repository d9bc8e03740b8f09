#include "platform/qt/desktop_rating_prompt.h"
#include "platform/qt/desktop_share_sheet.h"
#include "url_recorder.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QUrlQuery>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::UrlRecorder;

ShareSheet sheetWith(const QString &text)
{
    return { { text, QUrl(QStringLiteral("https://apps.apple.com/app/id6742517203")) }, std::nullopt };
}

TEST(DesktopShareSheet, CopyPutsTextThenLinkOnTheClipboardAndCloses)
{
    DesktopShareSheet sheet;
    sheet.present(sheetWith(QStringLiteral("Check out Brivanta 1.0!\n\n")));

    sheet.copyToClipboard();

    EXPECT_EQ(QGuiApplication::clipboard()->text(),
        QStringLiteral("Check out Brivanta 1.0!\n\nhttps://apps.apple.com/app/id6742517203"));
    EXPECT_FALSE(sheet.isVisible());

    // Text that does not end in a line feed gets one before the link.
    sheet.present(sheetWith(QStringLiteral("No trailing line feed")));
    EXPECT_EQ(
        sheet.sharedText(), QStringLiteral("No trailing line feed\nhttps://apps.apple.com/app/id6742517203"));
}

TEST(DesktopShareSheet, SendByEmailOpensAMailWhoseBodyIsTextAndLink)
{
    UrlRecorder recorder;
    DesktopShareSheet sheet;
    sheet.present(sheetWith(QStringLiteral("Ads & trackers? 🚀 Gone!\n\n")));

    sheet.sendByEmail();

    ASSERT_EQ(recorder.opened.size(), 1u);
    const QUrl &mail = recorder.opened.front();
    EXPECT_EQ(mail.scheme(), QStringLiteral("mailto"));
    EXPECT_TRUE(mail.path().isEmpty());
    const QUrlQuery query(mail);
    ASSERT_EQ(query.queryItems().size(), 1);
    EXPECT_EQ(query.queryItemValue(QStringLiteral("body"), QUrl::FullyDecoded),
        QStringLiteral("Ads & trackers? 🚀 Gone!\n\nhttps://apps.apple.com/app/id6742517203"));
    EXPECT_FALSE(sheet.isVisible());
}

TEST(DesktopRatingPrompt, OpenReviewOpensTheReviewLinkAndCloses)
{
    UrlRecorder recorder;
    const QUrl review(QStringLiteral("https://apps.apple.com/app/id6742517203?action=write-review"));
    DesktopRatingPrompt prompt(review);
    prompt.show();
    ASSERT_TRUE(prompt.isVisible());

    prompt.openReview();

    ASSERT_EQ(recorder.opened.size(), 1u);
    EXPECT_EQ(recorder.opened.front(), review);
    EXPECT_FALSE(prompt.isVisible());
}

} // namespace
} // namespace brivanta
