#include "ui_harness.h"

#include <QQuickItem>
#include <QTest>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::FakeDNSSettingsManager;
using testing::UiHarness;

struct ControlsTest : ::testing::Test
{
    UiHarness harness;

    void SetUp() override
    {
        harness.start();
        harness.leaveOnboarding();
    }
};

TEST_F(ControlsTest, AnActionButtonRunsItsActionOnTheTapBeforeItsRelease)
{
    QQuickItem *button = harness.item("addButton");

    harness.click(button);

    // The action (the save) has run while the button is still pressed: the release comes 0.1 s later.
    EXPECT_EQ(harness.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Save), 1);
    EXPECT_TRUE(button->property("isPressed").toBool());

    // A second tap runs the action again at once.
    harness.click(button);
    EXPECT_EQ(harness.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Save), 2);

    QTRY_VERIFY(!button->property("isPressed").toBool());
    EXPECT_DOUBLE_EQ(button->scale(), 1.0);
    EXPECT_DOUBLE_EQ(button->opacity(), 1.0);
}

TEST_F(ControlsTest, InstructionsShowFourNumberedRows)
{
    QStringList symbols;
    QStringList texts;
    for (QQuickItem *symbol : harness.items("instructionSymbol"))
        symbols.append(symbol->property("symbol").toString());
    for (QQuickItem *text : harness.items("instructionText"))
        texts.append(text->property("text").toString());
    EXPECT_EQ(symbols, QStringList({ "1.circle.fill", "2.circle.fill", "3.circle.fill", "4.circle.fill" }));
    EXPECT_EQ(texts.size(), 4);
    EXPECT_EQ(
        harness.items("instructionSymbol").first()->property("color").value<QColor>(), QColor("#64d2ff"));
}

} // namespace
} // namespace brivanta
