// brivanta-dohd as a child process, forwarding to a local unbound DNS-over-HTTPS server, on loopback.

#include "forwarder/canary.h"
#include "local_doh_server.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QNetworkDatagram>
#include <set>

using namespace brivanta;
using test::addresses;
using test::bigRecords;

namespace {

QByteArray query(quint16 id, const char *name, quint16 type = dns::RRType::A, quint16 ednsSize = 0)
{
    QByteArray q = dns::makeQuery(id, *dns::nameFromText(name), type);
    if (ednsSize) { // an OPT record advertising ednsSize
        q[11] = 1;
        q += QByteArray("\0\0\x29", 3) + char(ednsSize >> 8) + char(ednsSize) + QByteArray(6, '\0');
    }
    return q;
}

constexpr int hangGuardMs = 10000; // not a speed check

QByteArray askUdp(quint16 port, const QByteArray &message)
{
    QUdpSocket socket;
    socket.writeDatagram(message, QHostAddress::LocalHost, port);
    return socket.waitForReadyRead(hangGuardMs) ? socket.receiveDatagram().data() : QByteArray();
}

dns::RCode rcodeOf(const QByteArray &answer)
{
    const auto info = dns::inspectResponse(answer);
    return info ? info->rcode : dns::RCode(0xff);
}

struct Daemon
{
    quint16 port = test::freePort();
    QTemporaryDir stateDir;
    QProcess process;

    Daemon(const QString &url, const QString &pin, const QString &caFile)
    {
        process.start(QStringLiteral(BRIVANTA_DOHD_PATH),
            QStringLiteral("--listen 127.0.0.1:%1 --upstream %2 --resolve %3 --ca %4 --state-dir %5")
                .arg(QString::number(port), url, pin, caFile, stateDir.path())
                .split(u' '));
        // health.json is written once the sockets listen.
        (void)QTest::qWaitFor(
            [&] { return QFile::exists(healthPath()) || process.state() == QProcess::NotRunning; }, 10000);
    }
    ~Daemon()
    {
        process.terminate();
        process.waitForFinished(5000);
    }
    QString healthPath() const { return stateDir.filePath(QStringLiteral("health.json")); }
};

using DohdEndToEnd = test::LocalDohTest;

} // namespace

TEST_F(DohdEndToEnd, AnswersPassThroughWithTheClientsIdsOverUdpAndTcp)
{
    Daemon daemon(url(), pin(), caFile());
    ASSERT_EQ(daemon.process.state(), QProcess::Running) << daemon.process.readAllStandardError().constData();

    const struct
    {
        const char *name;
        dns::RCode rcode;
        std::vector<quint32> addresses;
    } cases[] = {
        { "a.e2e.test", dns::RCode::NoError, { 0xc000020a } },
        { "b.e2e.test", dns::RCode::NoError, { 0xc000020b } },
        { "nothing.e2e.test", dns::RCode::NXDomain, {} },
        { "use-application-dns.net", dns::RCode::NXDomain, {} },
    };
    // Twice: the second round comes from the cache and must look the same.
    for (int round = 0; round < 2; ++round) {
        for (const auto &c : cases) {
            const quint16 id = quint16(0x1000 + round * 16 + (&c - cases));
            const QByteArray answer = askUdp(daemon.port, query(id, c.name));
            EXPECT_EQ(dns::messageId(answer), id) << c.name;
            EXPECT_EQ(rcodeOf(answer), c.rcode) << c.name;
            EXPECT_EQ(addresses(answer), c.addresses) << c.name;
        }
    }

    // Pipelined on one connection, the big answer whole (TCP is never cut).
    QTcpSocket tcp;
    tcp.connectToHost(QHostAddress::LocalHost, daemon.port);
    for (quint16 id = 1; id <= 7; ++id) {
        const char *name = id % 2 ? "big.e2e.test" : "a.e2e.test";
        tcp.write(dns::frame(query(id, id == 7 ? "fresh.nothing.e2e.test" : name)));
    }
    dns::TcpFrameReader reader;
    std::set<quint16> ids;
    while (ids.size() < 7) {
        if (const auto answer = reader.next()) {
            const quint16 id = *ids.insert(dns::messageId(*answer)).first;
            EXPECT_EQ(addresses(*answer).size(), id == 7 ? 0u : id % 2 ? size_t(bigRecords) : 1u) << id;
            EXPECT_FALSE(dns::inspectResponse(*answer).value().truncated);
        } else {
            ASSERT_TRUE(tcp.waitForReadyRead(hangGuardMs)) << ids.size() << " answers";
            reader.append(tcp.readAll());
        }
    }
    EXPECT_EQ(ids, (std::set<quint16> { 1, 2, 3, 4, 5, 6, 7 }));

    // UDP: cut to the client's advertised size, with TC, and whole when it fits.
    for (const quint16 ednsSize : { 0, 512, 1232 }) {
        const bool truncated = ednsSize < 1232;
        const QByteArray answer = askUdp(daemon.port, query(99, "big.e2e.test", dns::RRType::A, ednsSize));
        EXPECT_EQ(dns::inspectResponse(answer).value().truncated, truncated) << ednsSize;
        EXPECT_LE(answer.size(), std::max<int>(ednsSize, 512));
        EXPECT_EQ(addresses(answer).size(), truncated ? 0u : size_t(bigRecords));
    }
}

TEST_F(DohdEndToEnd, CanaryProvesTheEndpointAnswersAndFailsClosedWithoutIt)
{
    Daemon daemon(url(), pin(), caFile());
    ASSERT_EQ(daemon.process.state(), QProcess::Running);
    QFile health(daemon.healthPath());
    ASSERT_TRUE(health.open(QIODevice::ReadOnly));
    const QByteArray secret = QByteArray::fromHex(
        QJsonDocument::fromJson(health.readAll())["canarySecret"].toString().toLatin1());
    ASSERT_EQ(secret.size(), 16);

    const QByteArray nonce = "n0nce-" + QByteArray::number(QDateTime::currentMSecsSinceEpoch());
    const QByteArray name = nonce + '.' + canarySuffix;
    QByteArray answer = askUdp(daemon.port, query(5, name.constData()));
    EXPECT_EQ(rcodeOf(answer), dns::RCode::NoError);
    EXPECT_EQ(addresses(answer), std::vector<quint32> { canaryAddress(secret, nonce) });
    answer = askUdp(daemon.port, query(6, name.constData(), dns::RRType::AAAA));
    EXPECT_EQ(rcodeOf(answer), dns::RCode::NoError);
    EXPECT_TRUE(dns::answerRecords(answer).value_or(std::vector<dns::ResourceRecord>(1)).empty());

    // The endpoint goes away: new names fail closed; it comes back: they are answered again.
    stopServer();
    EXPECT_EQ(rcodeOf(askUdp(daemon.port, query(7, "b.e2e.test"))), dns::RCode::ServFail);
    ASSERT_TRUE(startServer());
    EXPECT_EQ(addresses(askUdp(daemon.port, query(8, "b.e2e.test"))), std::vector<quint32> { 0xc000020b });

    // A forwarder whose endpoint never answered gives no canary address.
    const quint16 nobody = test::freePort();
    Daemon orphan(url(nobody), pin(nobody), caFile());
    ASSERT_EQ(orphan.process.state(), QProcess::Running);
    EXPECT_EQ(rcodeOf(askUdp(orphan.port, query(9, name.constData()))), dns::RCode::ServFail);
}

// A bad setting is one line on standard error, so that a log or a terminal shows it whole.
TEST(DohdConfiguration, ABadSettingIsOneLineAndExitStatusTwo)
{
    QProcess daemon;
    daemon.start(QStringLiteral(BRIVANTA_DOHD_PATH), { "--upstream", "http://dns.example/dns-query" });
    ASSERT_TRUE(daemon.waitForFinished(10000));
    EXPECT_EQ(daemon.exitCode(), 2);
    EXPECT_EQ(daemon.readAllStandardError().count('\n'), 1);
}
