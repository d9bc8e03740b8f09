#pragma once

// A local DNS-over-HTTPS server for the forwarder's tests: Debian's unbound on loopback, HTTP/2 with a
// self-signed certificate made at first start, plus a plain-DNS port that bootstraps can ask. It serves the
// names of start() from a static "test." zone (anything else there is NXDOMAIN) and its own host.
// stop() then start() keeps the ports, the certificate and the URL: an upstream that goes away and back.

#include "forwarder/dns_message.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QUdpSocket>
#include <QtEndian>
#include <gtest/gtest.h>
#include <memory>

namespace brivanta::test {

constexpr int bigRecords = 60; // big.e2e.test: about 1 KB, more than a plain UDP client's 512 bytes

inline std::vector<quint32> addresses(const QByteArray &answer)
{
    std::vector<quint32> out;
    for (const dns::ResourceRecord &r :
        dns::answerRecords(answer).value_or(std::vector<dns::ResourceRecord>()))
        if (r.type == dns::RRType::A && r.rdata.size() == 4)
            out.push_back(qFromBigEndian<quint32>(r.rdata.constData()));
    return out;
}

// A loopback port free for both TCP and UDP right now.
inline quint16 freePort()
{
    for (int attempt = 0; attempt < 50; ++attempt) {
        QTcpServer tcp;
        QUdpSocket udp;
        if (tcp.listen(QHostAddress::LocalHost) && udp.bind(QHostAddress::LocalHost, tcp.serverPort()))
            return tcp.serverPort();
    }
    return 0;
}

class LocalDohServer
{
public:
    static inline const QString hostName = QStringLiteral("doh.brivanta.test");
    ~LocalDohServer() { stop(); }

    static QString tool(const char *name)
    {
        return QStandardPaths::findExecutable(
            QLatin1String(name), { "/usr/sbin", "/usr/bin", "/sbin", "/bin" });
    }

    bool start()
    {
        stop();
        if (!m_dir && !prepare())
            return false;
        QString text
            = QStringLiteral(R"(server:
  username: ""
  chroot: ""
  directory: "%1"
  pidfile: ""
  use-syslog: no
  logfile: ""
  verbosity: 0
  module-config: "iterator"
  interface: 127.0.0.1@%2
  interface: 127.0.0.1@%3
  https-port: %2
  http-endpoint: "/dns-query"
  tls-service-key: "%1/key.pem"
  tls-service-pem: "%1/cert.pem"
  local-zone: "test." static
  local-data: "%4. 300 IN A 127.0.0.1"
)")
                  .arg(m_dir->path(), QString::number(m_port), QString::number(m_plainPort), hostName);
        const auto add
            = [&](const QString &record) { text += QStringLiteral("  local-data: \"%1\"\n").arg(record); };
        add(QStringLiteral("a.e2e.test. 300 IN A 192.0.2.10"));
        add(QStringLiteral("b.e2e.test. 300 IN A 192.0.2.11"));
        for (int i = 0; i < 20; ++i)
            add(QStringLiteral("h%1.upstream.test. 300 IN A 192.0.2.%1").arg(i));
        for (int i = 1; i <= bigRecords; ++i)
            add(QStringLiteral("big.e2e.test. 300 IN A 198.51.100.%1").arg(i));
        QFile file(m_dir->filePath(QStringLiteral("unbound.conf")));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(text.toUtf8()) < 0)
            return false;
        file.close();

        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(tool("unbound"), { QStringLiteral("-d"), QStringLiteral("-c"), file.fileName() });
        // unbound binds every port before it serves; a probe of the HTTPS port would log a failed handshake.
        const bool up = m_process.waitForStarted(5000)
            && QTest::qWaitFor(
                [this] { return m_process.state() == QProcess::Running && accepts(m_plainPort); }, 10000);
        if (!up)
            stop();
        return up;
    }

    void stop()
    {
        m_process.terminate();
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(5000)) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }

    quint16 port() const { return m_port; } // HTTPS (DoH), 127.0.0.1
    quint16 plainPort() const { return m_plainPort; } // plain DNS, UDP and TCP, 127.0.0.1
    QString url() const { return QStringLiteral("https://%1:%2/dns-query").arg(hostName).arg(m_port); }
    QString pin() const { return QStringLiteral("%1:%2:127.0.0.1").arg(hostName).arg(m_port); } // --resolve
    QString caFile() const { return m_dir->filePath(QStringLiteral("cert.pem")); }

private:
    static bool accepts(quint16 port)
    {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        return socket.waitForConnected(1000);
    }

    bool prepare()
    {
        auto dir = std::make_unique<QTemporaryDir>();
        QProcess openssl;
        openssl.start(QStringLiteral("openssl"),
            QStringLiteral(
                "req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj "
                "/CN=%1 -addext subjectAltName=DNS:%1,IP:127.0.0.1 -keyout %2/key.pem -out %2/cert.pem")
                .arg(hostName, dir->path())
                .split(QLatin1Char(' ')));
        if (!dir->isValid() || !openssl.waitForFinished(20000) || openssl.exitCode() != 0)
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

    std::unique_ptr<QTemporaryDir> m_dir;
    QProcess m_process;
    quint16 m_port = 0;
    quint16 m_plainPort = 0;
};

// Skips where unbound or openssl is missing; otherwise the server is up.
class LocalDohTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (const char *name : { "unbound", "openssl" })
            if (LocalDohServer::tool(name).isEmpty())
                GTEST_SKIP() << name << " is not installed";
        ASSERT_TRUE(server.start()) << "the local DNS-over-HTTPS server did not start";
    }
    LocalDohServer server;
};

} // namespace brivanta::test
