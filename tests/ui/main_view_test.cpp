#include "platform/qt_desktop/url_recorder.h"
#include "ui/brivanta_app.h"
#include "ui_harness.h"

#include <QPointer>
#include <QRegularExpression>
#include <QTest>
#include <QTranslator>
#include <QUrlQuery>
#include <QtQml/qqmlextensionplugin.h>
#include <gtest/gtest.h>

Q_IMPORT_QML_PLUGIN(BrivantaPlugin)

namespace brivanta {
namespace {

using testing::UiHarness;

const QColor red("#ff453a");
const QColor green("#30d158");
constexpr auto Save = testing::FakeDNSSettingsManager::Operation::Save;

struct MainViewTest : ::testing::Test
{
    UiHarness harness;
};

// Below 744 points wide the phone layout, from 744 the tablet's; resizing across the line switches it. On
// a phone the share sheet comes up from the bottom, on a tablet it is centred; either way inside the window.
TEST_F(MainViewTest, TheStatusCardAddButtonAndShareSheetFollowTheIdiomAcrossTheTabletWidth)
{
    harness.start(QSize(393, 852), false);
    for (const auto &[width, factor, buttonWidth] :
        { std::tuple(393, 0.9, 300), std::tuple(743, 0.9, 300), std::tuple(744, 0.4, 400) }) {
        SCOPED_TRACE(width);
        harness.window().resize(width, 852);
        harness.settle();
        // The card is drawn 20 in from each side of its fixed frame.
        QQuickItem *card = harness.item("statusCardBody");
        EXPECT_DOUBLE_EQ(card->width(), width * factor - 40);
        EXPECT_NEAR(card->mapToScene(QPointF(card->width() / 2, 0)).x(), width / 2.0, 0.5);
        EXPECT_DOUBLE_EQ(harness.item("addButton")->width(), buttonWidth);

        harness.click(harness.item("shareButton"));
        // The sheet exists only while it is shown: closing it destroys the item.
        const QPointer<QQuickItem> sheet = harness.item("shareText");
        QTRY_VERIFY(sheet->isVisible());
        EXPECT_TRUE(sheet->property("plainText").toString().startsWith("🚀 Check out Brivanta 1.0.0! 🎉\n"));
        EXPECT_EQ(harness.property("shareLink"), "https://apps.apple.com/app/id6742517203");
        QQuickItem *close = harness.item("closeShareButton");
        EXPECT_TRUE(QRectF(0, 0, width, 852).contains(close->mapRectToScene(close->boundingRect())));
        QTest::keyClick(&harness.window(), Qt::Key_Escape);
        EXPECT_FALSE(harness.shareSheet.isVisible());
        QTRY_VERIFY(!sheet || !sheet->isVisible());
    }
}

// The button turns into a disabled "Settings Added" that ignores clicks; the status follows the platform.
TEST_F(MainViewTest, AddingTheSettingsShowsSettingsAddedAndTheStatusEnabledInGreen)
{
    harness.start(ContentWindow::phoneSize, false);
    QQuickItem *button = harness.item("addButton");
    harness.click(button);
    EXPECT_EQ(harness.dnsSettingsManager.count(Save), 1);
    harness.dnsSettingsManager.setEnabled(true);
    harness.dnsSettingsManager.release(Save);
    harness.load();

    EXPECT_EQ(button->property("text"), "Settings Added");
    EXPECT_FALSE(button->isEnabled());
    harness.click(button);
    EXPECT_EQ(harness.dnsSettingsManager.count(Save), 1);
    EXPECT_EQ(harness.property("statusSymbol", "symbol"), "shield.checkerboard");
    EXPECT_EQ(harness.property("statusText"), "Enabled");
    // The pill's colours animate.
    QTRY_COMPARE(harness.property("statusText", "color").value<QColor>(), green);
}

// Which controls Tab reaches is the layout test's; here, what the keys do.
TEST_F(MainViewTest, KeysTurnPagesDismissTheFifthLaunchsRatingPromptScrollAndPressButtons)
{
    harness.preferences.setInteger(4, "launchCount");
    harness.start();
    QWindow *window = &harness.window();
    window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    QTest::keyClick(window, Qt::Key_Right);
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_EQ(harness.property("onboardingView", "currentPage"), 2);
    harness.leaveOnboarding();
    // The fifth appearance of the main screen asks for a rating.
    QTRY_VERIFY(harness.item("writeReviewButton")->isVisible());
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_FALSE(harness.ratingPrompt.isVisible());
    // The screen has the keys again at once.
    QQuickItem *scrollView = harness.item("mainScrollView");
    QTest::keyClick(window, Qt::Key_End);
    EXPECT_DOUBLE_EQ(scrollView->property("contentY").toReal(),
        scrollView->property("contentHeight").toReal() - scrollView->height());
    QTest::keyClick(window, Qt::Key_Home);
    EXPECT_DOUBLE_EQ(scrollView->property("contentY").toReal(), 0);
    // The first stop is the add button; Space presses it.
    QTest::keyClick(window, Qt::Key_Tab);
    QTest::keyClick(window, Qt::Key_Space);
    EXPECT_EQ(harness.dnsSettingsManager.count(Save), 1);
}

// Sorting, threshold and texts are the model's (tests/dns); here, that the view shows them in colour.
TEST_F(MainViewTest, TheScoreAndEachResultRowShowInTheirColours)
{
    harness.start(ContentWindow::phoneSize, false);
    harness.runAdBlockTest();
    EXPECT_FALSE(harness.item("testBusyIndicator")->isVisible());

    EXPECT_EQ(harness.property("scoreText"), "Blocking Score: 80%");
    EXPECT_EQ(harness.property("scoreText", "color").value<QColor>(), green);
    const QList<QQuickItem *> rows = harness.items("resultRow");
    ASSERT_EQ(rows.size(), 10);
    for (QQuickItem *row : rows) {
        const QString host = row->childItems().at(0)->property("text").toString();
        SCOPED_TRACE(host.toStdString());
        const QQuickItem *label = row->childItems().at(1);
        EXPECT_EQ(label->property("plainText"), UiHarness::answers(host) ? "❌ Not Blocked" : "✅ Blocked");
        EXPECT_EQ(label->property("color").value<QColor>(), UiHarness::answers(host) ? red : green);
    }
}

// The texts and their encoding are the support tests'; here, that each button reaches its page.
TEST_F(MainViewTest, EachLinkButtonOpensItsPageAndThePromotionPagerOpensOnOrvindo)
{
    testing::UrlRecorder links;
    harness.start(ContentWindow::phoneSize, false);
    harness.click(harness.item("orvindoPromoCard")->findChild<QQuickItem *>("storeBadge"));
    harness.item("promotionSwipeView")->setProperty("currentIndex", 1);
    QQuickItem *velloquin = harness.item("velloquinPromoCard");
    QTRY_COMPARE(velloquin->mapToScene(QPointF(velloquin->width() / 2, 0)).x(), 393.0 / 2);
    harness.click(velloquin->findChild<QQuickItem *>("storeBadge"));
    harness.click(harness.item("rateButton"));
    harness.click(harness.item("contactSupportButton"));

    ASSERT_EQ(links.opened.size(), 4u);
    EXPECT_EQ(links.opened[0], QUrl("https://apps.apple.com/app/id6739406291"));
    EXPECT_EQ(links.opened[1], QUrl("https://apps.apple.com/app/id6740219833"));
    EXPECT_EQ(links.opened[2], QUrl("https://apps.apple.com/app/id6742517203?action=write-review"));
    EXPECT_EQ(links.opened[3].scheme() + ":" + links.opened[3].path(), "mailto:support@brivanta.app");
    EXPECT_TRUE(QUrlQuery(links.opened[3]).queryItemValue("subject").endsWith(" - Brivanta"));
}

// Every entry of the shipped German catalogue is finished, so a German locale never falls back to English.
TEST_F(MainViewTest, UnderAGermanLocaleTheLabelsAreGerman)
{
    QFile file(QStringLiteral(BRIVANTA_GERMAN_TS));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString catalogue = QString::fromUtf8(file.readAll());
    EXPECT_FALSE(catalogue.contains(QRegularExpression("<translation( type=|>\\s*</translation>)")));

    QTranslator german;
    ASSERT_TRUE(BrivantaApp::installTranslator(*QCoreApplication::instance(), german, QLocale("de_DE")));
    // The percent sign and the argument's place differ in German.
    EXPECT_EQ(MainViewModel::scoreTextFor(85), "Blockierquote: 85 %");
    harness.start(ContentWindow::phoneSize, false);
    EXPECT_EQ(harness.property("statusText"), "Deaktiviert");
    // The button's and the table's texts stay as they are, so that the first step names the button.
    EXPECT_EQ(harness.property("addButton"), "Add Network Settings");
    EXPECT_EQ(harness.property("instructionText"), "Press 'Add Network Settings' above.");
    QCoreApplication::removeTranslator(&german);
}

} // namespace
} // namespace brivanta
