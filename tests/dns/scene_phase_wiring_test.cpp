#include "ui/ui_harness.h"

#include <QGuiApplication>
#include <gtest/gtest.h>

namespace brivanta::testing {
namespace {

TEST(ScenePhaseWiring, OnlyReturningToTheForegroundRefreshesTheStatus)
{
    UiHarness ui;
    ui.start();
    ui.leaveOnboarding();
    const auto loads = [&] { return ui.dnsSettingsManager.count(FakeDNSSettingsManager::Operation::Load); };
    const int before = loads();
    ASSERT_GE(before, 1) << "the main screen did not appear";

    emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
    emit qGuiApp->applicationStateChanged(Qt::ApplicationHidden);
    EXPECT_EQ(loads(), before);
    emit qGuiApp->applicationStateChanged(Qt::ApplicationActive);
    EXPECT_EQ(loads(), before + 1);
}

} // namespace
} // namespace brivanta::testing
