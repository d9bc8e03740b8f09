#pragma once

#include <QString>
#include <QStringList>
#include <chrono>

namespace brivanta {

// What the machine says about Brivanta's system-wide DNS, gathered by SystemDnsProbe.
struct SystemDnsObservation
{
    // brivanta-dns-apply's state
    QString phase = QStringLiteral("disabled"); // "applied", "paused", "disabled"
    QString appliedEndpoint;
    QString stack; // "resolved", "networkmanager", "resolvconf"
    qint64 pausedUntilMs = 0;
    // The resolver's routing: servers that lookups may reach other than the forwarder.
    bool routingKnown = false;
    QStringList otherServers;
    QString routingProblem; // why the routing could not be read
    // brivanta-dohd's health file
    bool forwarderRunning = false;
    QString forwarderEndpoint;
    qint64 lastSuccessMs = 0;
    qint64 lastFailureMs = 0;
    QString lastError;
    QString forwarderListen; // "ip:port"
    // A fresh canary name through the system resolver (getaddrinfo).
    enum class Canary { NotTried, Answered, WrongAddress, NoAnswer } canary = Canary::NotTried;
    QString canaryAddress; // what came back
    // The same question straight to the forwarder's address, for a diagnosis only.
    Canary direct = Canary::NotTried;
};

struct SystemDnsVerdict
{
    bool enabled = false;
    QString reason; // one short sentence for the user; empty when enabled
};

// Enabled only when every piece holds right now, checked in this order: applied with this user's endpoint,
// every route leads to the forwarder, the forwarder runs with that endpoint, and a fresh canary name came
// back through the system resolver with the forwarder's address. The reason names the first piece that
// does not hold.
SystemDnsVerdict decideStatus(const SystemDnsObservation &seen, const QString &savedEndpoint, qint64 nowMs);

// Where the probe looks; tests point it at a temporary directory.
struct SystemDnsPaths
{
    QString stateFile = QStringLiteral("/var/lib/brivanta/state.json");
    QString healthFile = QStringLiteral("/run/brivanta/health.json");
    QString resolvConf = QStringLiteral("/etc/resolv.conf");

    // The real paths; builds with tests take them under $BRIVANTA_SYSTEM_ROOT when it is set.
    static SystemDnsPaths fromEnvironment();
};

// Reads the files, asks systemd-resolved over D-Bus, and resolves a canary name through the system
// resolver. Blocking (the canary lookup gives up after `canaryTimeout`): run it off the main thread.
// Tests replace the parts that reach beyond the files.
class SystemDnsProbe
{
public:
    explicit SystemDnsProbe(SystemDnsPaths paths = SystemDnsPaths::fromEnvironment(),
        std::chrono::milliseconds canaryTimeout = std::chrono::seconds(3));
    virtual ~SystemDnsProbe() = default;

    // Stops early once something rules "Enabled" out, unless `everything` is asked (for a diagnosis).
    SystemDnsObservation observe(bool everything = false) const;

protected:
    // Through the system resolver; empty when it does not resolve in time.
    virtual QString lookupIPv4(const QString &name) const;
    // Straight to the forwarder's listening address; empty when it does not answer in time.
    virtual QString askForwarderIPv4(const QString &listen, const QString &name) const;
    // Adds the servers that systemd-resolved may ask besides the forwarder; false when it cannot be read.
    virtual bool readResolvedRouting(SystemDnsObservation &seen) const;
    // Whether this pid is a running brivanta-dohd.
    virtual bool forwarderAlive(qint64 pid) const;

private:
    void readState(SystemDnsObservation &seen) const;
    void readRouting(SystemDnsObservation &seen) const;
    QByteArray readHealth(SystemDnsObservation &seen) const;

    SystemDnsPaths m_paths;
    std::chrono::milliseconds m_canaryTimeout;
};

} // namespace brivanta
