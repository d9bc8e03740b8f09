// brivanta-dohd: plain DNS in on one address (UDP and TCP), DNS-over-HTTPS out to one endpoint.
// Run by systemd with its sockets (brivanta-dohd.socket), or by hand: --listen and --upstream.

#include "forwarder/dns_server.h"
#include "forwarder/doh_upstream.h"
#include "forwarder/forwarder.h"
#include "forwarder/forwarder_config.h"
#include "forwarder/health_state.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/signalfd.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

using namespace brivanta;

namespace {

constexpr int exitConfig = 2;
constexpr int exitRuntime = 1;

int fail(int code, const QString &line)
{
    std::fprintf(stderr, "brivanta-dohd: %s\n", qPrintable(line));
    return code;
}

const char usage[]
    = "Usage: brivanta-dohd [--config FILE] [--listen IP:PORT] [--upstream URL] [--bootstrap LIST]\n"
      "                     [--ca FILE] [--resolve HOST:PORT:ADDRESS] [--state-dir DIR] [--user NAME]\n"
      "                     [--check-config]\n"
      "Serves plain DNS on the listen address (UDP and TCP) and forwards every query over\n"
      "DNS-over-HTTPS to the endpoint; never to any other resolver. See brivanta's README.\n";

// Always with the port, unlike toString(HostPort): the health file and messages show where we listen.
QString listenText(const HostPort &where)
{
    const QString address = where.address.protocol() == QAbstractSocket::IPv6Protocol
        ? QLatin1Char('[') + where.address.toString() + QLatin1Char(']')
        : where.address.toString();
    return address + QLatin1Char(':') + QString::number(where.port);
}

int bindSocket(const HostPort &where, int type, QString &error)
{
    socklen_t length = 0;
    const sockaddr_storage address = toSockaddr(where, length);
    const int fd = ::socket(address.ss_family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int one = 1;
    if (fd < 0 || ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one) != 0
        || ::bind(fd, reinterpret_cast<const sockaddr *>(&address), length) != 0
        || (type == SOCK_STREAM && ::listen(fd, 128) != 0)) {
        error = QStringLiteral("cannot listen on %1 (%2): %3")
                    .arg(listenText(where), QLatin1String(type == SOCK_STREAM ? "TCP" : "UDP"),
                        QString::fromLocal8Bit(std::strerror(errno)));
        if (fd >= 0)
            ::close(fd);
        return -1;
    }
    return fd;
}

std::optional<HostPort> boundAddress(int fd)
{
    sockaddr_storage storage {};
    socklen_t length = sizeof storage;
    if (fd < 0 || ::getsockname(fd, reinterpret_cast<sockaddr *>(&storage), &length) != 0)
        return std::nullopt;
    QHostAddress address(reinterpret_cast<const sockaddr *>(&storage));
    const quint16 port
        = ntohs(storage.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6 *>(&storage)->sin6_port
                                              : reinterpret_cast<sockaddr_in *>(&storage)->sin_port);
    return HostPort { address, port };
}

// Sockets from systemd (LISTEN_FDS), if it passed any.
bool activatedSockets(int &udpFd, int &tcpFd)
{
    const int count = sd_listen_fds(1);
    for (int fd = SD_LISTEN_FDS_START; fd < SD_LISTEN_FDS_START + std::max(count, 0); ++fd) {
        if (sd_is_socket_inet(fd, AF_UNSPEC, SOCK_DGRAM, -1, 0) > 0)
            udpFd = fd;
        else if (sd_is_socket_inet(fd, AF_UNSPEC, SOCK_STREAM, 1, 0) > 0)
            tcpFd = fd;
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    }
    return count > 0;
}

std::optional<QString> dropPrivileges(const QString &user, const QString &stateDir)
{
    const passwd *entry = ::getpwnam(user.toLocal8Bit().constData());
    if (!entry)
        return QStringLiteral("no user named %1").arg(user);
    if (::chown(QFile::encodeName(stateDir).constData(), entry->pw_uid, entry->pw_gid) != 0)
        return QStringLiteral("cannot hand %1 to %2: %3")
            .arg(stateDir, user, QString::fromLocal8Bit(std::strerror(errno)));
    if (::setgroups(0, nullptr) != 0 || ::setgid(entry->pw_gid) != 0 || ::setuid(entry->pw_uid) != 0)
        return QStringLiteral("cannot become %1: %2").arg(user, QString::fromLocal8Bit(std::strerror(errno)));
    if (::setuid(0) == 0)
        return QStringLiteral("could regain root after becoming %1").arg(user);
    return std::nullopt;
}

} // namespace

int main(int argc, char **argv)
{
    // Signals arrive through a signalfd on the event loop; block them before any thread exists.
    sigset_t blocked;
    sigemptyset(&blocked);
    for (int s : { SIGTERM, SIGINT, SIGHUP })
        sigaddset(&blocked, s);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    // Qt's own poll() loop: a handful of sockets, and cheaper than GLib's for the notifier toggling
    // that every HTTP/2 write brings.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("brivanta-dohd"));
    const QStringList args = QCoreApplication::arguments().mid(1);

    ForwarderConfig config;
    QString configPath;
    QString user;
    bool checkOnly = false;
    using OptionKey = std::pair<const char *, const char *>; // option, configuration key
    static const OptionKey optionKeys[] = {
        { "--listen", "listen" },
        { "--upstream", "endpoint" },
        { "--bootstrap", "bootstrap" },
        { "--ca", "ca-file" },
        { "--resolve", "resolve" },
        { "--state-dir", "state-dir" },
    };
    std::vector<std::pair<const OptionKey *, QString>> overrides;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            std::fputs(usage, stdout);
            return 0;
        }
        if (arg == QLatin1String("--check-config")) {
            checkOnly = true;
            continue;
        }
        if (i + 1 >= args.size())
            return fail(exitConfig, QStringLiteral("%1 needs a value (see --help)").arg(arg));
        const QString value = args[++i];
        if (arg == QLatin1String("--config")) {
            configPath = value;
        } else if (arg == QLatin1String("--user")) {
            user = value;
        } else {
            const auto *key = std::find_if(std::begin(optionKeys), std::end(optionKeys),
                [&](const auto &option) { return arg == QLatin1String(option.first); });
            if (key == std::end(optionKeys))
                return fail(exitConfig, QStringLiteral("unknown option %1 (see --help)").arg(arg));
            overrides.emplace_back(key, value);
        }
    }
    if (!configPath.isEmpty()) {
        if (auto error = config.readFile(configPath))
            return fail(exitConfig, *error);
        const QString local = QFileInfo(configPath).dir().filePath(QStringLiteral("dohd.local.conf"));
        if (QFileInfo::exists(local)) {
            if (auto error = config.readFile(local))
                return fail(exitConfig, *error);
        }
    }
    for (const auto &[option, value] : overrides) {
        if (auto error = config.set(QLatin1String(option->second), value))
            return fail(exitConfig, QStringLiteral("%1: %2").arg(QLatin1String(option->first), *error));
    }
    if (auto error = config.check())
        return fail(exitConfig, *error);
    if (checkOnly)
        return 0;

    int udpFd = -1;
    int tcpFd = -1;
    if (!activatedSockets(udpFd, tcpFd)) {
        QString error;
        udpFd = bindSocket(config.listen, SOCK_DGRAM, error);
        if (udpFd >= 0)
            tcpFd = bindSocket(config.listen, SOCK_STREAM, error);
        if (tcpFd < 0)
            return fail(exitRuntime, error);
    } else if (auto bound = boundAddress(udpFd >= 0 ? udpFd : tcpFd)) {
        config.listen = *bound; // what systemd gave is what the health file reports
    }
    if (!QDir().mkpath(config.stateDir))
        return fail(exitRuntime, QStringLiteral("cannot create %1").arg(config.stateDir));
    if (::geteuid() == 0) {
        if (user.isEmpty())
            std::fputs(
                "brivanta-dohd: warning: running as root; give --user NAME to drop privileges\n", stderr);
        else if (auto error = dropPrivileges(user, config.stateDir))
            return fail(exitRuntime, *error);
    }

    UpstreamSettings settings;
    settings.endpoint = config.endpoint;
    settings.bootstrap = config.bootstrap;
    settings.bootstrap.insert(
        settings.bootstrap.end(), config.fallbackBootstrap.begin(), config.fallbackBootstrap.end());
    settings.pins = config.pins;
    settings.caFile = config.caFile;
    const QString listen = listenText(config.listen);
    HealthState health(config.stateDir, config.endpointText, listen);
    DohUpstream upstream(settings);
    QObject::connect(&upstream, &DohUpstream::succeeded, &health, &HealthState::upstreamSucceeded);
    QObject::connect(&upstream, &DohUpstream::failed, &health, &HealthState::upstreamFailed);
    Forwarder forwarder(
        upstream, health, config.endpoint.host().toLatin1(), config.cacheEntries, config.cacheBytes);
    DnsServer server(forwarder, udpFd, tcpFd);
    if (!health.writeNow())
        return fail(exitRuntime, QStringLiteral("cannot write %1").arg(health.path()));

    const int signalFd = ::signalfd(-1, &blocked, SFD_NONBLOCK | SFD_CLOEXEC);
    QSocketNotifier signalNotifier(signalFd, QSocketNotifier::Read);
    QObject::connect(&signalNotifier, &QSocketNotifier::activated, [&] {
        signalfd_siginfo info;
        while (::read(signalFd, &info, sizeof info) == sizeof info) {
            if (info.ssi_signo == SIGHUP) {
                // Told that the network changed: nothing learnt on the old one is trusted.
                forwarder.clearCache();
                upstream.reset();
            } else {
                sd_notify(0, "STOPPING=1");
                QCoreApplication::quit();
            }
        }
    });

    // systemctl status shows whether the endpoint answers; only changes are sent.
    const QByteArray forwarding
        = QStringLiteral("Forwarding %1 to %2").arg(listen, config.endpointText).toUtf8();
    QByteArray status = forwarding;
    const auto setStatus = [&status](const QByteArray &text) {
        if (text != status) {
            status = text;
            sd_notifyf(0, "STATUS=%s", status.constData());
        }
    };
    QObject::connect(&upstream, &DohUpstream::succeeded, [&] { setStatus(forwarding); });
    QObject::connect(&upstream, &DohUpstream::failed,
        [&](const QString &error) { setStatus(forwarding + " (failing: " + error.toUtf8() + ')'); });
    sd_notifyf(0, "READY=1\nSTATUS=%s", status.constData());
    return app.exec();
}
