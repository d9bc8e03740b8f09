// DohUpstream against a local unbound DNS-over-HTTPS server on loopback.

#include "forwarder/doh_upstream.h"
#include "local_doh_server.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>

using namespace brivanta;
using namespace std::chrono_literals;

namespace {

constexpr int hangGuardMs = 15000; // not a speed check

struct Outcome
{
    int calls = 0;
    std::optional<QByteArray> answer;
    QString error;
};

// Asks for h<i>.upstream.test (192.0.2.<i>); the reply lands in outcome.
void send(DohUpstream &upstream, int i, Outcome &outcome)
{
    const auto name = dns::nameFromText(QStringLiteral("h%1.upstream.test").arg(i % 20).toLatin1());
    upstream.query(
        dns::makeQuery(0, *name, dns::RRType::A), [&outcome](std::optional<QByteArray> a, QString e) {
            ++outcome.calls;
            outcome.answer = std::move(a);
            outcome.error = std::move(e);
        });
}

// Asks and waits; a reply must come exactly once and never from inside query().
Outcome ask(DohUpstream &upstream, int i = 1)
{
    Outcome outcome;
    send(upstream, i, outcome);
    EXPECT_EQ(outcome.calls, 0) << "replied inside query()";
    EXPECT_TRUE(QTest::qWaitFor([&] { return outcome.calls > 0; }, hangGuardMs));
    QCoreApplication::processEvents();
    EXPECT_EQ(outcome.calls, 1);
    return outcome;
}

// Relays TCP to the server; freeze() makes every connection made so far go silent but stay open, as a
// connection does whose network went away.
class StallingRelay : public QObject
{
public:
    explicit StallingRelay(quint16 target)
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this, target] {
            while (QTcpSocket *client = m_server.nextPendingConnection()) {
                auto *upstream = new QTcpSocket(client);
                upstream->connectToHost(QHostAddress::LocalHost, target);
                for (auto [from, to] : { std::pair { client, upstream }, std::pair { upstream, client } })
                    connect(from, &QTcpSocket::readyRead, this, [=, this, era = m_era] {
                        const QByteArray bytes = from->readAll();
                        if (era == m_era)
                            to->write(bytes);
                    });
            }
        });
    }
    quint16 port() const { return m_server.serverPort(); }
    void freeze() { ++m_era; }

private:
    QTcpServer m_server;
    int m_era = 0;
};

class DohUpstreamTest : public test::LocalDohTest
{
protected:
    // The default attempt timeout: a loaded machine must not retry a healthy attempt (we count connections).
    UpstreamSettings pinned(quint16 p = 0) const { return { QUrl(url(p)), {}, { pin(p) }, caFile() }; }
};

} // namespace

TEST_F(DohUpstreamTest, ParallelQueriesShareOneConnectionWithoutTheSystemResolver)
{
    // doh.brivanta.test is known only to the local server's plain port, never to the system resolver.
    const HostPort refusing { QHostAddress::LocalHost, test::freePort() };
    const HostPort plain { QHostAddress::LocalHost, plainPort };
    const struct
    {
        const char *what;
        UpstreamSettings settings;
    } cases[] = {
        { "pinned", pinned() },
        { "bootstrap, after a server that refuses", { QUrl(url()), { refusing, plain }, {}, caFile() } },
        { "address literal, nothing to resolve",
            { QUrl(QStringLiteral("https://127.0.0.1:%1/dns-query").arg(dohPort)), {}, {}, caFile() } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        DohUpstream upstream(c.settings);
        QSignalSpy succeeded(&upstream, &DohUpstream::succeeded);
        std::vector<Outcome> outcomes(300); // more than the upstream keeps handles for
        for (size_t i = 0; i < outcomes.size(); ++i)
            send(upstream, int(i), outcomes[i]);
        EXPECT_TRUE(QTest::qWaitFor([&] { return succeeded.count() == 300; }, hangGuardMs));
        for (size_t i = 0; i < outcomes.size(); ++i) {
            ASSERT_TRUE(outcomes[i].answer) << i << ": " << qPrintable(outcomes[i].error);
            EXPECT_EQ(outcomes[i].calls, 1);
            EXPECT_EQ(test::addresses(*outcomes[i].answer), std::vector { 0xc0000200u + quint32(i % 20) })
                << i;
        }
        EXPECT_EQ(upstream.connectionsOpened(), 1u);
    }
}

TEST_F(DohUpstreamTest, FailuresAreReportedReadablyAndNeverAnswered)
{
    const quint16 closed = test::freePort();
    const struct
    {
        UpstreamSettings settings;
        QString error; // the start of it
    } cases[] = {
        { { QUrl(url()), { { QHostAddress::LocalHost, closed } }, {}, caFile(), 500ms },
            QStringLiteral("could not resolve doh.brivanta.test through 127.0.0.1:%1").arg(closed) },
        { { QUrl(url()), {}, {}, caFile(), 500ms },
            QStringLiteral("no server to resolve doh.brivanta.test through") },
        { { QUrl(url()), {}, { pin() }, {} },
            QStringLiteral("TLS with doh.brivanta.test: self-signed certificate") },
        { { QUrl(url().replace("/dns-query", "/elsewhere")), {}, { pin() }, caFile() },
            QStringLiteral("HTTP 404 from doh.brivanta.test") },
        { pinned(closed),
            QStringLiteral("doh.brivanta.test: Failed to connect to doh.brivanta.test port %1").arg(closed) },
    };
    for (const auto &c : cases) {
        DohUpstream upstream(c.settings);
        QSignalSpy failed(&upstream, &DohUpstream::failed);
        const Outcome outcome = ask(upstream);
        EXPECT_FALSE(outcome.answer);
        EXPECT_TRUE(outcome.error.startsWith(c.error)) << qPrintable(outcome.error);
        ASSERT_FALSE(failed.isEmpty());
        EXPECT_EQ(failed.last().at(0).toString(), outcome.error);
    }
}

TEST_F(DohUpstreamTest, StalledConnectionIsReplacedAndTheQueryStillAnswered)
{
    StallingRelay relay(dohPort);
    DohUpstream upstream(pinned(relay.port()));
    ASSERT_TRUE(ask(upstream, 1).answer);

    relay.freeze(); // the pooled connection is now dead without being closed
    // Both wait on the dead connection; the first to time out moves the other to the fresh one with it.
    std::vector<Outcome> outcomes(2);
    send(upstream, 2, outcomes[0]);
    send(upstream, 3, outcomes[1]);
    ASSERT_TRUE(QTest::qWaitFor([&] { return outcomes[0].calls && outcomes[1].calls; }, hangGuardMs));
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(outcomes[i].answer) << qPrintable(outcomes[i].error);
        EXPECT_EQ(test::addresses(*outcomes[i].answer), std::vector { 0xc0000202u + quint32(i) });
    }
    EXPECT_EQ(upstream.connectionsOpened(), 2u);

    // reset() after a network change goes straight to a new connection.
    upstream.reset();
    ASSERT_TRUE(ask(upstream, 3).answer);
    EXPECT_EQ(upstream.connectionsOpened(), 3u);
}
