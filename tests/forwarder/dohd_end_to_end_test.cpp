// brivanta-dohd as a child process, forwarding to a local unbound DNS-over-HTTPS server, on loopback.

#include "forwarder/canary.h"
#include "forwarder/dns_message.h"
#include "local_doh_server.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <set>
#include <sys/socket.h>
#include <unistd.h>

using namespace brivanta;
namespace dns = brivanta::dns;

namespace {

constexpr int bigRecords = 60; // about 1 KB of answer: more than a plain UDP client's 512 bytes

QStringList zone()
{
    QStringList lines { QStringLiteral("a.e2e.test. 300 IN A 192.0.2.10"),
        QStringLiteral("b.e2e.test. 300 IN A 192.0.2.11") };
    for (int i = 1; i <= bigRecords; ++i)
        lines << QStringLiteral("big.e2e.test. 300 IN A 198.51.100.%1").arg(i);
    return lines;
}

QByteArray query(quint16 id, const char *name, quint16 type = dns::RRType::A, quint16 ednsSize = 0)
{
    QByteArray q = dns::makeQuery(id, *dns::nameFromText(name), type);
    if (ednsSize) {
        q[11] = 1; // ARCOUNT: an OPT record advertising ednsSize
        q.append('\0').append("\x00\x29", 2).append(char(ednsSize >> 8)).append(char(ednsSize & 0xff));
        q.append(6, '\0');
    }
    return q;
}

int connectedSocket(int type, quint16 port)
{
    const int fd = ::socket(AF_INET, type, 0);
    const timeval timeout { 10, 0 }; // a hang guard, not a speed check
    ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    const sockaddr_in address = test::LocalDohServer::loopback(port);
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

QByteArray askUdp(quint16 port, const QByteArray &message)
{
    const int fd = connectedSocket(SOCK_DGRAM, port);
    QByteArray answer(65535, '\0');
    const ssize_t n = ::send(fd, message.data(), message.size(), 0) == message.size()
        ? ::recv(fd, answer.data(), answer.size(), 0)
        : -1;
    ::close(fd);
    answer.resize(std::max<ssize_t>(n, 0));
    return answer;
}

// All messages written at once on one connection; the answers as they come, in any order.
std::vector<QByteArray> askTcp(quint16 port, const std::vector<QByteArray> &messages)
{
    const int fd = connectedSocket(SOCK_STREAM, port);
    QByteArray out;
    for (const QByteArray &m : messages)
        out += dns::frame(m);
    std::vector<QByteArray> answers;
    if (fd < 0 || ::send(fd, out.data(), out.size(), 0) != out.size())
        return answers;
    dns::TcpFrameReader reader;
    char buffer[4096];
    while (answers.size() < messages.size()) {
        if (auto next = reader.next()) {
            answers.push_back(*next);
            continue;
        }
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n <= 0)
            break;
        reader.append(QByteArrayView(buffer, n));
    }
    ::close(fd);
    return answers;
}

dns::RCode rcodeOf(const QByteArray &answer)
{
    const auto info = dns::inspectResponse(answer);
    return info ? info->rcode : dns::RCode(0xff);
}

std::vector<quint32> addresses(const QByteArray &answer)
{
    std::vector<quint32> result;
    for (const dns::ResourceRecord &r :
        dns::answerRecords(answer).value_or(std::vector<dns::ResourceRecord> {}))
        if (r.type == dns::RRType::A && r.rdata.size() == 4)
            result.push_back(qFromBigEndian<quint32>(r.rdata.constData()));
    return result;
}

class Daemon
{
public:
    quint16 port = test::LocalDohServer::freePort();
    QTemporaryDir stateDir;
    QProcess process;

    Daemon(const QString &url, const QString &pin, const QString &caFile)
    {
        process.start(QStringLiteral(BRIVANTA_DOHD_PATH),
            { QStringLiteral("--listen"), QStringLiteral("127.0.0.1:%1").arg(port),
                QStringLiteral("--upstream"), url, QStringLiteral("--resolve"), pin, QStringLiteral("--ca"),
                caFile, QStringLiteral("--state-dir"), stateDir.path() });
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
    QByteArray canarySecret() const
    {
        QFile file(healthPath());
        file.open(QIODevice::ReadOnly);
        return QByteArray::fromHex(QJsonDocument::fromJson(file.readAll())
                                       .object()
                                       .value(QLatin1String("canarySecret"))
                                       .toString()
                                       .toLatin1());
    }
};

class DohdEndToEnd : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (auto why = test::LocalDohServer::unavailable())
            GTEST_SKIP() << qPrintable(*why);
        ASSERT_TRUE(server.start(zone())) << "the local DNS-over-HTTPS server did not start";
    }
    test::LocalDohServer server;
};

std::unique_ptr<Daemon> daemonFor(const test::LocalDohServer &server)
{
    return std::make_unique<Daemon>(server.url(), server.pin(), server.caFile());
}

} // namespace

TEST_F(DohdEndToEnd, AnswersPassThroughWithTheClientsIdsOverUdpAndTcp)
{
    const auto started = daemonFor(server);
    Daemon &daemon = *started;
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
    std::vector<QByteArray> messages;
    for (quint16 id = 1; id <= 6; ++id)
        messages.push_back(query(id, id % 2 ? "big.e2e.test" : "a.e2e.test"));
    messages.push_back(query(7, "fresh.nothing.e2e.test"));
    const std::vector<QByteArray> answers = askTcp(daemon.port, messages);
    ASSERT_EQ(answers.size(), messages.size());
    std::set<quint16> ids;
    for (const QByteArray &answer : answers) {
        const quint16 id = dns::messageId(answer);
        ids.insert(id);
        EXPECT_EQ(addresses(answer).size(), id == 7 ? 0u : id % 2 ? size_t(bigRecords) : 1u) << id;
        EXPECT_FALSE(dns::inspectResponse(answer).value().truncated);
    }
    EXPECT_EQ(ids, (std::set<quint16> { 1, 2, 3, 4, 5, 6, 7 }));

    // UDP: cut to the client's advertised size, with TC, and whole when it fits.
    const struct
    {
        quint16 ednsSize;
        bool truncated;
    } sizes[] = { { 0, true }, { 512, true }, { 1232, false } };
    for (const auto &s : sizes) {
        const QByteArray answer = askUdp(daemon.port, query(99, "big.e2e.test", dns::RRType::A, s.ednsSize));
        EXPECT_EQ(dns::inspectResponse(answer).value().truncated, s.truncated) << s.ednsSize;
        EXPECT_LE(answer.size(), std::max<int>(s.ednsSize, 512));
        EXPECT_EQ(addresses(answer).size(), s.truncated ? 0u : size_t(bigRecords));
    }
}

TEST_F(DohdEndToEnd, CanaryProvesTheEndpointAnswersAndFailsClosedWithoutIt)
{
    const auto started = daemonFor(server);
    Daemon &daemon = *started;
    ASSERT_EQ(daemon.process.state(), QProcess::Running);
    const QByteArray secret = daemon.canarySecret();
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
    server.stop();
    EXPECT_EQ(rcodeOf(askUdp(daemon.port, query(7, "b.e2e.test"))), dns::RCode::ServFail);
    ASSERT_TRUE(server.start(zone()));
    EXPECT_EQ(addresses(askUdp(daemon.port, query(8, "b.e2e.test"))), std::vector<quint32> { 0xc000020b });

    // A forwarder whose endpoint never answered gives no canary address.
    const quint16 nobody = test::LocalDohServer::freePort();
    Daemon orphan(QStringLiteral("https://doh.e2e.test:%1/dns-query").arg(nobody),
        QStringLiteral("doh.e2e.test:%1:127.0.0.1").arg(nobody), server.caFile());
    ASSERT_EQ(orphan.process.state(), QProcess::Running);
    EXPECT_EQ(rcodeOf(askUdp(orphan.port, query(9, name.constData()))), dns::RCode::ServFail);
}

TEST(DohdConfiguration, BadConfigurationIsOneLineAndExitStatusTwo)
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("dohd.conf"));
    const QString usage
        = QStringLiteral("the endpoint must be https://host[:port][/path], without user, query or fragment");
    const struct
    {
        const char *configuration; // written to FILE and given with --config
        QStringList arguments;
        QString line; // FILE stands for the configuration's path
    } cases[] = {
        { nullptr, { QStringLiteral("--upstream"), QStringLiteral("http://dns.example/dns-query") },
            QStringLiteral("--upstream: ") + usage },
        { "endpoint = https://dns.example/\n# ok\nupstream = https://other.example/\n", {},
            QStringLiteral("FILE:3: unknown setting \"upstream\"") },
        { nullptr, {},
            QStringLiteral(
                "no endpoint: give --upstream https://host/path or endpoint = in the configuration") },
    };
    for (const auto &c : cases) {
        QStringList arguments = c.arguments;
        if (c.configuration) {
            QFile out(file);
            ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
            out.write(c.configuration);
            out.close();
            arguments << QStringLiteral("--config") << file;
        }
        QProcess process;
        process.start(QStringLiteral(BRIVANTA_DOHD_PATH), arguments);
        ASSERT_TRUE(process.waitForFinished(10000));
        const QString expected
            = QStringLiteral("brivanta-dohd: ") + QString(c.line).replace(QLatin1String("FILE"), file);
        EXPECT_EQ(process.exitCode(), 2) << qPrintable(expected);
        EXPECT_EQ(QString::fromUtf8(process.readAllStandardError()), expected + QLatin1Char('\n'));
    }
}
