#pragma once

#include "tester/ad_block_tester.h"

#include <QObject>
#include <QString>
#include <QVariantList>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace brivanta {

class Console;
class DNSSettingsManager;
class Environment;
class MainQueue;
class SystemDnsSwitch;
struct Resolver;

// The main screen's state and actions. QML binds to it; every rule (which title, which colour, which
// order) is decided here. Lives on the main thread.
class MainViewModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isBlockingEnabled READ isBlockingEnabled NOTIFY isBlockingEnabledChanged)
    Q_PROPERTY(ScenePhase scenePhase READ scenePhase WRITE setScenePhase NOTIFY scenePhaseChanged)
    Q_PROPERTY(QString addButtonTitle READ addButtonTitle NOTIFY isSettingsAddedChanged)
    Q_PROPERTY(QString addButtonSymbol READ addButtonSymbol NOTIFY isSettingsAddedChanged)
    Q_PROPERTY(bool addButtonEnabled READ addButtonEnabled NOTIFY isSettingsAddedChanged)
    Q_PROPERTY(bool hasResults READ hasResults NOTIFY resultsChanged)
    Q_PROPERTY(QString scoreText READ scoreText NOTIFY scoreChanged)
    Q_PROPERTY(bool isScoreGood READ isScoreGood NOTIFY scoreChanged)
    Q_PROPERTY(bool isTesting READ isTesting NOTIFY isTestingChanged)
    // One map per row, in display order: {"host": QString, "blocked": bool, "label": QString}.
    Q_PROPERTY(QVariantList resultRows READ resultRows NOTIFY resultsChanged)
    // Where the app switches blocking on itself (a desktop): why it is not on (empty when it is, and on the
    // phone), and the switch.
    Q_PROPERTY(bool canSwitchOn READ canSwitchOn CONSTANT)
    Q_PROPERTY(QString statusReason READ statusReason NOTIFY statusReasonChanged)
    Q_PROPERTY(bool isSwitchingOn READ isSwitchingOn NOTIFY isSwitchingOnChanged)

public:
    enum class ScenePhase { Active, Inactive, Background };
    Q_ENUM(ScenePhase)

    struct Dependencies
    {
        DNSSettingsManager &manager; // the one shared manager
        MainQueue &mainQueue;
        const Environment &environment;
        Console &console;
        std::function<void()> incrementLaunchCount;
        // Called once, on the first test run.
        std::function<std::unique_ptr<AdBlockTester>()> makeTester;
        // None on the phone, where the user switches the configuration on in the system settings.
        SystemDnsSwitch *systemSwitch = nullptr;
        // The profiles to install the first of; the built-in list when none.
        const std::vector<Resolver> *resolvers = nullptr;
    };

    explicit MainViewModel(Dependencies dependencies, QObject *parent = nullptr);
    ~MainViewModel() override;

    [[nodiscard]] bool isBlockingEnabled() const;
    [[nodiscard]] bool isSettingsAdded() const;
    // None before the first test run.
    [[nodiscard]] AdBlockTester *tester() const { return m_tester.get(); }
    [[nodiscard]] ScenePhase scenePhase() const { return m_scenePhase; }
    void setScenePhase(ScenePhase phase);

    [[nodiscard]] QString addButtonTitle() const;
    [[nodiscard]] QString addButtonSymbol() const;
    [[nodiscard]] bool addButtonEnabled() const;
    [[nodiscard]] bool hasResults() const;
    [[nodiscard]] QString scoreText() const;
    [[nodiscard]] bool isScoreGood() const;
    [[nodiscard]] bool isTesting() const;
    [[nodiscard]] QVariantList resultRows() const;
    [[nodiscard]] bool canSwitchOn() const;
    [[nodiscard]] QString statusReason() const { return m_statusReason; }
    [[nodiscard]] bool isSwitchingOn() const { return m_isSwitchingOn; }
    // Asks for authorisation and switches the saved configuration on for the machine; refreshes after.
    Q_INVOKABLE void switchOn();

    void refreshStatus();
    Q_INVOKABLE void addNetworkSettings();
    void removeDNSSettings();
    // The screen's content appeared: refresh the status, then count the launch.
    Q_INVOKABLE void onAppear();
    Q_INVOKABLE void runTest();

    // The rules behind the score line and the rows, on their own.
    static QString scoreTextFor(qint64 overallScore);
    static bool isScoreGoodFor(qint64 overallScore);
    static QVariantList resultRowsFor(const std::map<QString, bool> &results);

signals:
    void isBlockingEnabledChanged();
    void isSettingsAddedChanged();
    void scenePhaseChanged();
    void resultsChanged();
    void scoreChanged();
    void isTestingChanged();
    void statusReasonChanged();
    void isSwitchingOnChanged();

private:
    struct State;
    // The operations proper, reachable from completions that outlive the model.
    static void refresh(const std::shared_ptr<State> &state);
    static void removeSettings(const std::shared_ptr<State> &state);
    static void setFlag(const std::shared_ptr<State> &state, std::atomic<bool> State::*flag, bool value,
        void (MainViewModel::*changed)());

    // Shared with in-flight completions so that they outlive the model that started them.
    std::shared_ptr<State> m_state;
    std::function<void()> m_incrementLaunchCount;
    std::function<std::unique_ptr<AdBlockTester>()> m_makeTester;
    const std::vector<Resolver> &m_resolvers;
    ScenePhase m_scenePhase = ScenePhase::Active;
    std::unique_ptr<AdBlockTester> m_tester;
    QString m_statusReason;
    bool m_isSwitchingOn = false;
    void setStatusReason(const QString &reason);
    void setSwitchingOn(bool on);
};

} // namespace brivanta
