// How the main screen's model works. QML reads its properties and calls its actions; every rule (which
// title, which colour, what a failure does) is decided here. Each operation starts on the main thread and
// ends in a completion that the DNS slot or the system switch calls on a thread of its own. QML may
// destroy the model while a call is in flight, so completions never hold the model: they hold a shared
// State (the seams, two atomic flags, a QPointer back to the model) and hop to the main queue before they
// notify or touch a QObject.
//
// Paths and threads:
//   refreshStatus       main -> load completion (slot thread) -> main queue: isBlockingEnabled, reason
//   addNetworkSettings  main -> save completion (slot thread) -> main queue: isSettingsAdded, refresh
//                       a failed save -> removal, from the slot thread
//   removeDNSSettings   main or slot thread -> removal completion (slot thread) -> refresh, directly: it
//                       only starts a load, whose completion hops by itself. This one direct call is why
//                       the flags are atomic.
//   switchOn            main -> switch completion (its thread) -> main queue: isSwitchingOn, then reason
//                       or refresh
//   runTest             main; the tester reports on the main thread.

#include "dns/main_view_model.h"

#include "model/built_in_resolvers.h"
#include "model/fatal.h"
#include "platform/console.h"
#include "platform/dns_settings_manager.h"
#include "platform/environment.h"
#include "platform/main_queue.h"
#include "platform/platform_mapping.h"
#include "platform/system_dns_switch.h"

#include <QPointer>
#include <QVariantMap>
#include <thread>

namespace brivanta {

// What the seams' completions may touch. They hold it by shared_ptr, never the model itself, so a
// model destroyed while a call is under way is never reached. The flags are atomic because the removal
// completion refreshes the status on its own thread; their change notifications still reach the model
// on the main thread only.
struct MainViewModel::State
{
    State(const Dependencies &dependencies, MainViewModel *owner)
        : manager(dependencies.manager)
        , mainQueue(dependencies.mainQueue)
        , environment(dependencies.environment)
        , console(dependencies.console)
        , systemSwitch(dependencies.systemSwitch)
        , mainThread(std::this_thread::get_id())
        , model(owner)
    { }

    DNSSettingsManager &manager;
    MainQueue &mainQueue;
    const Environment &environment;
    Console &console;
    SystemDnsSwitch *const systemSwitch;
    std::atomic<bool> isBlockingEnabled = false;
    std::atomic<bool> isSettingsAdded = false;
    const std::thread::id mainThread;
    // Read on the main thread only.
    const QPointer<MainViewModel> model;
};

MainViewModel::MainViewModel(Dependencies dependencies, QObject *parent)
    : QObject(parent)
    , m_state(std::make_shared<State>(dependencies, this))
    , m_incrementLaunchCount(std::move(dependencies.incrementLaunchCount))
    , m_makeTester(std::move(dependencies.makeTester))
    , m_resolvers(dependencies.resolvers ? *dependencies.resolvers : builtInResolvers())
{ }

MainViewModel::~MainViewModel() = default;

bool MainViewModel::isBlockingEnabled() const
{
    return m_state->isBlockingEnabled.load();
}

bool MainViewModel::isSettingsAdded() const
{
    return m_state->isSettingsAdded.load();
}

void MainViewModel::setFlag(const std::shared_ptr<State> &state, std::atomic<bool> State::*flag, bool value,
    void (MainViewModel::*changed)())
{
    if ((*state.*flag).exchange(value) == value)
        return;
    auto notify = [state, changed] {
        if (MainViewModel *model = state->model.data())
            emit(model->*changed)();
    };
    if (std::this_thread::get_id() == state->mainThread)
        notify();
    else
        state->mainQueue.async(std::move(notify));
}

namespace {

// The profile that gets installed: the first of the list. An empty list is fatal.
const Resolver &firstResolver(const std::vector<Resolver> &resolvers)
{
    if (resolvers.empty())
        fatal("the resolver list is empty");
    return resolvers.front();
}

} // namespace

void MainViewModel::refreshStatus()
{
    refresh(m_state);
}

void MainViewModel::refresh(const std::shared_ptr<State> &state)
{
    // A preview renderer or a simulator has no DNS slot to ask; the screen shows protection as on.
    const std::optional<std::string> preview = state->environment.value("XCODE_RUNNING_FOR_PREVIEWS");
    if (preview && *preview == "1") {
        setFlag(state, &State::isBlockingEnabled, true, &MainViewModel::isBlockingEnabledChanged);
        return;
    }
    if (state->environment.value("SIMULATOR_DEVICE_NAME")) {
        setFlag(state, &State::isBlockingEnabled, true, &MainViewModel::isBlockingEnabledChanged);
        return;
    }

    state->manager.loadFromPreferences([state](std::optional<PlatformError> error) {
        if (error) {
            state->console.printLine(error->localizedDescription.toStdString());
            return;
        }
        const QString reason = state->systemSwitch ? state->systemSwitch->statusReason() : QString();
        state->mainQueue.async([state, reason] {
            setFlag(state, &State::isBlockingEnabled, state->manager.isEnabled(),
                &MainViewModel::isBlockingEnabledChanged);
            if (MainViewModel *model = state->model.data())
                model->setStatusReason(reason);
        });
    });
}

void MainViewModel::addNetworkSettings()
{
    DNSSettingsManager &manager = m_state->manager;
    const Resolver &resolver = firstResolver(m_resolvers);
    manager.setDnsSettings(makeDNSSettings(resolver.configuration));
    manager.setOnDemandRules(makeOnDemandRules(resolver.onDemandRules));

    manager.saveToPreferences([state = m_state](std::optional<PlatformError> error) {
        if (error) {
            // The phone platform answers a save of what it already holds with code 9: no failure.
            if (error->domain == QLatin1String(neConfigurationErrorDomain) && error->code == 9)
                return;
            state->console.printLine(error->localizedDescription.toStdString());
            removeSettings(state);
            return;
        }
        state->console.printLine("DNS settings was saved");
        state->mainQueue.async([state] {
            setFlag(state, &State::isSettingsAdded, true, &MainViewModel::isSettingsAddedChanged);
            refresh(state);
        });
    });
}

void MainViewModel::removeDNSSettings()
{
    removeSettings(m_state);
}

void MainViewModel::removeSettings(const std::shared_ptr<State> &state)
{
    if (!state->manager.dnsSettings())
        return;
    state->manager.removeFromPreferences([state](std::optional<PlatformError> error) {
        // Deliberately no hop: the refresh only starts a load, whose completion hops by itself.
        refresh(state);
        state->console.printLine(
            error ? error->localizedDescription.toStdString() : "DNS settings was removed");
    });
}

bool MainViewModel::canSwitchOn() const
{
    return m_state->systemSwitch && m_state->systemSwitch->canSwitchOn();
}

void MainViewModel::setStatusReason(const QString &reason)
{
    if (reason == m_statusReason)
        return;
    m_statusReason = reason;
    emit statusReasonChanged();
}

void MainViewModel::setSwitchingOn(bool on)
{
    if (on == m_isSwitchingOn)
        return;
    m_isSwitchingOn = on;
    emit isSwitchingOnChanged();
}

void MainViewModel::switchOn()
{
    if (!m_state->systemSwitch || m_isSwitchingOn)
        return;
    setSwitchingOn(true);
    m_state->systemSwitch->switchOn([state = m_state](std::optional<QString> error) {
        if (error)
            state->console.printLine(error->toStdString());
        state->mainQueue.async([state, error] {
            MainViewModel *model = state->model.data();
            if (model)
                model->setSwitchingOn(false);
            // A failure stays on screen until the next look at the machine; success is confirmed by one.
            if (error) {
                if (model)
                    model->setStatusReason(*error);
                return;
            }
            refresh(state);
        });
    });
}

void MainViewModel::setScenePhase(ScenePhase phase)
{
    if (phase == m_scenePhase)
        return;
    m_scenePhase = phase;
    emit scenePhaseChanged();
    // Back in the foreground: the user may have switched the configuration in the system settings.
    if (phase == ScenePhase::Active)
        refreshStatus();
}

void MainViewModel::onAppear()
{
    refreshStatus();
    m_incrementLaunchCount();
}

void MainViewModel::runTest()
{
    // Made here rather than in a getter: until the first run the screen shows no results and a score of
    // 0, which is what a fresh tester holds.
    if (!m_tester) {
        m_tester = m_makeTester();
        connect(m_tester.get(), &AdBlockTester::resultsChanged, this, &MainViewModel::resultsChanged);
        connect(m_tester.get(), &AdBlockTester::overallScoreChanged, this, &MainViewModel::scoreChanged);
        connect(m_tester.get(), &AdBlockTester::isRunningChanged, this, &MainViewModel::isTestingChanged);
    }
    m_tester->runTest();
}

// Shown as they are in every language: the first instruction step names the button by this text.
QString MainViewModel::addButtonTitle() const
{
    return isSettingsAdded() ? QStringLiteral("Settings Added") : QStringLiteral("Add Network Settings");
}

QString MainViewModel::addButtonSymbol() const
{
    return isSettingsAdded() ? QStringLiteral("checkmark.circle.fill") : QStringLiteral("network");
}

bool MainViewModel::addButtonEnabled() const
{
    // Stays off for the rest of the run once a save has succeeded.
    return !isSettingsAdded();
}

bool MainViewModel::hasResults() const
{
    return m_tester && !m_tester->results().empty();
}

QString MainViewModel::scoreText() const
{
    return scoreTextFor(m_tester ? m_tester->overallScore() : 0);
}

bool MainViewModel::isScoreGood() const
{
    return isScoreGoodFor(m_tester ? m_tester->overallScore() : 0);
}

bool MainViewModel::isTesting() const
{
    return m_tester && m_tester->isRunning();
}

QVariantList MainViewModel::resultRows() const
{
    return m_tester ? resultRowsFor(m_tester->results()) : QVariantList();
}

QString MainViewModel::scoreTextFor(qint64 overallScore)
{
    // One translatable line with the number in it: German puts a space before the percent sign.
    return tr("Blocking Score: %1%").arg(QString::asprintf("%lld", static_cast<long long>(overallScore)));
}

bool MainViewModel::isScoreGoodFor(qint64 overallScore)
{
    return overallScore >= 80;
}

QVariantList MainViewModel::resultRowsFor(const std::map<QString, bool> &results)
{
    // The map already holds its keys in ascending order, which is the display order.
    QVariantList rows;
    for (const auto &[entry, blocked] : results) {
        QString host = entry;
        host.remove(QStringLiteral("https://"));
        rows.append(QVariantMap {
            { QStringLiteral("host"), host },
            { QStringLiteral("blocked"), blocked },
            { QStringLiteral("label"), blocked ? tr("✅ Blocked") : tr("❌ Not Blocked") },
        });
    }
    return rows;
}

} // namespace brivanta
