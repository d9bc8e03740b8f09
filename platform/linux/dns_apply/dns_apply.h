#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace brivanta {

// Where brivanta-dns-apply reads and writes, all under one root ("/" for real, a temporary directory in
// tests).
struct DnsApplyPaths
{
    explicit DnsApplyPaths(QString root = QStringLiteral("/"));
    QString at(const QString &absolute) const;

    QString root;
    QString resolvConf;
    QString resolvedRunDir; // /run/systemd/resolve
    QString resolvedDropIn;
    QString networkManagerRunDir;
    QString networkManagerDropIn;
    QString systemdRunDir; // /run/systemd/system: systemd is PID 1
    QString forwarderConfig;
    QString stateDir; // the forwarder's
    QString libDir; // /var/lib/brivanta
    QString stateFile;
    QString journalFile;
    QString backupDir;
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
    // A command such as systemctl or nmcli; false with a reason when it could not be done.
    virtual bool run(const QStringList &command, QString &error) = 0;
    // Without systemd: start brivanta-dohd on its own, or stop the one that runs.
    virtual bool startForwarder(const DnsApplyPaths &paths, QString &error) = 0;
    virtual void stopForwarder(const DnsApplyPaths &paths) = 0;
    // Until the forwarder answers a query on its address (a few seconds at most).
    virtual bool waitForForwarder() = 0;
    // Without systemd: ask a running systemd-resolved to read its configuration again.
    virtual bool reloadResolvedDirectly(QString &error) = 0;
    virtual bool scheduleResume(int seconds, QString &error) = 0;
    virtual qint64 nowMs() const = 0;
};

// The routing texts.
QByteArray resolvedDropInText();
QByteArray networkManagerDropInText();
QByteArray resolvConfText();
QByteArray forwarderConfigText(const QString &endpoint, const QStringList &bootstrap, const QString &stateDir);
// The nameservers of a resolv.conf, in order.
QStringList nameservers(const QByteArray &resolvConf);

// brivanta-dns-apply's verbs. Every change is first noted in an undo journal (with a copy of what it
// replaces) and synced, so that disable restores exactly what was there, also after a crash half-way;
// enable and disable can both be run again from any state.
class DnsApply
{
public:
    DnsApply(DnsApplyPaths paths, SystemActions &system);

    // Each returns an error sentence, or nothing on success; `note` collects what the user should know.
    std::optional<QString> enable(const QString &endpoint);
    std::optional<QString> disable();
    std::optional<QString> pause(int seconds);
    std::optional<QString> resume();
    QJsonObject state() const;
    QStringList notes() const { return m_notes; }

    ResolverStack detectStack() const;
    QStringList previousServers(ResolverStack stack) const;

private:
    struct Journal;
    std::optional<QString> route(Journal &journal);
    std::optional<QString> unroute(Journal &journal);
    std::optional<QString> reloadResolver(ResolverStack stack);
    std::optional<QString> startForwarder();
    void stopForwarder();
    std::optional<QString> replaceFile(Journal &journal, const QString &path, const QByteArray &contents);
    std::optional<QString> writeState(const QString &phase, const Journal *journal, qint64 pausedUntilMs = 0);

    DnsApplyPaths m_paths;
    SystemActions &m_system;
    QStringList m_notes;
};

} // namespace brivanta
