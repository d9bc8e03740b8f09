#include "ui_harness.h"

#include <QQuickItem>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>
#include <gtest/gtest.h>

Q_IMPORT_QML_PLUGIN(BrivantaPlugin)

namespace brivanta {
namespace {

using testing::FakeDNSSettingsManager;
using testing::UiHarness;

struct OnboardingTest : ::testing::Test
{
    UiHarness harness;

    void SetUp() override { harness.start(); }

    QString buttonTitle() { return harness.item("onboardingButton")->property("text").toString(); }
    int currentPage() { return harness.item("onboardingView")->property("currentPage").toInt(); }
    bool mainScreenShown() { return !harness.items("mainView").isEmpty(); }
    void pressButton() { harness.click(harness.item("onboardingButton")); }
};

TEST_F(OnboardingTest, NextEightTimesReachesGetStartedAndANinthPressShowsTheMainScreen)
{
    EXPECT_EQ(buttonTitle(), "Next");
    for (int press = 1; press <= 8; ++press) {
        pressButton();
        EXPECT_EQ(currentPage(), press);
    }
    EXPECT_EQ(buttonTitle(), "Get Started");
    // Nothing of the main screen has run while the onboarding was shown.
    EXPECT_EQ(harness.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Load), 0);
    EXPECT_EQ(harness.preferences.writes, 0);

    pressButton();

    EXPECT_TRUE(mainScreenShown());
    EXPECT_TRUE(harness.items("onboardingView").isEmpty());
    // The main screen appeared: status refresh, then the launch counter.
    EXPECT_EQ(harness.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Load), 1);
    EXPECT_EQ(harness.preferences.integerForKey("launchCount"), 1);
}

TEST_F(OnboardingTest, SwipingMovesBetweenPagesAndNeverEndsTheOnboarding)
{
    QQuickItem *pager = harness.item("onboardingPager");
    const QPoint start = pager->mapToScene(QPointF(pager->width() * 0.8, pager->height() / 2)).toPoint();
    QTest::mousePress(&harness.window(), Qt::LeftButton, Qt::NoModifier, start);
    for (int step = 1; step <= 10; ++step)
        QTest::mouseMove(&harness.window(), start - QPoint(step * 25, 0), 10);
    QTest::mouseRelease(&harness.window(), Qt::LeftButton, Qt::NoModifier, start - QPoint(250, 0), 10);
    QTRY_COMPARE(currentPage(), 1);
    EXPECT_EQ(buttonTitle(), "Next");

    // Straight to the last page: the label follows the pager, and one press ends the onboarding.
    pager->setProperty("currentIndex", 8);
    EXPECT_EQ(currentPage(), 8);
    EXPECT_EQ(buttonTitle(), "Get Started");
    EXPECT_FALSE(mainScreenShown());

    pressButton();

    EXPECT_TRUE(mainScreenShown());
}

} // namespace
} // namespace brivanta
