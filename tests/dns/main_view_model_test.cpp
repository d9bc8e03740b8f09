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
using On = FakeDNSSettingsManager::On;
using Lines = std::vector<std::string>;

PlatformError error(const char *domain, qint64 code, const char *description)
{
    return PlatformError { QString::fromLatin1(domain), code, QString::fromUtf8(description) };
}

class MainViewModelTest : public ::testing::Test
{
protected:
    MainViewModelTest() { resetModel(); }

    void resetModel()
    {
        model = std::make_unique<MainViewModel>(MainViewModel::Dependencies {
            manager,
            mainQueue,
            environment,
            console,
            [this] { events.push_back("launch count"); },
            [this] {
                ++testersMade;
                return AdBlockTester::withTestDomainsForTesting(http, mainQueue, testDomains);
            },
            withSwitch ? &systemSwitch : nullptr,
            resolvers,
        });
    }

    FakeDNSSettingsManager manager;
    FakeSystemDnsSwitch systemSwitch;
    bool withSwitch = false;
    ManualMainQueue mainQueue;
    FakeEnvironment environment;
    RecordingConsole console;
    FakeHttpClient http;
    QStringList testDomains { QStringLiteral("https://ads.test") };
    const std::vector<Resolver> *resolvers = nullptr;
    std::vector<std::string> events;
    int testersMade = 0;
    std::unique_ptr<MainViewModel> model;
};

// Status refresh

TEST_F(MainViewModelTest, OnADesktopTheReasonArrivesWithTheFlagAndSwitchingOnRefreshesOnlyOnSuccess)
{
    EXPECT_FALSE(model->canSwitchOn());
    withSwitch = true;
    resetModel();
    ASSERT_TRUE(model->canSwitchOn());
    systemSwitch.helperInstalled = false;
    EXPECT_FALSE(model->canSwitchOn());
    systemSwitch.setReason(QStringLiteral("Not switched on."));
    model->refreshStatus();
    manager.release(Operation::Load);
    // Taken when the load completes: a later change is the next refresh's.
    systemSwitch.setReason(QStringLiteral("later"));
    EXPECT_EQ(model->statusReason(), QString());
    mainQueue.runAll();
    EXPECT_EQ(model->statusReason(), QStringLiteral("Not switched on."));

    model->switchOn();
    model->switchOn(); // one request at a time
    ASSERT_EQ(systemSwitch.pending.size(), 1u);
    EXPECT_TRUE(model->isSwitchingOn());
    systemSwitch.pending[0](QStringLiteral("Switching on was cancelled."));
    mainQueue.runAll();
    EXPECT_FALSE(model->isSwitchingOn());
    EXPECT_EQ(model->statusReason(), QStringLiteral("Switching on was cancelled."));
    EXPECT_EQ(console.lines(), Lines { "Switching on was cancelled." });
    EXPECT_EQ(manager.count(Operation::Load), 1);

    model->switchOn();
    systemSwitch.pending[1](std::nullopt);
    mainQueue.runAll();
    EXPECT_EQ(manager.count(Operation::Load), 2);
}

TEST_F(MainViewModelTest, RefreshAsksThePlatformAndSetsTheFlagOnTheMainQueueOrPrintsItsFailure)
{
    environment.variables = { { "XCODE_RUNNING_FOR_PREVIEWS", "0" } };
    manager.setEnabled(true);
    QSignalSpy changed(model.get(), &MainViewModel::isBlockingEnabledChanged);

    model->refreshStatus();
    manager.release(Operation::Load);
    EXPECT_FALSE(model->isBlockingEnabled());
    mainQueue.runAll();
    EXPECT_TRUE(model->isBlockingEnabled());
    EXPECT_EQ(changed.count(), 1);

    manager.setEnabled(false);
    model->refreshStatus();
    manager.release(Operation::Load, error("NEConfigurationErrorDomain", 5, "could not read"));
    EXPECT_EQ(console.lines(), Lines { "could not read" });
    EXPECT_EQ(mainQueue.pending(), 0u);
    EXPECT_TRUE(model->isBlockingEnabled());
}

TEST_F(MainViewModelTest, PreviewsAndSimulatorsReportProtectionWithoutAskingThePlatform)
{
    const struct
    {
        std::map<std::string, std::string> variables;
        bool asksPlatform;
    } cases[] = { { {}, true }, { { { "XCODE_RUNNING_FOR_PREVIEWS", "1" } }, false },
        { { { "XCODE_RUNNING_FOR_PREVIEWS", "true" } }, true },
        { { { "XCODE_RUNNING_FOR_PREVIEWS", "" } }, true }, { { { "SIMULATOR_DEVICE_NAME", "" } }, false },
        { { { "XCODE_RUNNING_FOR_PREVIEWS", "0" }, { "SIMULATOR_DEVICE_NAME", "iPhone 15" } }, false } };
    for (const auto &c : cases) {
        FakeDNSSettingsManager fresh;
        environment.variables = c.variables;
        MainViewModel subject({ fresh, mainQueue, environment, console, [] {}, nullptr });
        subject.refreshStatus();
        EXPECT_EQ(fresh.count(Operation::Load), c.asksPlatform ? 1 : 0) << c.variables.size();
        EXPECT_EQ(subject.isBlockingEnabled(), !c.asksPlatform) << c.variables.size();
    }
}

// Installing the profile

TEST_F(MainViewModelTest, SaveOfTheFirstProfilePrintsThenSetsTheFlagBeforeRefreshing)
{
    bool addedWhenLoadStarted = false;
    manager.onStart = [&](Operation operation) {
        if (operation == Operation::Load)
            addedWhenLoadStarted = model->isSettingsAdded();
    };
    QSignalSpy added(model.get(), &MainViewModel::isSettingsAddedChanged);

    model->addNetworkSettings();
    const NEDNSSettings expected = NEDNSOverHTTPSSettings { {},
        QUrl(QStringLiteral("https://%1/c7e091").arg(QString::fromLatin1(build::resolverHost))) };
    EXPECT_EQ(manager.dnsSettings(), expected);
    EXPECT_TRUE(manager.onDemandRulesWereSet());
    EXPECT_TRUE(manager.onDemandRules().empty());
    ASSERT_EQ(manager.started().size(), 1u); // no load before the save

    manager.release(Operation::Save);
    EXPECT_EQ(console.lines(), Lines { "DNS settings was saved" });
    EXPECT_FALSE(model->isSettingsAdded());
    ASSERT_TRUE(mainQueue.runOne());
    EXPECT_TRUE(model->isSettingsAdded());
    EXPECT_EQ(added.count(), 1);
    EXPECT_TRUE(addedWhenLoadStarted);
    // Off at once, before the refresh completes.
    EXPECT_FALSE(model->addButtonEnabled());
    EXPECT_EQ(model->addButtonTitle(), QStringLiteral("Settings Added"));
}

struct SaveErrorCase
{
    const char *name;
    const char *domain;
    qint64 code;
    bool ignored;
    friend void PrintTo(const SaveErrorCase &c, std::ostream *os) { *os << c.name; }
};

class SaveErrorTest : public MainViewModelTest, public ::testing::WithParamInterface<SaveErrorCase>
{
};

TEST_P(SaveErrorTest, OnlyConfigurationCode9IsSwallowedEveryOtherErrorIsPrintedThenRemoved)
{
    std::optional<Lines> linesWhenRemoving;
    manager.onStart = [&](Operation operation) {
        if (operation == Operation::Remove)
            linesWhenRemoving = console.lines();
    };
    model->addNetworkSettings();
    manager.release(Operation::Save, error(GetParam().domain, GetParam().code, "save failed"));
    if (GetParam().ignored) {
        EXPECT_EQ(console.lines(), Lines {});
        EXPECT_EQ(linesWhenRemoving, std::nullopt);
    } else {
        EXPECT_EQ(linesWhenRemoving, Lines { "save failed" });
    }
    EXPECT_EQ(mainQueue.pending(), 0u);
    EXPECT_FALSE(model->isSettingsAdded());
}

INSTANTIATE_TEST_SUITE_P(Errors, SaveErrorTest,
    ::testing::Values(SaveErrorCase { "ConfigurationUnchanged", "NEConfigurationErrorDomain", 9, true },
        SaveErrorCase { "ConfigurationCode10", "NEConfigurationErrorDomain", 10, false },
        SaveErrorCase { "Code9OfAnotherDomain", "NEVPNErrorDomain", 9, false },
        SaveErrorCase { "DomainOfOtherCase", "neconfigurationerrordomain", 9, false }),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(MainViewModelTest, AnEmptyProfileListStopsTheProcess)
{
    const std::vector<Resolver> none;
    resolvers = &none;
    resetModel();
    EXPECT_DEATH(model->addNetworkSettings(), "the resolver list is empty");
}

// Removal after a failed save

class RemovalTest : public MainViewModelTest, public ::testing::WithParamInterface<bool>
{
};

TEST_P(RemovalTest, CompletionRefreshesOnItsOwnThreadAndThenPrints)
{
    const bool removalFails = GetParam();
    std::size_t linesWhenRefreshStarted = 0;
    manager.onStart = [&](Operation operation) {
        if (operation == Operation::Load)
            linesWhenRefreshStarted = console.lines().size();
    };

    model->addNetworkSettings();
    manager.release(Operation::Save, error("NEConfigurationErrorDomain", 1, "invalid"));
    manager.release(Operation::Remove,
        removalFails ? std::optional(error("NEConfigurationErrorDomain", 5, "cannot remove")) : std::nullopt);

    EXPECT_EQ(
        console.lines(), (Lines { "invalid", removalFails ? "cannot remove" : "DNS settings was removed" }));
    ASSERT_EQ(manager.count(Operation::Load), 1);
    EXPECT_EQ(linesWhenRefreshStarted, 1u);
    EXPECT_NE(manager.started().back().thread, std::this_thread::get_id());
    EXPECT_EQ(mainQueue.pending(), 0u); // no hop before the refresh
}

INSTANTIATE_TEST_SUITE_P(Outcome, RemovalTest, ::testing::Bool(),
    [](const auto &info) { return info.param ? "Fails" : "Succeeds"; });

TEST_F(MainViewModelTest, RemovalWithoutSettingsDoesNothing)
{
    model->removeDNSSettings();
    EXPECT_TRUE(manager.started().empty());
    EXPECT_EQ(console.lines(), Lines {});
}

TEST_F(MainViewModelTest, OffMainThreadFlagWriteNotifiesOnTheMainThread)
{
    // Only in a simulator does the removal's own refresh write the flag, on the slot's completion thread.
    environment.variables = { { "SIMULATOR_DEVICE_NAME", "" } };
    manager.setDnsSettings(NEDNSOverTLSSettings { {}, QStringLiteral("dns.test") });
    std::vector<std::thread::id> notifiedOn;
    QObject::connect(model.get(), &MainViewModel::isBlockingEnabledChanged,
        [&] { notifiedOn.push_back(std::this_thread::get_id()); });

    model->removeDNSSettings();
    manager.release(Operation::Remove, std::nullopt, On::OtherThread);
    EXPECT_TRUE(model->isBlockingEnabled());
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

// Screen state

TEST_F(MainViewModelTest, OnlyBecomingActiveRefreshes)
{
    model->setScenePhase(MainViewModel::ScenePhase::Inactive);
    model->setScenePhase(MainViewModel::ScenePhase::Background);
    EXPECT_EQ(manager.count(Operation::Load), 0);
    model->setScenePhase(MainViewModel::ScenePhase::Active);
    EXPECT_EQ(manager.count(Operation::Load), 1);
    EXPECT_TRUE(events.empty());
}

TEST_F(MainViewModelTest, EveryAppearanceRefreshesThenCountsTheLaunch)
{
    manager.onStart = [&](Operation) { events.push_back("refresh"); };
    model->onAppear();
    model->onAppear();
    EXPECT_EQ(events, (std::vector<std::string> { "refresh", "launch count", "refresh", "launch count" }));
}

TEST_F(MainViewModelTest, TesterIsMadeOnceOnTheFirstRunAndNotByReadingTheScreen)
{
    EXPECT_FALSE(model->hasResults());
    EXPECT_EQ(model->scoreText(), "Blocking Score: 0%");
    EXPECT_EQ(model->tester(), nullptr);
    model->runTest();
    AdBlockTester *first = model->tester();
    model->runTest();
    EXPECT_EQ(model->tester(), first);
    EXPECT_EQ(testersMade, 1);
}

TEST_F(MainViewModelTest, ResultsAndScoreOfTheTesterReachTheScreen)
{
    testDomains = { QStringLiteral("https://ads.test/https://twice"), QStringLiteral("http://plain.test"),
        QStringLiteral("https://open.test") };
    EXPECT_FALSE(model->hasResults());
    QSignalSpy results(model.get(), &MainViewModel::resultsChanged);
    QSignalSpy score(model.get(), &MainViewModel::scoreChanged);

    model->runTest();
    http.completeAll([](const QUrl &url) {
        return url.host() == QLatin1String("open.test") ? httpStatus(200)
                                                        : transportError(NSURLErrorTimedOut);
    });
    mainQueue.runAll();

    EXPECT_EQ(testersMade, 1);
    EXPECT_GE(results.count(), 3);
    EXPECT_EQ(score.count(), 1);
    EXPECT_EQ(model->scoreText(), QStringLiteral("Blocking Score: 66%"));
    EXPECT_FALSE(model->isScoreGood());
    // Sorted by entry, every "https://" removed.
    const auto row = [](const QString &host, bool blocked) {
        return QVariantMap { { QStringLiteral("host"), host }, { QStringLiteral("blocked"), blocked },
            { QStringLiteral("label"),
                blocked ? QStringLiteral("✅ Blocked") : QStringLiteral("❌ Not Blocked") } };
    };
    EXPECT_EQ(model->resultRows(),
        (QVariantList { row(QStringLiteral("http://plain.test"), true),
            row(QStringLiteral("ads.test/twice"), true), row(QStringLiteral("open.test"), false) }));
}

TEST(ScoreLineTest, ReadsThePercentageAndTurnsGreenFrom80)
{
    const struct
    {
        qint64 score;
        const char *text;
        bool good;
    } cases[] = { { 79, "Blocking Score: 79%", false }, { 80, "Blocking Score: 80%", true },
        { 9223372036854775807, "Blocking Score: 9223372036854775807%", true } };
    for (const auto &c : cases) {
        EXPECT_EQ(MainViewModel::scoreTextFor(c.score), QString::fromUtf8(c.text));
        EXPECT_EQ(MainViewModel::isScoreGoodFor(c.score), c.good) << c.score;
    }
}

} // namespace
} // namespace brivanta::testing
