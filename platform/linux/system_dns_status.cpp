#include "platform/linux/system_dns_status.h"

#include "forwarder/canary.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QFile>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QNetworkDatagram>
#include <QRandomGenerator>
#include <QUdpSocket>
#include <QtEndian>
#include <cerrno>
#include <csignal>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>

namespace brivanta {

namespace {

constexpr const char *forwarderAddress = "127.0.0.153";

QJsonObject readJson(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

// The global scope's and the links' servers and routing domains, as systemd-resolved reports them.
QVariant resolvedProperty(const char *name)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.resolve1"),
        QStringLiteral("/org/freedesktop/resolve1"), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    call << QStringLiteral("org.freedesktop.resolve1.Manager") << QString::fromLatin1(name);
    const QDBusMessage reply = QDBusConnection::systemBus().call(call, QDBus::Block, 1500);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant();
}

// One DNS label of [a-z0-9], new for every question so that no cache can answer for the forwarder.
QByteArray freshNonce()
{
    return QByteArray::number(QRandomGenerator::system()->generate64(), 36);
}

SystemDnsObservation::Canary judgeCanary(
    const QString &answer, const QByteArray &secret, const QByteArray &nonce)
{
    using Canary = SystemDnsObservation::Canary;
    if (answer.isEmpty())
        return Canary::NoAnswer;
    const bool matches
        = !secret.isEmpty() && QHostAddress(answer) == QHostAddress(canaryAddress(secret, nonce));
    return matches ? Canary::Answered : Canary::WrongAddress;
}

// Skips a possibly compressed name; the offset after it, or -1 when the message ends first.
int skipName(const QByteArray &message, int at)
{
    while (at < message.size()) {
        const auto length = quint8(message[at]);
        if (length == 0)
            return at + 1;
        if ((length & 0xc0) == 0xc0)
            return at + 2 <= message.size() ? at + 2 : -1;
        at += 1 + length;
    }
    return -1;
}

// The first A record of a DNS answer to `id`, or empty.
QString firstIPv4(const QByteArray &message, quint16 id)
{
    if (message.size() < 12 || qFromBigEndian<quint16>(message.constData()) != id || (message[3] & 0x0f) != 0)
        return {};
    const int answers = qFromBigEndian<quint16>(message.constData() + 6);
    int at = skipName(message, 12);
    at = at < 0 ? -1 : at + 4;
    for (int i = 0; i < answers && at >= 0; ++i) {
        at = skipName(message, at);
        if (at < 0 || at + 10 > message.size())
            return {};
        const quint16 type = qFromBigEndian<quint16>(message.constData() + at);
        const quint16 length = qFromBigEndian<quint16>(message.constData() + at + 8);
        at += 10;
        if (at + length > message.size())
            return {};
        if (type == 1 && length == 4)
            return QHostAddress(qFromBigEndian<quint32>(message.constData() + at)).toString();
        at += length;
    }
    return {};
}

} // namespace

SystemDnsVerdict decideStatus(const SystemDnsObservation &seen, const QString &savedEndpoint, qint64 nowMs)
{
    using Canary = SystemDnsObservation::Canary;
    const auto no = [](const QString &reason) { return SystemDnsVerdict { false, reason }; };
    if (seen.phase == QLatin1String("paused") && seen.pausedUntilMs > nowMs) {
        const QTime until = QDateTime::fromMSecsSinceEpoch(seen.pausedUntilMs).time();
        return no(QCoreApplication::translate("SystemDnsStatus", "Paused until %1.")
                      .arg(QLocale().toString(until, QLocale::ShortFormat)));
    }
    if (seen.phase != QLatin1String("applied"))
        return no(QCoreApplication::translate("SystemDnsStatus", "Not switched on."));
    if (savedEndpoint.isEmpty() || seen.appliedEndpoint != savedEndpoint)
        return no(QCoreApplication::translate("SystemDnsStatus", "Switched on for another DNS address."));
    if (!seen.routingKnown)
        return no(seen.routingProblem);
    if (!seen.otherServers.isEmpty())
        return no(QCoreApplication::translate("SystemDnsStatus", "Names can still reach %1 directly.")
                      .arg(seen.otherServers.join(QLatin1String(", "))));
    if (!seen.forwarderRunning)
        return no(QCoreApplication::translate("SystemDnsStatus", "The forwarder is not running."));
    if (seen.forwarderEndpoint != savedEndpoint)
        return no(QCoreApplication::translate("SystemDnsStatus", "Switched on for another DNS address."));
    if (seen.canary == Canary::Answered)
        return { true, QString() };
    // No answer at all is most often the forwarder failing closed; say why when it knows.
    if (seen.canary != Canary::WrongAddress && seen.lastFailureMs > seen.lastSuccessMs
        && !seen.lastError.isEmpty())
        return no(
            QCoreApplication::translate("SystemDnsStatus", "The filtering resolver cannot be reached: %1.")
                .arg(seen.lastError));
    return no(QCoreApplication::translate("SystemDnsStatus", "Lookups do not go through Brivanta."));
}

SystemDnsPaths SystemDnsPaths::fromEnvironment()
{
    SystemDnsPaths paths;
#ifdef BRIVANTA_TEST_HOOKS
    const QString root = qEnvironmentVariable("BRIVANTA_SYSTEM_ROOT");
    if (!root.isEmpty()) {
        for (QString *path : { &paths.stateFile, &paths.healthFile, &paths.resolvConf })
            *path = root + *path;
    }
#endif
    return paths;
}

SystemDnsProbe::SystemDnsProbe(SystemDnsPaths paths, std::chrono::milliseconds canaryTimeout)
    : m_paths(std::move(paths))
    , m_canaryTimeout(canaryTimeout)
{ }

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
    QByteArray nonce = freshNonce();
    const QString answer = lookupIPv4(QString::fromLatin1(nonce + '.' + canarySuffix));
    const QByteArray secret = readHealth(seen);
    seen.canaryAddress = answer;
    seen.canary = judgeCanary(answer, secret, nonce);
    if (everything) {
        nonce = freshNonce();
        seen.direct = judgeCanary(
            askForwarderIPv4(seen.forwarderListen, QString::fromLatin1(nonce + '.' + canarySuffix)), secret,
            nonce);
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
        const bool ours = server == QLatin1String(forwarderAddress)
            || (resolved && server == QLatin1String("127.0.0.53"));
        if (!ours && !seen.otherServers.contains(server))
            seen.otherServers << server;
    }
    seen.routingKnown = true;
    if (resolved && !readResolvedRouting(seen)) {
        seen.routingKnown = false;
        seen.routingProblem
            = QCoreApplication::translate("SystemDnsStatus", "Cannot read systemd-resolved's settings.");
    }
}

bool SystemDnsProbe::readResolvedRouting(SystemDnsObservation &seen) const
{
    // DNSEx also lists servers with a port or a TLS server name, which DNS leaves out; resolved before 246
    // has only DNS.
    QVariant dns = resolvedProperty("DNSEx");
    const bool extended = dns.canConvert<QDBusArgument>();
    if (!extended)
        dns = resolvedProperty("DNS");
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

    // a(iiayqs) or a(iiay): servers per scope. The global one must be the forwarder alone; a link's
    // servers are asked for every name when the link routes every name too, or when the global scope does
    // not.
    bool globalHasForwarder = false;
    const QDBusArgument serverList = dns.value<QDBusArgument>();
    serverList.beginArray();
    while (!serverList.atEnd()) {
        int ifindex = 0;
        int family = 0;
        QByteArray address;
        ushort port = 0;
        QString serverName;
        serverList.beginStructure();
        serverList >> ifindex >> family >> address;
        if (extended)
            serverList >> port >> serverName;
        serverList.endStructure();
        QHostAddress host;
        if (family == AF_INET && address.size() == 4)
            host = QHostAddress(qFromBigEndian<quint32>(address.constData()));
        else if (family == AF_INET6 && address.size() == 16)
            host = QHostAddress(reinterpret_cast<const quint8 *>(address.constData()));
        QString text = host.toString();
        if (port != 0 && port != 53)
            text += QLatin1Char(':') + QString::number(port);
        const bool forwarder = text == QLatin1String(forwarderAddress) && serverName.isEmpty();
        // resolved reports a global server on a loopback address under the loopback link's index.
        if (forwarder && (ifindex == 0 || ifindex == int(if_nametoindex("lo")))) {
            ifindex = 0;
            globalHasForwarder = true;
        }
        const bool leaks
            = ifindex == 0 ? !forwarder : (!globalRoutesAll || linksRoutingAll.contains(ifindex));
        if (leaks && !seen.otherServers.contains(text))
            seen.otherServers << text;
    }
    serverList.endArray();
    if ((!globalRoutesAll || !globalHasForwarder) && seen.otherServers.isEmpty())
        seen.otherServers << QCoreApplication::translate("SystemDnsStatus", "the network's own DNS server");
    return true;
}

bool SystemDnsProbe::forwarderAlive(qint64 pid) const
{
    if (pid <= 0)
        return false;
    // The name too, as the pid may have been reused since the file was written.
    QFile comm(QStringLiteral("/proc/%1/comm").arg(pid));
    if (comm.open(QIODevice::ReadOnly))
        return comm.readAll().trimmed() == "brivanta-dohd";
    return ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
}

QByteArray SystemDnsProbe::readHealth(SystemDnsObservation &seen) const
{
    const QJsonObject health = readJson(m_paths.healthFile);
    seen.forwarderRunning = forwarderAlive(qint64(health.value(QLatin1String("pid")).toDouble()));
    seen.forwarderEndpoint = health.value(QLatin1String("endpoint")).toString();
    seen.lastSuccessMs = qint64(health.value(QLatin1String("lastSuccessMs")).toDouble());
    seen.lastFailureMs = qint64(health.value(QLatin1String("lastFailureMs")).toDouble());
    seen.lastError = health.value(QLatin1String("lastError")).toString();
    seen.forwarderListen = health.value(QLatin1String("listen")).toString(QStringLiteral("127.0.0.153:53"));
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
    if (getaddrinfo_a(GAI_NOWAIT, list, 1, nullptr) != 0) {
        delete[] hostCopy;
        delete request;
        delete hints;
        return {};
    }
    const auto ms = m_canaryTimeout.count();
    timespec timeout { time_t(ms / 1000), long(ms % 1000) * 1000000L };
    while (gai_suspend(list, 1, &timeout) == EAI_INTR) { }
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

QString SystemDnsProbe::askForwarderIPv4(const QString &listen, const QString &name) const
{
    const int colon = listen.lastIndexOf(QLatin1Char(':'));
    QString host = listen.left(colon);
    host.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    const QHostAddress address(host);
    const quint16 port = quint16(listen.mid(colon + 1).toUInt());
    if (colon < 0 || address.isNull() || port == 0)
        return {};

    const auto id = quint16(QRandomGenerator::system()->generate());
    QByteArray query(12, '\0');
    qToBigEndian(id, query.data());
    query[2] = 0x01; // recursion desired
    query[5] = 0x01; // one question
    for (const QString &label : name.split(QLatin1Char('.')))
        query += char(label.size()) + label.toLatin1();
    query += QByteArray("\0\0\x01\0\x01", 5); // root, type A, class IN

    // Connected, so that a closed port is an error at once rather than a wait.
    QUdpSocket socket;
    socket.connectToHost(address, port);
    if (!socket.waitForConnected(1000) || socket.write(query) != query.size())
        return {};
    QDeadlineTimer deadline(m_canaryTimeout);
    while (socket.waitForReadyRead(int(deadline.remainingTime()))) {
        while (socket.hasPendingDatagrams()) {
            const QString answer = firstIPv4(socket.receiveDatagram().data(), id);
            if (!answer.isEmpty())
                return answer;
        }
    }
    return {};
}

} // namespace brivanta
