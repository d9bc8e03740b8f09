#include "platform/qt_desktop/url_recorder.h"
#include "ui/brivanta_app.h"
#include "ui_harness.h"

#include <QPointer>
#include <QQuickItem>
#include <QTest>
#include <QTranslator>
#include <QUrlQuery>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::FakeDNSSettingsManager;
using testing::UiHarness;
using testing::UrlRecorder;

const QColor red("#ff453a");
const QColor green("#30d158");

// The main screen over a fresh harness; tests that try several set-ups make one per case.
struct MainScreen
{
    UiHarness harness;

    void start(QSize size = ContentWindow::phoneSize)
    {
        harness.start(size);
        harness.leaveOnboarding();
    }

    // Every probe completes, in order; the first `blocked` ones fail (blocked), the rest answer 200.
    void completeProbes(int blocked)
    {
        int index = 0;
        harness.httpClient.completeAll([&](const QUrl &) {
            return index++ < blocked ? testing::transportError(NSURLErrorCannotFindHost)
                                     : testing::httpStatus(200);
        });
        harness.runMainQueue();
    }
};

struct MainViewTest : ::testing::Test, MainScreen
{
};

// Below 744 points wide the phone layout, from 744 the tablet's; resizing across the line switches it.
TEST_F(MainViewTest, StatusCardPillAndAddButtonFollowTheIdiomAcrossTheTabletWidth)
{
    const auto expectLayout = [this](double width, double factor, double buttonWidth) {
        SCOPED_TRACE(width);
        // The card is drawn 20 in from each side of its fixed frame.
        QQuickItem *frame = harness.item("statusCard");
        EXPECT_DOUBLE_EQ(frame->width(), width * factor);
        EXPECT_DOUBLE_EQ(frame->height(), 180);
        QQuickItem *card = harness.item("statusCardBody");
        EXPECT_DOUBLE_EQ(card->width(), width * factor - 40);
        EXPECT_LT(card->height(), 180);
        EXPECT_NEAR(card->mapToScene(QPointF(card->width() / 2, card->height() / 2)).x(), width / 2, 0.5);
        EXPECT_DOUBLE_EQ(
            harness.item("statusPill")->width(), harness.item("statusPillRow")->width() * factor);
        EXPECT_DOUBLE_EQ(harness.item("statusPill")->height(), 50);
        EXPECT_DOUBLE_EQ(harness.item("addButton")->width(), buttonWidth);
    };
    start(QSize(743, 900));
    expectLayout(743, 0.9, 300);

    harness.resize(QSize(744, 900));
    expectLayout(744, 0.4, 400);
}

TEST_F(MainViewTest, StatusCardShowsTheStateInItsColours)
{
    start();
    EXPECT_EQ(harness.item("statusSymbol")->property("symbol").toString(), "shield.slash");
    EXPECT_EQ(harness.item("statusText")->property("text").toString(), "Disabled");

    harness.dnsSettingsManager.setEnabled(true);
    harness.dnsSettingsManager.release(FakeDNSSettingsManager::Operation::Load);
    harness.runMainQueue();

    QQuickItem *symbol = harness.item("statusSymbol");
    EXPECT_EQ(symbol->property("symbol").toString(), "shield.checkerboard");
    // The symbol switches at once; the pill's colours animate.
    EXPECT_EQ(symbol->property("color").value<QColor>(), green);
    EXPECT_EQ(harness.item("statusText")->property("text").toString(), "Enabled");
    QTRY_COMPARE(harness.item("statusText")->property("color").value<QColor>(), green);
}

TEST_F(MainViewTest, AddButtonTurnsIntoADisabledSettingsAddedThatIgnoresClicks)
{
    start();
    QQuickItem *button = harness.item("addButton");
    EXPECT_EQ(button->property("text").toString(), "Add Network Settings");
    EXPECT_EQ(button->property("symbol").toString(), "network");

    harness.click(button);
    ASSERT_EQ(harness.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Save), 1);
    harness.dnsSettingsManager.release(FakeDNSSettingsManager::Operation::Save);
    harness.runMainQueue();

    EXPECT_EQ(button->property("text").toString(), "Settings Added");
    EXPECT_EQ(button->property("symbol").toString(), "checkmark.circle.fill");
    EXPECT_FALSE(button->isEnabled());
    QTRY_VERIFY(!button->property("isPressed").toBool());

    harness.click(button);

    EXPECT_EQ(harness.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Save), 1);
    EXPECT_FALSE(button->property("isPressed").toBool());
}

TEST_F(MainViewTest, AnActionButtonRunsItsActionOnThePressBeforeItsRelease)
{
    start();
    QQuickItem *button = harness.item("addButton");

    harness.click(button);

    // The action (the save) has run while the button is still pressed: the release comes 0.1 s later.
    EXPECT_EQ(harness.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Save), 1);
    EXPECT_TRUE(button->property("isPressed").toBool());

    // A second press runs the action again at once.
    harness.click(button);
    EXPECT_EQ(harness.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Save), 2);

    QTRY_VERIFY(!button->property("isPressed").toBool());
    EXPECT_DOUBLE_EQ(button->scale(), 1.0);
    EXPECT_DOUBLE_EQ(button->opacity(), 1.0);
}

// Which controls Tab reaches is the layout test's; here, what the keys do.
TEST_F(MainViewTest, KeysTurnPagesPressButtonsAndScroll)
{
    harness.start();
    QWindow *window = &harness.window();
    window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    QTest::keyClick(window, Qt::Key_Right);
    EXPECT_EQ(harness.item("onboardingView")->property("currentPage").toInt(), 1);
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_EQ(harness.item("onboardingView")->property("currentPage").toInt(), 2);
    harness.leaveOnboarding();

    QQuickItem *scrollView = harness.item("mainScrollView");
    const qreal bottom = scrollView->property("contentHeight").toReal() - scrollView->height();
    QTest::keyClick(window, Qt::Key_End);
    EXPECT_DOUBLE_EQ(scrollView->property("contentY").toReal(), bottom);
    QTest::keyClick(window, Qt::Key_PageUp);
    EXPECT_NEAR(scrollView->property("contentY").toReal(), bottom - scrollView->height() + 40, 0.5);
    QTest::keyClick(window, Qt::Key_Home);
    EXPECT_DOUBLE_EQ(scrollView->property("contentY").toReal(), 0);

    // The first stop is the add button; Space presses it.
    QTest::keyClick(window, Qt::Key_Tab);
    EXPECT_EQ(harness.window().activeFocusItem(), harness.item("addButton"));
    QTest::keyClick(window, Qt::Key_Space);
    EXPECT_EQ(harness.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Save), 1);
}

// The threshold and texts are the model's (tests/dns); here, that the view shows them in their colours.
TEST_F(MainViewTest, ScoreAndResultRowsSortedWithHttpsRemovedInTheirColours)
{
    harness.testDomains = { "https://zeta.test", "https://alpha.test", "https://mid.test/https://deep",
        "https://beta.test", "https://omega.test" };
    start();
    harness.click(harness.item("testButton"));
    QQuickItem *busy = harness.item("testBusyIndicator");
    EXPECT_TRUE(busy->isVisible());
    completeProbes(4); // all but omega are blocked
    EXPECT_FALSE(busy->isVisible());

    QQuickItem *score = harness.item("scoreText");
    ASSERT_TRUE(score->isVisible());
    EXPECT_EQ(score->property("text").toString(), "Blocking Score: 80%");
    EXPECT_EQ(score->property("color").value<QColor>(), green);
    QStringList hosts;
    QStringList labels;
    QList<QColor> colours;
    for (QQuickItem *row : harness.items("resultRow")) {
        hosts.append(row->childItems().at(0)->property("text").toString());
        labels.append(row->childItems().at(1)->property("plainText").toString());
        colours.append(row->childItems().at(1)->property("color").value<QColor>());
    }
    EXPECT_EQ(hosts, QStringList({ "alpha.test", "beta.test", "mid.test/deep", "omega.test", "zeta.test" }));
    EXPECT_EQ(labels, QStringList({ "✅ Blocked", "✅ Blocked", "✅ Blocked", "❌ Not Blocked", "✅ Blocked" }));
    EXPECT_EQ(colours, QList<QColor>({ green, green, green, red, green }));
}

TEST_F(MainViewTest, PromotionPagerOpensOnOrvindoAndEachBadgeOpensItsOwnPage)
{
    UrlRecorder links;
    start();
    QQuickItem *pager = harness.item("promotionSwipeView");
    EXPECT_EQ(pager->property("currentIndex").toInt(), 0);
    EXPECT_EQ(pager->property("count").toInt(), 2);
    QQuickItem *firstPage = harness.item("promotionPage0");
    EXPECT_EQ(firstPage->childItems().first()->objectName(), "orvindoPromoCard");

    harness.click(harness.item("orvindoPromoCard")->findChild<QQuickItem *>("storeBadge"));
    ASSERT_EQ(links.opened.size(), 1u);
    EXPECT_EQ(links.opened[0], QUrl("https://apps.apple.com/app/id6739406291"));

    pager->setProperty("currentIndex", 1);
    QQuickItem *velloquin = harness.item("velloquinPromoCard");
    QTRY_COMPARE(velloquin->mapToScene(QPointF(velloquin->width() / 2, 0)).x(), 393.0 / 2);
    harness.click(velloquin->findChild<QQuickItem *>("storeBadge"));
    ASSERT_EQ(links.opened.size(), 2u);
    EXPECT_EQ(links.opened[1], QUrl("https://apps.apple.com/app/id6740219833"));
}

TEST_F(MainViewTest, ContactSupportOpensTheEncodedMailtoLink)
{
    UrlRecorder links;
    start();

    harness.click(harness.item("contactSupportButton"));

    ASSERT_EQ(links.opened.size(), 1u);
    const QUrl &link = links.opened[0];
    EXPECT_EQ(link.scheme(), "mailto");
    EXPECT_EQ(link.path(), "support@brivanta.app");
    // The texts and their encoding are the support tests'; here, that the harness's details reach them.
    EXPECT_TRUE(QUrlQuery(link).queryItemValue("subject", QUrl::FullyDecoded).endsWith(" - Brivanta"));
}

// On a phone the sheet comes up from the bottom; on a tablet it is centred.
TEST(MainViewShareSheet, ShareAppOpensTheSheetInsideTheWindowAndEscapeClosesIt)
{
    for (const QSize size : { ContentWindow::phoneSize, ContentWindow::tabletSize }) {
        SCOPED_TRACE(size.width());
        MainScreen screen;
        UiHarness &harness = screen.harness;
        screen.start(size);

        harness.click(harness.item("shareButton"));
        // The sheet exists only while it is shown: closing it destroys the item.
        const QPointer<QQuickItem> sheet = harness.item("shareText");
        ASSERT_TRUE(harness.shareSheet.isVisible());
        QTRY_VERIFY(sheet->isVisible());
        harness.settle();

        EXPECT_TRUE(sheet->property("plainText").toString().startsWith("🚀 Check out Brivanta 1.0.0! 🎉\n"));
        EXPECT_EQ(harness.item("shareLink")->property("text").toString(),
            "https://apps.apple.com/app/id6742517203");
        // The whole sheet, down to its buttons, lies inside the window.
        QQuickItem *closeButton = harness.item("closeShareButton");
        const QRectF buttonBox
            = closeButton->mapRectToScene(QRectF(0, 0, closeButton->width(), closeButton->height()));
        EXPECT_TRUE(QRectF(QPointF(0, 0), size).contains(buttonBox))
            << buttonBox.y() << " " << buttonBox.height();
        if (size.width() >= 744) {
            QQuickItem *panel = sheet->parentItem();
            const QRectF box = panel->mapRectToScene(QRectF(0, 0, panel->width(), panel->height()));
            EXPECT_NEAR(box.center().x(), size.width() / 2.0, 1);
        }

        QTest::keyClick(&harness.window(), Qt::Key_Escape);

        EXPECT_FALSE(harness.shareSheet.isVisible());
        QTRY_VERIFY(!sheet || !sheet->isVisible());
    }
}

TEST_F(MainViewTest, TheFifthAppearanceShowsTheRatingPromptAndEscapeDismissesIt)
{
    harness.preferences.setInteger(4, "launchCount");
    start();

    ASSERT_TRUE(harness.ratingPrompt.isVisible());
    QQuickItem *review = harness.item("writeReviewButton");
    QTRY_VERIFY(review->isVisible());

    QTest::keyClick(&harness.window(), Qt::Key_Escape);

    EXPECT_FALSE(harness.ratingPrompt.isVisible());
}

TEST_F(MainViewTest, UnderAGermanLocaleTheLabelsAreGerman)
{
    QTranslator german;
    ASSERT_TRUE(BrivantaApp::installTranslator(
        *QCoreApplication::instance(), german, QLocale(QLocale::German, QLocale::Germany)));
    harness.start();
    EXPECT_EQ(harness.item("onboardingButton")->property("text").toString(), "Weiter");
    harness.leaveOnboarding();
    EXPECT_EQ(harness.item("statusText")->property("text").toString(), "Deaktiviert");
    // The button's and the table's texts stay as they are, so that the first step names the button.
    EXPECT_EQ(harness.item("addButton")->property("text").toString(), "Add Network Settings");
    EXPECT_EQ(harness.items("instructionText").first()->property("text").toString(),
        "Press 'Add Network Settings' above.");
    QCoreApplication::removeTranslator(&german);
}

} // namespace
} // namespace brivanta
