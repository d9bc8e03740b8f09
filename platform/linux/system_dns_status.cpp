#include "platform/linux/system_dns_status.h"

#include "forwarder/canary.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDateTime>
#include <QFile>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QRandomGenerator>
#include <QtEndian>

#include <cerrno>
#include <csignal>
#include <netdb.h>
#include <netinet/in.h>

namespace brivanta {

namespace {

constexpr const char *forwarderAddress = "127.0.0.153";

QString tr(const char *text)
{
    return QCoreApplication::translate("SystemDnsStatus", text);
}

QJsonObject readJson(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

bool processRuns(qint64 pid)
{
    if (pid <= 0)
        return false;
    QFile comm(QStringLiteral("/proc/%1/comm").arg(pid));
    if (comm.open(QIODevice::ReadOnly))
        return comm.readAll().trimmed() == "brivanta-dohd";
    return ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
}

// The global scope's and the links' servers and routing domains, as systemd-resolved reports them.
QVariant resolvedProperty(const char *name)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.resolve1"),
        QStringLiteral("/org/freedesktop/resolve1"), QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << QStringLiteral("org.freedesktop.resolve1.Manager") << QString::fromLatin1(name);
    const QDBusMessage reply = QDBusConnection::systemBus().call(call, QDBus::Block, 3000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant();
}

} // namespace

SystemDnsVerdict decideStatus(const SystemDnsObservation &seen, const QString &savedEndpoint, qint64 nowMs)
{
    using Canary = SystemDnsObservation::Canary;
    const auto no = [](const QString &reason) { return SystemDnsVerdict { false, reason }; };
    if (seen.phase == QLatin1String("paused") && seen.pausedUntilMs > nowMs) {
        const QTime until = QDateTime::fromMSecsSinceEpoch(seen.pausedUntilMs).time();
        return no(tr("Paused until %1.").arg(QLocale().toString(until, QLocale::ShortFormat)));
    }
    if (seen.phase != QLatin1String("applied"))
        return no(tr("Not switched on."));
    if (savedEndpoint.isEmpty() || seen.appliedEndpoint != savedEndpoint)
        return no(tr("Switched on for another DNS address."));
    if (!seen.routingKnown)
        return no(seen.routingProblem);
    if (!seen.otherServers.isEmpty())
        return no(tr("Names can still reach %1 directly.").arg(seen.otherServers.join(QLatin1String(", "))));
    if (seen.canary == Canary::WrongAddress)
        return no(tr("Lookups do not go through Brivanta."));
    if (seen.canary != Canary::Answered) {
        if (!seen.forwarderRunning)
            return no(tr("The forwarder is not running."));
        if (seen.lastFailureMs > seen.lastSuccessMs && !seen.lastError.isEmpty())
            return no(tr("The filtering resolver cannot be reached: %1.").arg(seen.lastError));
        return no(tr("Lookups do not go through Brivanta."));
    }
    if (seen.forwarderEndpoint != savedEndpoint)
        return no(tr("Switched on for another DNS address."));
    return { true, QString() };
}

SystemDnsPaths SystemDnsPaths::fromEnvironment()
{
    SystemDnsPaths paths;
    const QString root = qEnvironmentVariable("BRIVANTA_SYSTEM_ROOT");
    if (!root.isEmpty()) {
        for (QString *path : { &paths.stateFile, &paths.healthFile, &paths.resolvConf })
            *path = root + *path;
    }
    return paths;
}

SystemDnsProbe::SystemDnsProbe(SystemDnsPaths paths, std::chrono::milliseconds canaryTimeout)
    : m_paths(std::move(paths))
    , m_canaryTimeout(canaryTimeout)
{
}

SystemDnsObservation SystemDnsProbe::observe(bool everything) const
{
    SystemDnsObservation seen;
    readState(seen);
    if (seen.phase != QLatin1String("applied") && !everything)
        return seen;
    readRouting(seen);
    if ((!seen.routingKnown || !seen.otherServers.isEmpty()) && !everything) {
        readHealth(seen);
        return seen;
    }
    // The canary first: with socket activation, this very lookup may be what starts the forwarder.
    const QByteArray nonce = QByteArray::number(QRandomGenerator::system()->generate64(), 36);
    const QString answer = lookupIPv4(QString::fromLatin1(nonce + '.' + canarySuffix));
    const QByteArray secret = readHealth(seen);
    if (answer.isEmpty()) {
        seen.canary = SystemDnsObservation::Canary::NoAnswer;
    } else {
        seen.canaryAddress = answer;
        const bool matches = !secret.isEmpty() && QHostAddress(answer) == QHostAddress(canaryAddress(secret, nonce));
        seen.canary = matches ? SystemDnsObservation::Canary::Answered : SystemDnsObservation::Canary::WrongAddress;
    }
    return seen;
}

void SystemDnsProbe::readState(SystemDnsObservation &seen) const
{
    const QJsonObject state = readJson(m_paths.stateFile);
    seen.phase = state.value(QLatin1String("phase")).toString(QStringLiteral("disabled"));
    seen.appliedEndpoint = state.value(QLatin1String("endpoint")).toString();
    seen.stack = state.value(QLatin1String("stack")).toString();
    seen.pausedUntilMs = qint64(state.value(QLatin1String("pausedUntilMs")).toDouble());
}

void SystemDnsProbe::readRouting(SystemDnsObservation &seen) const
{
    QStringList servers;
    QFile file(m_paths.resolvConf);
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            const QList<QByteArray> fields = line.simplified().split(' ');
            if (fields.size() >= 2 && fields[0] == "nameserver")
                servers << QString::fromLatin1(fields[1]);
        }
    }
    // glibc asks 127.0.0.1 when resolv.conf names nobody.
    if (servers.isEmpty())
        servers << QStringLiteral("127.0.0.1");
    const bool resolved = seen.stack == QLatin1String("resolved");
    for (const QString &server : std::as_const(servers)) {
        const bool ours = server == QLatin1String(forwarderAddress) || (resolved && server == QLatin1String("127.0.0.53"));
        if (!ours && !seen.otherServers.contains(server))
            seen.otherServers << server;
    }
    seen.routingKnown = true;
    if (resolved && !readResolvedRouting(seen)) {
        seen.routingKnown = false;
        seen.routingProblem = tr("Cannot read systemd-resolved's settings.");
    }
}

bool SystemDnsProbe::readResolvedRouting(SystemDnsObservation &seen) const
{
    const QVariant dns = resolvedProperty("DNS");
    const QVariant domains = resolvedProperty("Domains");
    if (!dns.canConvert<QDBusArgument>() || !domains.canConvert<QDBusArgument>())
        return false;

    // a(isb): which scopes are routes for every name ("~.").
    bool globalRoutesAll = false;
    QList<int> linksRoutingAll;
    const QDBusArgument domainList = domains.value<QDBusArgument>();
    domainList.beginArray();
    while (!domainList.atEnd()) {
        int ifindex = 0;
        QString domain;
        bool routeOnly = false;
        domainList.beginStructure();
        domainList >> ifindex >> domain >> routeOnly;
        domainList.endStructure();
        if (domain == QLatin1String(".") && routeOnly) {
            if (ifindex == 0)
                globalRoutesAll = true;
            else
                linksRoutingAll << ifindex;
        }
    }
    domainList.endArray();

    // a(iiay): servers per scope. The global one must be the forwarder alone; a link's servers are asked
    // for every name when the link routes every name too, or when the global scope does not.
    const QDBusArgument serverList = dns.value<QDBusArgument>();
    serverList.beginArray();
    while (!serverList.atEnd()) {
        int ifindex = 0;
        int family = 0;
        QByteArray address;
        serverList.beginStructure();
        serverList >> ifindex >> family >> address;
        serverList.endStructure();
        QHostAddress host;
        if (family == AF_INET && address.size() == 4)
            host = QHostAddress(qFromBigEndian<quint32>(address.constData()));
        else if (family == AF_INET6 && address.size() == 16)
            host = QHostAddress(reinterpret_cast<const quint8 *>(address.constData()));
        const QString text = host.toString();
        const bool leaks = ifindex == 0 ? text != QLatin1String(forwarderAddress)
                                        : (!globalRoutesAll || linksRoutingAll.contains(ifindex));
        if (leaks && !seen.otherServers.contains(text))
            seen.otherServers << text;
    }
    serverList.endArray();
    if (!globalRoutesAll && seen.otherServers.isEmpty())
        seen.otherServers << tr("the network's own DNS server");
    return true;
}

QByteArray SystemDnsProbe::readHealth(SystemDnsObservation &seen) const
{
    const QJsonObject health = readJson(m_paths.healthFile);
    seen.forwarderRunning = processRuns(qint64(health.value(QLatin1String("pid")).toDouble()));
    seen.forwarderEndpoint = health.value(QLatin1String("endpoint")).toString();
    seen.lastSuccessMs = qint64(health.value(QLatin1String("lastSuccessMs")).toDouble());
    seen.lastFailureMs = qint64(health.value(QLatin1String("lastFailureMs")).toDouble());
    seen.lastError = health.value(QLatin1String("lastError")).toString();
    return QByteArray::fromHex(health.value(QLatin1String("canarySecret")).toString().toLatin1());
}

QString SystemDnsProbe::lookupIPv4(const QString &name) const
{
    // getaddrinfo_a, so that a resolver that never answers cannot hold the status check.
    auto *hints = new addrinfo {};
    hints->ai_family = AF_INET;
    hints->ai_socktype = SOCK_DGRAM;
    auto *request = new gaicb {};
    const QByteArray host = name.toLatin1();
    auto *hostCopy = qstrdup(host.constData());
    request->ar_name = hostCopy;
    request->ar_request = hints;
    gaicb *list[1] = { request };
    if (getaddrinfo_a(GAI_NOWAIT, list, 1, nullptr) != 0)
        return {};
    const auto ms = m_canaryTimeout.count();
    timespec timeout { time_t(ms / 1000), long(ms % 1000) * 1000000L };
    while (gai_suspend(list, 1, &timeout) == EAI_INTR) {
    }
    if (gai_error(request) == EAI_INPROGRESS && gai_cancel(request) != EAI_CANCELED)
        return {}; // still running: its memory stays with it
    QString address;
    if (gai_error(request) == 0 && request->ar_result) {
        const auto *in = reinterpret_cast<const sockaddr_in *>(request->ar_result->ai_addr);
        address = QHostAddress(ntohl(in->sin_addr.s_addr)).toString();
        freeaddrinfo(request->ar_result);
    }
    delete[] hostCopy;
    delete request;
    delete hints;
    return address;
}

} // namespace brivanta
