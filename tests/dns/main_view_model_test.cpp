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
        });
    }

    // Saves successfully and runs the main-queue task, so the model has a flag set and a load under way.
    void addAndSaveSuccessfully()
    {
        model->addNetworkSettings();
        manager.release(Operation::Save);
        mainQueue.runAll();
    }

    FakeDNSSettingsManager manager;
    FakeSystemDnsSwitch systemSwitch;
    bool withSwitch = false;
    ManualMainQueue mainQueue;
    FakeEnvironment environment;
    RecordingConsole console;
    FakeHttpClient http;
    QStringList testDomains { QStringLiteral("https://ads.test") };
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

TEST_F(MainViewModelTest, RefreshOnADeviceAsksThePlatformAndSetsTheFlagOnTheMainQueue)
{
    environment.variables = { { "XCODE_RUNNING_FOR_PREVIEWS", "0" } };
    manager.setEnabled(true);
    QSignalSpy changed(model.get(), &MainViewModel::isBlockingEnabledChanged);

    model->refreshStatus();
    ASSERT_EQ(manager.count(Operation::Load), 1);
    manager.release(Operation::Load);
    EXPECT_FALSE(model->isBlockingEnabled());
    EXPECT_EQ(mainQueue.pending(), 1u);

    mainQueue.runAll();
    EXPECT_TRUE(model->isBlockingEnabled());
    EXPECT_EQ(changed.count(), 1);
    EXPECT_FALSE(model->isSettingsAdded());
}

TEST_F(MainViewModelTest, FailedLoadPrintsTheDescriptionAndChangesNothing)
{
    manager.setEnabled(true);
    model->refreshStatus();
    manager.release(Operation::Load, error("NEConfigurationErrorDomain", 5, "could not read"));
    EXPECT_EQ(console.lines(), Lines { "could not read" });
    EXPECT_EQ(mainQueue.pending(), 0u);
    EXPECT_FALSE(model->isBlockingEnabled());
}

struct EnvironmentCase
{
    const char *name;
    std::map<std::string, std::string> variables;
    bool asksPlatform;
    friend void PrintTo(const EnvironmentCase &c, std::ostream *os) { *os << c.name; }
};

class RefreshEnvironmentTest : public MainViewModelTest, public ::testing::WithParamInterface<EnvironmentCase>
{
};

TEST_P(RefreshEnvironmentTest, PreviewsAndSimulatorsReportProtectionWithoutAskingThePlatform)
{
    environment.variables = GetParam().variables;
    model->refreshStatus();
    EXPECT_EQ(manager.count(Operation::Load), GetParam().asksPlatform ? 1 : 0);
    EXPECT_EQ(model->isBlockingEnabled(), !GetParam().asksPlatform);
}

INSTANTIATE_TEST_SUITE_P(Variables, RefreshEnvironmentTest,
    ::testing::Values(EnvironmentCase { "NoVariables", {}, true },
        EnvironmentCase { "PreviewOne", { { "XCODE_RUNNING_FOR_PREVIEWS", "1" } }, false },
        EnvironmentCase { "PreviewZero", { { "XCODE_RUNNING_FOR_PREVIEWS", "0" } }, true },
        EnvironmentCase { "PreviewTrue", { { "XCODE_RUNNING_FOR_PREVIEWS", "true" } }, true },
        EnvironmentCase { "PreviewEmpty", { { "XCODE_RUNNING_FOR_PREVIEWS", "" } }, true },
        EnvironmentCase { "SimulatorEmpty", { { "SIMULATOR_DEVICE_NAME", "" } }, false },
        EnvironmentCase { "SimulatorNamed", { { "SIMULATOR_DEVICE_NAME", "iPhone 15" } }, false },
        EnvironmentCase { "PreviewZeroInSimulator",
            { { "XCODE_RUNNING_FOR_PREVIEWS", "0" }, { "SIMULATOR_DEVICE_NAME", "" } }, false }),
    [](const auto &info) { return std::string(info.param.name); });

// Installing the profile

TEST_F(MainViewModelTest, AddSetsTheBuiltInProfileAndSavesWithoutLoadingFirst)
{
    model->addNetworkSettings();
    const NEDNSSettings expected = NEDNSOverHTTPSSettings { {},
        QUrl(QStringLiteral("https://%1/c7e091").arg(QString::fromLatin1(build::resolverHost))) };
    EXPECT_EQ(manager.dnsSettings(), expected);
    EXPECT_TRUE(manager.onDemandRulesWereSet());
    EXPECT_TRUE(manager.onDemandRules().empty());
    ASSERT_EQ(manager.started().size(), 1u);
    EXPECT_EQ(manager.started()[0].operation, Operation::Save);
}

TEST_F(MainViewModelTest, SuccessfulSavePrintsFirstThenSetsTheFlagBeforeRefreshing)
{
    bool addedWhenLoadStarted = false;
    manager.onLoad = [&] { addedWhenLoadStarted = model->isSettingsAdded(); };
    QSignalSpy added(model.get(), &MainViewModel::isSettingsAddedChanged);

    model->addNetworkSettings();
    manager.release(Operation::Save);
    EXPECT_EQ(console.lines(), Lines { "DNS settings was saved" });
    EXPECT_FALSE(model->isSettingsAdded());
    EXPECT_EQ(manager.count(Operation::Load), 0);

    ASSERT_TRUE(mainQueue.runOne());
    EXPECT_TRUE(model->isSettingsAdded());
    EXPECT_EQ(added.count(), 1);
    EXPECT_EQ(manager.count(Operation::Load), 1);
    EXPECT_TRUE(addedWhenLoadStarted);
    // Disabled at once, before the refresh completes.
    EXPECT_FALSE(model->addButtonEnabled());

    // The user has not switched the configuration on yet.
    manager.release(Operation::Load);
    mainQueue.runAll();
    EXPECT_FALSE(model->isBlockingEnabled());
    EXPECT_TRUE(model->isSettingsAdded());
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

TEST_P(SaveErrorTest, OnlyConfigurationCode9IsSwallowedEveryOtherErrorIsPrintedAndRemoved)
{
    model->addNetworkSettings();
    manager.release(Operation::Save, error(GetParam().domain, GetParam().code, "save failed"));
    if (GetParam().ignored) {
        EXPECT_EQ(console.lines(), Lines {});
        EXPECT_EQ(manager.count(Operation::Remove), 0);
    } else {
        EXPECT_EQ(console.lines(), Lines { "save failed" });
        EXPECT_EQ(manager.count(Operation::Remove), 1);
    }
    EXPECT_EQ(mainQueue.pending(), 0u);
    EXPECT_FALSE(model->isSettingsAdded());
}

INSTANTIATE_TEST_SUITE_P(Errors, SaveErrorTest,
    ::testing::Values(SaveErrorCase { "ConfigurationUnchanged", "NEConfigurationErrorDomain", 9, true },
        SaveErrorCase { "ConfigurationInvalid", "NEConfigurationErrorDomain", 1, false },
        SaveErrorCase { "ConfigurationCode10", "NEConfigurationErrorDomain", 10, false },
        SaveErrorCase { "Code9OfAnotherDomain", "NEVPNErrorDomain", 9, false },
        SaveErrorCase { "DomainOfOtherCase", "neconfigurationerrordomain", 9, false }),
    [](const auto &info) { return std::string(info.param.name); });

// Removal after a failed save

class RemovalTest : public MainViewModelTest, public ::testing::WithParamInterface<bool>
{
};

TEST_P(RemovalTest, CompletionRefreshesOnItsOwnThreadAndThenPrints)
{
    const bool removalFails = GetParam();
    std::size_t linesWhenRefreshStarted = 0;
    manager.onLoad = [&] { linesWhenRefreshStarted = console.lines().size(); };

    model->addNetworkSettings();
    manager.release(Operation::Save, error("NEConfigurationErrorDomain", 1, "invalid"));
    ASSERT_EQ(manager.count(Operation::Remove), 1);
    manager.release(Operation::Remove,
        removalFails ? std::optional(error("NEConfigurationErrorDomain", 5, "cannot remove")) : std::nullopt);

    EXPECT_EQ(
        console.lines(), (Lines { "invalid", removalFails ? "cannot remove" : "DNS settings was removed" }));
    ASSERT_EQ(manager.count(Operation::Load), 1);
    EXPECT_EQ(linesWhenRefreshStarted, 1u);
    const auto load = manager.started().back();
    EXPECT_EQ(load.operation, Operation::Load);
    EXPECT_NE(load.thread, std::this_thread::get_id());
    EXPECT_EQ(mainQueue.pending(), 0u); // no hop before the refresh
}

INSTANTIATE_TEST_SUITE_P(Outcome, RemovalTest, ::testing::Bool(),
    [](const auto &info) { return info.param ? "Fails" : "Succeeds"; });

TEST_F(MainViewModelTest, RemovalWithoutSettingsDoesNothing)
{
    model->removeDNSSettings();
    EXPECT_TRUE(manager.started().empty());
    EXPECT_EQ(console.lines(), Lines {});
    EXPECT_EQ(mainQueue.pending(), 0u);
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

TEST(MainViewModelDeathTest, EmptyBuiltInListIsFatal)
{
    EXPECT_DEATH(MainViewModel::firstResolver({}), "the resolver list is empty");
}

// Screen state

TEST_F(MainViewModelTest, AddButtonFaceFollowsTheSavedFlag)
{
    EXPECT_EQ(model->addButtonTitle(), QStringLiteral("Add Network Settings"));
    EXPECT_EQ(model->addButtonSymbol(), QStringLiteral("network"));
    EXPECT_TRUE(model->addButtonEnabled());

    addAndSaveSuccessfully();
    EXPECT_EQ(model->addButtonTitle(), QStringLiteral("Settings Added"));
    EXPECT_EQ(model->addButtonSymbol(), QStringLiteral("checkmark.circle.fill"));
    EXPECT_FALSE(model->addButtonEnabled());
}

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
    manager.onLoad = [&] { events.push_back("refresh"); };
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

    EXPECT_GE(results.count(), 3);
    EXPECT_EQ(score.count(), 1);
    EXPECT_TRUE(model->hasResults());
    EXPECT_EQ(model->scoreText(), QStringLiteral("Blocking Score: 66%"));
    EXPECT_FALSE(model->isScoreGood());
    const QVariantList rows = model->resultRows();
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows[0].toMap().value(QStringLiteral("host")).toString(), QStringLiteral("http://plain.test"));
    EXPECT_EQ(rows[1].toMap().value(QStringLiteral("host")).toString(), QStringLiteral("ads.test/twice"));
    EXPECT_EQ(rows[2].toMap().value(QStringLiteral("host")).toString(), QStringLiteral("open.test"));
    EXPECT_FALSE(rows[2].toMap().value(QStringLiteral("blocked")).toBool());
}

TEST(ScoreLineTest, ReadsThePercentageAndTurnsGreenFrom80)
{
    const struct
    {
        qint64 score;
        const char *text;
        bool good;
    } cases[] = { { 0, "Blocking Score: 0%", false }, { 79, "Blocking Score: 79%", false },
        { 80, "Blocking Score: 80%", true }, { 100, "Blocking Score: 100%", true },
        { 9223372036854775807, "Blocking Score: 9223372036854775807%", true } };
    for (const auto &c : cases) {
        EXPECT_EQ(MainViewModel::scoreTextFor(c.score), QString::fromUtf8(c.text));
        EXPECT_EQ(MainViewModel::isScoreGoodFor(c.score), c.good) << c.score;
    }
}

TEST(ResultRowsTest, SortedByKeyWithEverySchemeTextRemovedAndLabelled)
{
    const QVariantList rows = MainViewModel::resultRowsFor({
        { QStringLiteral("https://b.test"), false },
        { QStringLiteral("https://a.test/https://x"), true },
        { QStringLiteral("plain.test"), true },
    });
    const QVariantList expected {
        QVariantMap { { QStringLiteral("host"), QStringLiteral("a.test/x") },
            { QStringLiteral("blocked"), true }, { QStringLiteral("label"), QStringLiteral("✅ Blocked") } },
        QVariantMap { { QStringLiteral("host"), QStringLiteral("b.test") },
            { QStringLiteral("blocked"), false },
            { QStringLiteral("label"), QStringLiteral("❌ Not Blocked") } },
        QVariantMap { { QStringLiteral("host"), QStringLiteral("plain.test") },
            { QStringLiteral("blocked"), true }, { QStringLiteral("label"), QStringLiteral("✅ Blocked") } },
    };
    EXPECT_EQ(rows, expected);
}

} // namespace
} // namespace brivanta::testing
