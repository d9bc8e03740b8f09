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

using testing::FakeDNSSettingsManager;
using testing::UiHarness;

const QColor red("#ff453a");
const QColor green("#30d158");
constexpr auto Load = FakeDNSSettingsManager::Operation::Load;
constexpr auto Save = FakeDNSSettingsManager::Operation::Save;

struct MainViewTest : ::testing::Test
{
    UiHarness harness;
};

using OnboardingTest = MainViewTest;

TEST_F(OnboardingTest, NextEightTimesReachesGetStartedAndANinthPressShowsTheMainScreen)
{
    harness.start();
    for (int page = 0; page < 9; ++page) {
        SCOPED_TRACE(page);
        EXPECT_EQ(harness.property("onboardingView", "currentPage"), page);
        EXPECT_EQ(harness.property("onboardingButton"), page < 8 ? "Next" : "Get Started");
        // Nothing of the main screen runs while the onboarding is shown.
        EXPECT_EQ(harness.dnsSettingsManager.count(Load), 0);
        EXPECT_EQ(harness.preferences.writes, 0);
        harness.click(harness.item("onboardingButton"));
    }
    EXPECT_FALSE(harness.items("mainView").isEmpty());
    EXPECT_TRUE(harness.items("onboardingView").isEmpty());
    // The main screen appeared: status refresh, then the launch counter.
    EXPECT_EQ(harness.dnsSettingsManager.count(Load), 1);
    EXPECT_EQ(harness.preferences.integerForKey("launchCount"), 1);
}

// Below 744 points wide the phone layout, from 744 the tablet's; resizing across the line switches it.
TEST_F(MainViewTest, StatusCardAndAddButtonFollowTheIdiomAcrossTheTabletWidth)
{
    harness.start(QSize(743, 900), false);
    for (const auto &[width, factor, buttonWidth] :
        { std::tuple(743, 0.9, 300), std::tuple(744, 0.4, 400) }) {
        SCOPED_TRACE(width);
        harness.window().resize(width, 900);
        harness.settle();
        // The card is drawn 20 in from each side of its fixed frame, and fits in its height.
        QQuickItem *card = harness.item("statusCardBody");
        EXPECT_DOUBLE_EQ(card->width(), width * factor - 40);
        EXPECT_LT(card->height(), harness.item("statusCard")->height());
        EXPECT_NEAR(card->mapToScene(QPointF(card->width() / 2, 0)).x(), width / 2.0, 0.5);
        EXPECT_DOUBLE_EQ(harness.item("addButton")->width(), buttonWidth);
    }
}

// The button acts on the press (the release comes 0.1 s later), then turns into a disabled "Settings
// Added" that ignores clicks; the status follows what the platform reports.
TEST_F(MainViewTest, AddingTheSettingsShowsSettingsAddedAndTheStatusEnabledInGreen)
{
    harness.start(ContentWindow::phoneSize, false);
    QQuickItem *button = harness.item("addButton");
    EXPECT_EQ(button->property("text"), "Add Network Settings");
    EXPECT_EQ(harness.property("statusSymbol", "symbol"), "shield.slash");
    EXPECT_EQ(harness.property("statusText"), "Disabled");

    harness.click(button);
    EXPECT_EQ(harness.dnsSettingsManager.count(Save), 1);
    EXPECT_TRUE(button->property("isPressed").toBool());
    QTRY_VERIFY(!button->property("isPressed").toBool());
    harness.dnsSettingsManager.setEnabled(true);
    harness.dnsSettingsManager.release(Save);
    harness.dnsSettingsManager.release(Load);
    harness.runMainQueue();

    EXPECT_EQ(button->property("text"), "Settings Added");
    EXPECT_EQ(button->property("symbol"), "checkmark.circle.fill");
    EXPECT_FALSE(button->isEnabled());
    harness.click(button);
    EXPECT_EQ(harness.dnsSettingsManager.count(Save), 1);
    EXPECT_FALSE(button->property("isPressed").toBool());

    EXPECT_EQ(harness.property("statusSymbol", "symbol"), "shield.checkerboard");
    // The symbol switches at once; the pill's colours animate.
    EXPECT_EQ(harness.property("statusSymbol", "color").value<QColor>(), green);
    EXPECT_EQ(harness.property("statusText"), "Enabled");
    QTRY_COMPARE(harness.property("statusText", "color").value<QColor>(), green);
}

// Which controls Tab reaches is the layout test's; here, what a swipe and the keys do.
TEST_F(MainViewTest, SwipesAndKeysTurnPagesPressButtonsAndScroll)
{
    harness.start();
    QWindow *window = &harness.window();
    window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    QQuickItem *pager = harness.item("onboardingPager");
    const QPoint start = pager->mapToScene(QPointF(pager->width() * 0.8, pager->height() / 2)).toPoint();
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, start);
    for (int step = 1; step <= 10; ++step)
        QTest::mouseMove(window, start - QPoint(step * 25, 0), 10);
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, start - QPoint(250, 0), 10);
    QTRY_COMPARE(harness.property("onboardingView", "currentPage").toInt(), 1);
    QTest::keyClick(window, Qt::Key_Right);
    EXPECT_EQ(harness.property("onboardingView", "currentPage"), 2);
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_EQ(harness.property("onboardingView", "currentPage"), 3);
    harness.leaveOnboarding();

    QQuickItem *scrollView = harness.item("mainScrollView");
    const auto contentY = [&] { return scrollView->property("contentY").toReal(); };
    const qreal bottom = scrollView->property("contentHeight").toReal() - scrollView->height();
    QTest::keyClick(window, Qt::Key_End);
    EXPECT_DOUBLE_EQ(contentY(), bottom);
    QTest::keyClick(window, Qt::Key_PageUp);
    EXPECT_NEAR(contentY(), bottom - scrollView->height() + 40, 0.5);
    QTest::keyClick(window, Qt::Key_Home);
    EXPECT_DOUBLE_EQ(contentY(), 0);

    // The first stop is the add button; Space presses it.
    QTest::keyClick(window, Qt::Key_Tab);
    EXPECT_EQ(harness.window().activeFocusItem(), harness.item("addButton"));
    QTest::keyClick(window, Qt::Key_Space);
    EXPECT_EQ(harness.dnsSettingsManager.count(Save), 1);
}

// The sorting, threshold and texts are the model's (tests/dns); here, that the view shows them in their
// colours.
TEST_F(MainViewTest, TheScoreAndEachResultRowShowInTheirColours)
{
    harness.start(ContentWindow::phoneSize, false);
    harness.click(harness.item("testButton"));
    QQuickItem *busy = harness.item("testBusyIndicator");
    EXPECT_TRUE(busy->isVisible());
    const auto isOpen = [](const QString &host) { return host == "outbrain.com" || host == "taboola.com"; };
    harness.httpClient.completeAll([&](const QUrl &url) {
        return isOpen(url.host()) ? testing::httpStatus(200)
                                  : testing::transportError(NSURLErrorCannotFindHost);
    });
    harness.runMainQueue();
    EXPECT_FALSE(busy->isVisible());

    ASSERT_TRUE(harness.item("scoreText")->isVisible());
    EXPECT_EQ(harness.property("scoreText"), "Blocking Score: 80%");
    EXPECT_EQ(harness.property("scoreText", "color").value<QColor>(), green);
    const QList<QQuickItem *> rows = harness.items("resultRow");
    ASSERT_EQ(rows.size(), 10);
    for (QQuickItem *row : rows) {
        const QString host = row->childItems().at(0)->property("text").toString();
        const QQuickItem *label = row->childItems().at(1);
        EXPECT_EQ(label->property("plainText"), isOpen(host) ? "❌ Not Blocked" : "✅ Blocked")
            << host.toStdString();
        EXPECT_EQ(label->property("color").value<QColor>(), isOpen(host) ? red : green) << host.toStdString();
    }
}

// The texts and their encoding are the support tests'; here, that each button reaches its page.
TEST_F(MainViewTest, EachLinkButtonOpensItsPageAndThePromotionPagerOpensOnOrvindo)
{
    testing::UrlRecorder links;
    harness.start(ContentWindow::phoneSize, false);
    QQuickItem *pager = harness.item("promotionSwipeView");
    EXPECT_EQ(pager->property("currentIndex"), 0);
    EXPECT_EQ(pager->property("count"), 2);
    harness.click(harness.item("orvindoPromoCard")->findChild<QQuickItem *>("storeBadge"));
    pager->setProperty("currentIndex", 1);
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

// On a phone the sheet comes up from the bottom; on a tablet it is centred.
TEST(MainViewShareSheet, ShareAppOpensTheSheetInsideTheWindowAndEscapeClosesIt)
{
    for (const QSize size : { ContentWindow::phoneSize, ContentWindow::tabletSize }) {
        SCOPED_TRACE(size.width());
        UiHarness harness;
        harness.start(size, false);
        harness.click(harness.item("shareButton"));
        // The sheet exists only while it is shown: closing it destroys the item.
        const QPointer<QQuickItem> sheet = harness.item("shareText");
        ASSERT_TRUE(harness.shareSheet.isVisible());
        QTRY_VERIFY(sheet->isVisible());
        harness.settle();

        EXPECT_TRUE(sheet->property("plainText").toString().startsWith("🚀 Check out Brivanta 1.0.0! 🎉\n"));
        EXPECT_EQ(harness.item("shareLink")->property("text"), "https://apps.apple.com/app/id6742517203");
        // The whole sheet, down to its buttons, lies inside the window.
        QQuickItem *close = harness.item("closeShareButton");
        EXPECT_TRUE(QRectF(QPointF(0, 0), size).contains(close->mapRectToScene(close->boundingRect())));
        QQuickItem *panel = sheet->parentItem();
        EXPECT_NEAR(panel->mapRectToScene(panel->boundingRect()).center().x(), size.width() / 2.0, 1);

        QTest::keyClick(&harness.window(), Qt::Key_Escape);
        EXPECT_FALSE(harness.shareSheet.isVisible());
        QTRY_VERIFY(!sheet || !sheet->isVisible());
    }
}

TEST_F(MainViewTest, TheFifthAppearanceShowsTheRatingPromptAndEscapeDismissesIt)
{
    harness.preferences.setInteger(4, "launchCount");
    harness.start(ContentWindow::phoneSize, false);
    ASSERT_TRUE(harness.ratingPrompt.isVisible());
    QTRY_VERIFY(harness.item("writeReviewButton")->isVisible());

    QTest::keyClick(&harness.window(), Qt::Key_Escape);
    EXPECT_FALSE(harness.ratingPrompt.isVisible());
}

// Every entry of the shipped German catalogue is finished, so a German locale never falls back to English.
TEST_F(MainViewTest, UnderAGermanLocaleTheLabelsAreGerman)
{
    QFile file(QStringLiteral(BRIVANTA_GERMAN_TS));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString catalogue = QString::fromUtf8(file.readAll());
    EXPECT_GE(catalogue.count("<translation>"), 39);
    // Neither unfinished nor obsolete nor empty.
    EXPECT_FALSE(catalogue.contains("<translation type="));
    EXPECT_FALSE(catalogue.contains(QRegularExpression("<translation>\\s*</translation>")));

    QTranslator english;
    EXPECT_FALSE(BrivantaApp::installTranslator(
        *QCoreApplication::instance(), english, QLocale(QLocale::English, QLocale::UnitedStates)));
    QTranslator german;
    ASSERT_TRUE(BrivantaApp::installTranslator(
        *QCoreApplication::instance(), german, QLocale(QLocale::German, QLocale::Germany)));
    // The percent sign and the argument's place differ in German.
    EXPECT_EQ(MainViewModel::scoreTextFor(85), "Blockierquote: 85 %");
    harness.start();
    EXPECT_EQ(harness.property("onboardingButton"), "Weiter");
    harness.leaveOnboarding();
    EXPECT_EQ(harness.property("statusText"), "Deaktiviert");
    // The button's and the table's texts stay as they are, so that the first step names the button.
    EXPECT_EQ(harness.property("addButton"), "Add Network Settings");
    EXPECT_EQ(
        harness.items("instructionText").first()->property("text"), "Press 'Add Network Settings' above.");
    QCoreApplication::removeTranslator(&german);
}

} // namespace
} // namespace brivanta
