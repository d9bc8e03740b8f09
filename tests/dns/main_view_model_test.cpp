#include "brivanta_build_config.h"
#include "dns/main_view_model.h"
#include "fakes/fake_dns_settings_manager.h"
#include "fakes/fake_environment.h"
#include "fakes/fake_system_dns_switch.h"
#include "fakes/manual_main_queue.h"
#include "fakes/recording_console.h"
#include "model/resolver.h"
#include "tester/fake_http_client.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

namespace brivanta::testing {
namespace {

using Operation = FakeDNSSettingsManager::Operation;
using Lines = std::vector<std::string>;

PlatformError error(const char *domain, qint64 code, const char *description)
{
    return PlatformError { QString::fromLatin1(domain), code, QString::fromUtf8(description) };
}

class MainViewModelTest : public ::testing::Test
{
protected:
    FakeDNSSettingsManager manager;
    ManualMainQueue mainQueue;
    FakeEnvironment environment;
    RecordingConsole console;
    FakeHttpClient http;
    QStringList testDomains { QStringLiteral("https://ads.test") };
    int testersMade = 0;
    std::unique_ptr<MainViewModel> model = std::make_unique<MainViewModel>(
        MainViewModel::Dependencies { manager, mainQueue, environment, console, [] {},
            [this] {
                ++testersMade;
                return AdBlockTester::withTestDomainsForTesting(http, mainQueue, testDomains);
            } });
};

// The flag and, on a desktop, the reason are those of the completed load, shown from the main queue.
TEST_F(MainViewModelTest, RefreshShowsWhatTheLoadFoundOnTheMainQueueOrPrintsItsFailure)
{
    FakeSystemDnsSwitch systemSwitch;
    MainViewModel desktop({ manager, mainQueue, environment, console, [] {}, nullptr, &systemSwitch });
    QSignalSpy changed(&desktop, &MainViewModel::isBlockingEnabledChanged);
    manager.setEnabled(true);
    systemSwitch.setReason(QStringLiteral("Not switched on."));
    desktop.refreshStatus();
    manager.release(Operation::Load);
    systemSwitch.setReason(QStringLiteral("later")); // the next refresh's
    EXPECT_FALSE(desktop.isBlockingEnabled());
    mainQueue.runAll();
    EXPECT_TRUE(desktop.isBlockingEnabled());
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(desktop.statusReason(), QStringLiteral("Not switched on."));

    manager.setEnabled(false);
    desktop.refreshStatus();
    manager.release(Operation::Load, error("NEConfigurationErrorDomain", 5, "could not read"));
    EXPECT_EQ(console.lines(), Lines { "could not read" });
    EXPECT_EQ(mainQueue.pending(), 0u);
    EXPECT_TRUE(desktop.isBlockingEnabled());
}

TEST_F(MainViewModelTest, OnlyADesktopSwitchesOnOneRequestAtATimeAndRefreshesOnlyOnSuccess)
{
    EXPECT_FALSE(model->canSwitchOn());
    FakeSystemDnsSwitch systemSwitch;
    MainViewModel desktop({ manager, mainQueue, environment, console, [] {}, nullptr, &systemSwitch });
    ASSERT_TRUE(desktop.canSwitchOn());
    systemSwitch.helperInstalled = false;
    EXPECT_FALSE(desktop.canSwitchOn());
    desktop.switchOn();
    desktop.switchOn();
    ASSERT_EQ(systemSwitch.pending.size(), 1u);
    EXPECT_TRUE(desktop.isSwitchingOn());
    systemSwitch.pending[0](QStringLiteral("Switching on was cancelled."));
    mainQueue.runAll();
    EXPECT_FALSE(desktop.isSwitchingOn());
    EXPECT_EQ(desktop.statusReason(), QStringLiteral("Switching on was cancelled."));
    EXPECT_EQ(console.lines(), Lines { "Switching on was cancelled." });
    EXPECT_EQ(manager.count(Operation::Load), 0);
    desktop.switchOn();
    systemSwitch.pending[1](std::nullopt);
    mainQueue.runAll();
    EXPECT_EQ(manager.count(Operation::Load), 1);
}

TEST_F(MainViewModelTest, PreviewsAndSimulatorsReportProtectionWithoutAskingThePlatform)
{
    const std::tuple<const char *, const char *, bool> cases[]
        = { { "XCODE_RUNNING_FOR_PREVIEWS", "1", false }, { "XCODE_RUNNING_FOR_PREVIEWS", "true", true },
              { "SIMULATOR_DEVICE_NAME", "", false } };
    for (const auto &[name, value, asksPlatform] : cases) {
        FakeDNSSettingsManager fresh;
        environment.variables = { { name, value } };
        MainViewModel subject({ fresh, mainQueue, environment, console, [] {}, nullptr });
        subject.refreshStatus();
        EXPECT_EQ(fresh.count(Operation::Load), asksPlatform ? 1 : 0) << name << value;
        EXPECT_EQ(subject.isBlockingEnabled(), !asksPlatform) << name << value;
    }
}

TEST_F(MainViewModelTest, SaveOfTheFirstProfilePrintsThenSetsTheFlagBeforeRefreshing)
{
    bool addedWhenLoadStarted = false;
    manager.onStart = [&](Operation operation) {
        if (operation == Operation::Load)
            addedWhenLoadStarted = model->isSettingsAdded();
    };
    model->addNetworkSettings();
    const NEDNSSettings expected = NEDNSOverHTTPSSettings { {},
        QUrl(QStringLiteral("https://%1/c7e091").arg(QString::fromLatin1(build::resolverHost))) };
    EXPECT_EQ(manager.dnsSettings(), expected);
    ASSERT_EQ(manager.started.size(), 1u); // no load before the save

    manager.release(Operation::Save);
    EXPECT_EQ(console.lines(), Lines { "DNS settings was saved" });
    EXPECT_FALSE(model->isSettingsAdded());
    ASSERT_TRUE(mainQueue.runOne());
    EXPECT_TRUE(addedWhenLoadStarted);
    EXPECT_FALSE(model->addButtonEnabled());
    EXPECT_EQ(model->addButtonTitle(), QStringLiteral("Settings Added"));
}

// Only configuration code 9 (a save of what the platform already holds) is swallowed. Any other failure
// is printed, then the settings are removed; the removal refreshes on its own thread before it prints.
TEST_F(MainViewModelTest, AFailedSaveIsPrintedThenRemovedAndTheRemovalRefreshesBeforePrinting)
{
    const std::tuple<const char *, qint64, bool, const char *> cases[]
        = { { "NEConfigurationErrorDomain", 9, false, "" }, { "NEConfigurationErrorDomain", 10, true, "" },
              { "NEVPNErrorDomain", 9, true, "cannot remove" },
              { "neconfigurationerrordomain", 9, true, "" } };
    for (const auto &[domain, code, removed, removalError] : cases) {
        SCOPED_TRACE(std::string(domain) + " " + std::to_string(code));
        FakeDNSSettingsManager fresh;
        RecordingConsole out;
        MainViewModel subject({ fresh, mainQueue, environment, out, [] {}, nullptr });
        std::vector<std::pair<Operation, std::size_t>> started; // with the lines printed before
        fresh.onStart = [&](Operation operation) { started.emplace_back(operation, out.lines().size()); };
        subject.addNetworkSettings();
        fresh.release(Operation::Save, error(domain, code, "save failed"));
        if (!removed) {
            EXPECT_EQ(out.lines(), Lines {});
            EXPECT_EQ(started.size(), 1u);
            continue;
        }
        const bool fails = *removalError != 0;
        fresh.release(Operation::Remove,
            fails ? std::optional(error("NEConfigurationErrorDomain", 5, removalError)) : std::nullopt);
        EXPECT_EQ(out.lines(), (Lines { "save failed", fails ? removalError : "DNS settings was removed" }));
        EXPECT_EQ(started,
            (decltype(started) { { Operation::Save, 0 }, { Operation::Remove, 1 }, { Operation::Load, 1 } }));
        EXPECT_EQ(mainQueue.pending(), 0u); // no hop before the refresh
    }
}

TEST_F(MainViewModelTest, AnEmptyProfileListStopsTheProcess)
{
    const std::vector<Resolver> none;
    MainViewModel subject({ manager, mainQueue, environment, console, [] {}, nullptr, nullptr, &none });
    EXPECT_DEATH(subject.addNetworkSettings(), "the resolver list is empty");
}

TEST_F(MainViewModelTest, RemovalNotifiesTheFlagOnTheMainThreadAndNeedsSettings)
{
    model->removeDNSSettings();
    EXPECT_TRUE(manager.started.empty());

    // Only in a simulator does the removal's own refresh write the flag, on the slot's completion thread.
    environment.variables = { { "SIMULATOR_DEVICE_NAME", "" } };
    manager.setDnsSettings(NEDNSOverTLSSettings { {}, QStringLiteral("dns.test") });
    std::vector<std::thread::id> notifiedOn;
    QObject::connect(model.get(), &MainViewModel::isBlockingEnabledChanged,
        [&] { notifiedOn.push_back(std::this_thread::get_id()); });
    model->removeDNSSettings();
    manager.release(Operation::Remove);
    EXPECT_TRUE(notifiedOn.empty());
    mainQueue.runAll();
    EXPECT_EQ(notifiedOn, std::vector { std::this_thread::get_id() });
}

TEST_F(MainViewModelTest, CompletionsArrivingAfterTheModelIsGoneTouchNothingOfIt)
{
    model->addNetworkSettings();
    model.reset();
    manager.setEnabled(true);
    manager.release(Operation::Save);
    mainQueue.runAll();
    manager.release(Operation::Load);
    mainQueue.runAll();
    EXPECT_EQ(console.lines(), Lines { "DNS settings was saved" });
    EXPECT_EQ(manager.count(Operation::Load), 1);
}

TEST_F(MainViewModelTest, TheTesterIsMadeOnTheFirstRunAndItsSortedResultsAndScoreReachTheScreen)
{
    testDomains = { QStringLiteral("https://ads.test/https://twice"), QStringLiteral("http://plain.test"),
        QStringLiteral("https://open.test") };
    EXPECT_FALSE(model->hasResults());
    EXPECT_EQ(model->scoreText(), "Blocking Score: 0%");
    EXPECT_EQ(testersMade, 0);
    QSignalSpy score(model.get(), &MainViewModel::scoreChanged);
    model->runTest();
    http.completeAll([](const QUrl &url) {
        return url.host() == QLatin1String("open.test") ? httpStatus(200)
                                                        : transportError(NSURLErrorTimedOut);
    });
    mainQueue.runAll();
    EXPECT_EQ(score.count(), 1);
    EXPECT_EQ(model->scoreText(), QStringLiteral("Blocking Score: 66%"));
    EXPECT_FALSE(model->isScoreGood());
    // Every "https://" removed.
    const auto row = [](const char *host, bool blocked) {
        return QVariantMap { { QStringLiteral("host"), QString::fromLatin1(host) },
            { QStringLiteral("blocked"), blocked },
            { QStringLiteral("label"),
                blocked ? QStringLiteral("✅ Blocked") : QStringLiteral("❌ Not Blocked") } };
    };
    EXPECT_EQ(model->resultRows(),
        (QVariantList {
            row("http://plain.test", true), row("ads.test/twice", true), row("open.test", false) }));
    model->runTest();
    EXPECT_EQ(testersMade, 1);
}

} // namespace
} // namespace brivanta::testing
