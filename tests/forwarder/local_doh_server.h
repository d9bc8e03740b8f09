#pragma once

// A local DNS-over-HTTPS server for tests: Debian's unbound on loopback, HTTP/2 with a self-signed
// certificate made at start, plus a plain-DNS port that bootstraps can ask. Header-only so that every
// test executable of the forwarder can take it without a library.
//
// Serves the names given to start() from a static "test." zone (anything else there is NXDOMAIN) and
// always the endpoint's own host, host(), as 127.0.0.1. stop() then start() again keeps the ports, the
// certificate and the URL: for tests of an upstream that goes away and comes back.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <arpa/inet.h>
#include <memory>
#include <netinet/in.h>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

namespace brivanta::test {

class LocalDohServer
{
public:
    static constexpr const char *hostName = "doh.brivanta.test";

    LocalDohServer() = default;
    LocalDohServer(const LocalDohServer &) = delete;
    LocalDohServer &operator=(const LocalDohServer &) = delete;
    ~LocalDohServer() { stop(); }

    // Why the server cannot run here, for GTEST_SKIP(); nothing when it can.
    static std::optional<QString> unavailable()
    {
        if (unbound().isEmpty())
            return QStringLiteral("unbound is not installed (apt-get install unbound)");
        if (QStandardPaths::findExecutable(QStringLiteral("openssl")).isEmpty())
            return QStringLiteral("openssl is not installed (apt-get install openssl)");
        return std::nullopt;
    }

    // localData: unbound local-data lines such as "a.example.test. 300 IN A 192.0.2.1".
    // True once the server is up.
    bool start(const QStringList &localData = {})
    {
        stop();
        if (!m_dir && !prepare())
            return false;
        QString text = QStringLiteral(R"(server:
  username: ""
  chroot: ""
  directory: "%1"
  pidfile: ""
  use-syslog: no
  logfile: ""
  verbosity: 0
  num-threads: 1
  module-config: "iterator"
  do-not-query-localhost: yes
  access-control: 127.0.0.0/8 allow
  interface: 127.0.0.1@%2
  interface: 127.0.0.1@%3
  https-port: %2
  http-endpoint: "/dns-query"
  http-max-streams: 100
  tls-service-key: "%1/key.pem"
  tls-service-pem: "%1/cert.pem"
  local-zone: "test." static
  local-data: "%4. 300 IN A 127.0.0.1"
)")
                           .arg(m_dir->path())
                           .arg(m_port)
                           .arg(m_plainPort)
                           .arg(QLatin1String(hostName));
        for (const QString &record : localData)
            text += QStringLiteral("  local-data: \"%1\"\n").arg(record);
        const QString config = m_dir->filePath(QStringLiteral("unbound.conf"));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return false;
        file.write(text.toUtf8());
        file.close();

        m_process = std::make_unique<QProcess>();
        m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process->start(unbound(), { QStringLiteral("-d"), QStringLiteral("-c"), config });
        if (!m_process->waitForStarted(5000))
            return false;
        const bool up = QTest::qWaitFor(
            [this] {
                // unbound binds every port before it serves; a probe of the HTTPS port would log a failed
                // handshake.
                return m_process->state() == QProcess::Running && accepts(m_plainPort);
            },
            10000);
        if (!up)
            stop();
        return up;
    }

    void stop()
    {
        if (!m_process)
            return;
        m_process->terminate();
        if (!m_process->waitForFinished(5000)) {
            m_process->kill();
            m_process->waitForFinished(5000);
        }
        m_process.reset();
    }

    [[nodiscard]] quint16 port() const { return m_port; } // HTTPS (DoH), 127.0.0.1
    [[nodiscard]] quint16 plainPort() const { return m_plainPort; } // plain DNS, UDP and TCP, 127.0.0.1
    [[nodiscard]] QString url() const
    {
        return QStringLiteral("https://%1:%2/dns-query").arg(QLatin1String(hostName)).arg(m_port);
    }
    [[nodiscard]] QString pin() const // for CURLOPT_RESOLVE / --resolve
    {
        return QStringLiteral("%1:%2:127.0.0.1").arg(QLatin1String(hostName)).arg(m_port);
    }
    [[nodiscard]] QString caFile() const // the server's self-signed certificate, to trust
    {
        return m_dir ? m_dir->filePath(QStringLiteral("cert.pem")) : QString();
    }

    // A loopback port free for both TCP and UDP right now.
    static quint16 freePort()
    {
        for (int attempt = 0; attempt < 50; ++attempt) {
            const quint16 port = bindLoopback(SOCK_STREAM, 0);
            if (port && bindLoopback(SOCK_DGRAM, port) == port)
                return port;
        }
        return 0;
    }

    static sockaddr_in loopback(quint16 port)
    {
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

private:
    static QString unbound()
    {
        const QString inPath = QStandardPaths::findExecutable(QStringLiteral("unbound"));
        return inPath.isEmpty()
            ? QStandardPaths::findExecutable(QStringLiteral("unbound"), { QStringLiteral("/usr/sbin") })
            : inPath;
    }

    bool prepare()
    {
        auto dir = std::make_unique<QTemporaryDir>();
        if (!dir->isValid())
            return false;
        QProcess openssl;
        openssl.start(QStringLiteral("openssl"),
            { QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("ec"),
                QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:prime256v1"),
                QStringLiteral("-nodes"), QStringLiteral("-days"), QStringLiteral("2"),
                QStringLiteral("-subj"), QStringLiteral("/CN=%1").arg(QLatin1String(hostName)),
                QStringLiteral("-addext"),
                QStringLiteral("subjectAltName=DNS:%1,IP:127.0.0.1").arg(QLatin1String(hostName)),
                QStringLiteral("-keyout"), dir->filePath(QStringLiteral("key.pem")), QStringLiteral("-out"),
                dir->filePath(QStringLiteral("cert.pem")) });
        if (!openssl.waitForFinished(20000) || openssl.exitCode() != 0)
            return false;
        m_port = freePort();
        do
            m_plainPort = freePort();
        while (m_plainPort == m_port);
        if (!m_port || !m_plainPort)
            return false;
        m_dir = std::move(dir);
        return true;
    }

    // Binds and closes at once: the port the kernel gave, or 0.
    static quint16 bindLoopback(int type, quint16 port)
    {
        const int fd = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
        sockaddr_in address = loopback(port);
        socklen_t length = sizeof address;
        const bool bound = fd >= 0 && ::bind(fd, reinterpret_cast<sockaddr *>(&address), length) == 0
            && ::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &length) == 0;
        if (fd >= 0)
            ::close(fd);
        return bound ? ntohs(address.sin_port) : 0;
    }

    static bool accepts(quint16 port)
    {
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const sockaddr_in address = loopback(port);
        const bool ok
            = fd >= 0 && ::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
        if (fd >= 0)
            ::close(fd);
        return ok;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QProcess> m_process;
    quint16 m_port = 0;
    quint16 m_plainPort = 0;
};

} // namespace brivanta::test
