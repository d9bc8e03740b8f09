#pragma once

// A local DNS-over-HTTPS server for the forwarder's tests: unbound on loopback (HTTP/2, self-signed
// certificate) plus a plain-DNS port for bootstraps, serving its own host and a static "test." zone.

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

// Runs Debian's unbound for each test; skips where unbound or openssl is missing.
class LocalDohTest : public ::testing::Test
{
protected:
    static inline const QString hostName = QStringLiteral("doh.brivanta.test");

    static QString tool(const char *name)
    {
        return QStandardPaths::findExecutable(QLatin1String(name), { "/usr/sbin", "/usr/bin" });
    }

    void SetUp() override
    {
        for (const char *name : { "unbound", "openssl" })
            if (tool(name).isEmpty())
                GTEST_SKIP() << name << " is not installed";
        QProcess openssl;
        openssl.start(tool("openssl"),
            QStringLiteral(
                "req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj "
                "/CN=%1 -addext subjectAltName=DNS:%1,IP:127.0.0.1 -keyout %2/key.pem -out %2/cert.pem")
                .arg(hostName, dir.path())
                .split(QLatin1Char(' ')));
        ASSERT_TRUE(dir.isValid() && openssl.waitForFinished(20000) && openssl.exitCode() == 0);
        dohPort = freePort();
        do
            plainPort = freePort();
        while (plainPort == dohPort);
        ASSERT_TRUE(dohPort && plainPort && startServer()) << "the local DNS-over-HTTPS server did not start";
    }

    void TearDown() override { stopServer(); }

    // Again after stopServer(): the same ports, certificate and URL, as an upstream that comes back.
    bool startServer()
    {
        QString text = QStringLiteral(R"(server:
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
  local-data: "a.e2e.test. 300 IN A 192.0.2.10"
  local-data: "b.e2e.test. 300 IN A 192.0.2.11"
)")
                           .arg(dir.path(), QString::number(dohPort), QString::number(plainPort), hostName);
        for (int i = 0; i < 20; ++i)
            text += QStringLiteral("  local-data: \"h%1.upstream.test. 300 IN A 192.0.2.%1\"\n").arg(i);
        for (int i = 1; i <= bigRecords; ++i)
            text += QStringLiteral("  local-data: \"big.e2e.test. 300 IN A 198.51.100.%1\"\n").arg(i);
        QFile file(dir.filePath(QStringLiteral("unbound.conf")));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(text.toUtf8()) < 0)
            return false;
        file.close();

        unbound.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        unbound.start(tool("unbound"), { QStringLiteral("-d"), QStringLiteral("-c"), file.fileName() });
        // unbound binds every port before it serves; a probe of the HTTPS port would log a failed handshake.
        return unbound.waitForStarted(5000)
            && QTest::qWaitFor(
                [this] {
                    QTcpSocket probe;
                    probe.connectToHost(QHostAddress::LocalHost, plainPort);
                    return unbound.state() == QProcess::Running && probe.waitForConnected(1000);
                },
                10000);
    }

    void stopServer()
    {
        unbound.kill();
        unbound.waitForFinished(5000);
    }

    // The server's endpoint and its --resolve pin, or the same name at another port (0: the server's).
    QString url(quint16 port = 0) const { return at(port, "https://%1:%2/dns-query"); }
    QString pin(quint16 port = 0) const { return at(port, "%1:%2:127.0.0.1"); }
    QString at(quint16 p, const char *f) const { return QString(f).arg(hostName).arg(p ? p : dohPort); }
    QString caFile() const { return dir.filePath(QStringLiteral("cert.pem")); }

    QTemporaryDir dir;
    QProcess unbound;
    quint16 dohPort = 0; // HTTPS, 127.0.0.1
    quint16 plainPort = 0; // plain DNS over UDP and TCP, 127.0.0.1
};

} // namespace brivanta::test
