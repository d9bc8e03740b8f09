#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <vector>

namespace brivanta {

// Where brivanta-dns-apply reads and writes, all under one root ("/" for real, a temporary directory in
// tests).
struct DnsApplyPaths
{
    explicit DnsApplyPaths(QString root = QStringLiteral("/"));
    [[nodiscard]] QString at(const QString &absolute) const;

    QString root;
    QString resolvConf;
    QString resolvedRunDir; // /run/systemd/resolve
    QString resolvedDropIn;
    QString networkManagerRunDir;
    QString networkManagerDropIn;
    QString systemdRunDir; // /run/systemd/system: systemd is PID 1
    QString forwarderConfig;
    QString forwarderStateDir; // /run/brivanta, health.json
    QString libDir; // /var/lib/brivanta
    QString stateFile;
    QString journalFile;
    QString backupDir;
    QString helperProgram; // this program, for the scheduled resume; not under root
};

enum class ResolverStack { Resolved, NetworkManager, ResolvConf };
QString toString(ResolverStack stack);
std::optional<ResolverStack> stackFromString(const QString &text);

constexpr const char *forwarderAddress = "127.0.0.153";

// Everything the helper asks of the running system, so that tests can record it instead.
class SystemActions
{
public:
    virtual ~SystemActions() = default;
    // A command such as systemctl or nmcli; false with a reason when it failed or could not be run.
    virtual bool run(const QStringList &command, QString &error) = 0;
    // Without systemd: start brivanta-dohd detached, or stop the one that runs.
    virtual bool startForwarder(const DnsApplyPaths &paths, QString &error) = 0;
    virtual void stopForwarder(const DnsApplyPaths &paths) = 0;
    // Until the forwarder answers a query on its address (a few seconds at most).
    virtual bool waitForForwarder() = 0;
    // Without systemd: ask a running systemd-resolved to read its configuration again.
    virtual bool reloadResolvedDirectly(QString &error) = 0;
    // Without systemd: a detached process that runs "resume" after this many seconds.
    virtual bool scheduleResumeDetached(int seconds, QString &error) = 0;
    virtual qint64 nowMs() const = 0;
};

// The routing texts, written out in full.
QByteArray resolvedDropInText();
QByteArray networkManagerDropInText();
QByteArray resolvConfText();
QByteArray forwarderConfigText(const QString &endpoint, const QStringList &bootstrap);
// The nameservers of a resolv.conf, in order.
QStringList nameservers(const QByteArray &resolvConf);

// The helper's verbs. Every change is first noted in an undo journal (with a copy of what it replaces),
// synced before the change is made, so that disable restores exactly what was there, also after a crash
// half-way; enable and disable both finish correctly from any journal state.
class DnsApply
{
public:
    // Called after each step that changed something, with a short line saying what; the executable
    // prints it, tests stop there to stand for a crash.
    using StepLog = std::function<void(const QString &line)>;

    DnsApply(DnsApplyPaths paths, SystemActions &system, StepLog log = {});

    // Each returns an error sentence, or nothing on success.
    std::optional<QString> enable(const QString &endpoint);
    std::optional<QString> disable();
    std::optional<QString> pause(int seconds);
    std::optional<QString> resume();
    [[nodiscard]] QJsonObject state() const;

    [[nodiscard]] ResolverStack detectStack() const;
    // The servers the machine used before us, for the forwarder's bootstrap.
    [[nodiscard]] QStringList previousServers(ResolverStack stack) const;

    // A file as it was before the first change, and where its copy is.
    struct Original
    {
        QString path;
        bool existed = false;
        QString symlinkTarget;
        QString backup;
        int mode = 0644;
    };
    struct Journal
    {
        bool exists = false;
        QString endpoint;
        ResolverStack stack = ResolverStack::ResolvConf;
        QStringList previousServers;
        qint64 appliedAtMs = 0;
        std::vector<Original> originals;
        QStringList createdDirs;
    };

private:
    std::optional<QString> loadJournal(Journal &journal) const;
    std::optional<QString> saveJournal(const Journal &journal);
    std::optional<QString> remember(Journal &journal, const QString &path);
    std::optional<QString> restore(Journal &journal, const QString &path);
    std::optional<QString> replaceFile(Journal &journal, const QString &path, const QByteArray &contents);
    std::optional<QString> route(Journal &journal);
    std::optional<QString> unroute(Journal &journal);
    std::optional<QString> reloadResolver(ResolverStack stack);
    std::optional<QString> startForwarder();
    void stopForwarder();
    std::optional<QString> scheduleResume(int seconds);
    std::optional<QString> writeState(const QString &phase, const Journal *journal, qint64 pausedUntilMs = 0);
    QString routedFile(ResolverStack stack) const;
    bool systemd() const;
    void step(const QString &line);

    DnsApplyPaths m_paths;
    SystemActions &m_system;
    StepLog m_log;
};

} // namespace brivanta
