#include "platform/qt/qt_http_client.h"
#include "platform/qt/qt_main_queue.h"
#include "platform/qt_http/loopback_http_server.h"
#include "tester/ad_block_tester.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>
#include <QThread>
#include <gtest/gtest.h>

// LeakSanitizer hook. OpenSSL now and then keeps a per-thread error record of a thread that Qt's
// network stack has ended; that memory belongs to libcrypto, not to us.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libcrypto.so\n";
}

namespace brivanta {

namespace {

using namespace std::chrono_literals;
using testing::LoopbackHttpServer;
using Answer = LoopbackHttpServer::Answer;

struct Fetched
{
    std::optional<HttpOutcome> outcome;
    QThread *thread = nullptr;
};

// Starts one request and spins the event loop until its completion has been handed back here.
Fetched fetch(HttpClient &client, const QUrl &url, std::chrono::milliseconds timeout = 2s)
{
    auto fetched = std::make_shared<Fetched>();
    client.dataTask(HttpRequest { url, HttpRequest::CachePolicy::UseProtocolCachePolicy, timeout },
        [fetched](HttpOutcome outcome) {
            QThread *thread = QThread::currentThread();
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [fetched, thread, outcome] {
                    fetched->thread = thread;
                    fetched->outcome = outcome;
                },
                Qt::QueuedConnection);
        });
    (void)QTest::qWaitFor([&] { return fetched->outcome.has_value(); }, 10'000);
    return *fetched;
}

std::unique_ptr<LoopbackHttpServer> startServer(
    LoopbackHttpServer::Handler handler, std::optional<LoopbackHttpServer::TlsIdentity> tls = std::nullopt)
{
    auto server = std::make_unique<LoopbackHttpServer>(std::move(handler), std::move(tls));
    EXPECT_TRUE(server->listen());
    return server;
}

std::unique_ptr<LoopbackHttpServer> answering(Answer answer)
{
    return startServer([answer](const QByteArray &) { return answer; });
}

qint64 errorCode(const Fetched &fetched)
{
    return fetched.outcome && fetched.outcome->error ? fetched.outcome->error->code : 0;
}

const QByteArray slowHead = "HTTP/1.1 200 OK\r\nX-Padding: " + QByteArray(200, 'p') + "\r\n\r\n";

class QtHttpClientTest : public ::testing::Test
{
protected:
    QtHttpClient client;
};

TEST_F(QtHttpClientTest, TheFinalStatusPassesThroughOnTheClientsOwnThreadAfterRedirects)
{
    const struct
    {
        int first; // 3xx: a redirect to /final
        int final;
    } cases[] = { { 200, 200 }, { 204, 204 }, { 404, 404 }, { 500, 500 }, { 301, 200 }, { 307, 200 },
        { 302, 404 } };
    for (const auto &c : cases) {
        const bool redirects = c.first / 100 == 3;
        auto server = startServer([c, redirects](const QByteArray &target) {
            return redirects && target != "/final" ? LoopbackHttpServer::redirect(c.first, "/final")
                                                   : LoopbackHttpServer::status(c.final);
        });
        const Fetched fetched = fetch(client, server->url());
        ASSERT_TRUE(fetched.outcome) << c.first;
        EXPECT_EQ(*fetched.outcome, (HttpOutcome { std::nullopt, c.final })) << c.first;
        EXPECT_NE(fetched.thread, QThread::currentThread());
        EXPECT_EQ(server->requestsSeen(), redirects ? 2 : 1) << c.first;
    }
}

TEST_F(QtHttpClientTest, ARedirectLoopEndsWithTooManyRedirects)
{
    auto server = startServer([](const QByteArray &) { return LoopbackHttpServer::redirect(302, "/again"); });
    const Fetched fetched = fetch(client, server->url());
    EXPECT_EQ(errorCode(fetched), NSURLErrorHTTPTooManyRedirects);
    // The first request and sixteen redirects.
    EXPECT_EQ(server->requestsSeen(), 17);
}

TEST_F(QtHttpClientTest, TransportFailuresGiveTheirErrorAndNoStatus)
{
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    const quint16 port = closed.serverPort();
    closed.close();
    const std::pair<QUrl, qint64> cases[]
        = { { QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(port)), NSURLErrorCannotConnectToHost },
              { QUrl(QStringLiteral("https://brivanta-probe.invalid")), NSURLErrorCannotFindHost } };
    for (const auto &[url, code] : cases) {
        const Fetched fetched = fetch(client, url);
        ASSERT_TRUE(fetched.outcome) << url.toString().toStdString();
        EXPECT_EQ(errorCode(fetched), code);
        EXPECT_EQ(fetched.outcome->statusCode, std::nullopt);
    }
}

TEST_F(QtHttpClientTest, AnEndlessBodyIsDecidedAtTheHeadersAndTheConnectionDropped)
{
    auto server
        = answering({ Answer::Kind::EndlessBody, "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n" });
    const Fetched fetched = fetch(client, server->url(), 3s);
    ASSERT_TRUE(fetched.outcome);
    EXPECT_EQ(*fetched.outcome, (HttpOutcome { std::nullopt, 200 }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return server->openConnections() == 0; }, 3000));
}

TEST_F(QtHttpClientTest, HeadersTrickledFasterThanTheTimeoutAreStillCutOffAtIt)
{
    // A byte every 20 ms never leaves the connection idle, but the head takes over 4 s to arrive.
    auto server = answering({ Answer::Kind::Trickle, slowHead, 0ms, 20ms });
    const Fetched fetched = fetch(client, server->url(), 500ms);
    EXPECT_EQ(errorCode(fetched), NSURLErrorTimedOut);
    EXPECT_TRUE(QTest::qWaitFor([&] { return server->openConnections() == 0; }, 3000));
}

TEST_F(QtHttpClientTest, DestroyingTheClientDropsOpenRequests)
{
    auto server = answering({ Answer::Kind::Silent, {} });
    bool called = false;
    {
        QtHttpClient shortLived;
        shortLived.dataTask(HttpRequest { server->url() }, [&called](HttpOutcome) { called = true; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return server->requestsSeen() == 1; }, 3000));
    }
    EXPECT_FALSE(called);
    EXPECT_TRUE(QTest::qWaitFor([&] { return server->openConnections() == 0; }, 3000));
}

class QtHttpClientTlsTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { identity = LoopbackHttpServer::generateSelfSignedIdentity(); }

    void SetUp() override { ASSERT_TRUE(identity) << "openssl could not make a test certificate"; }

    static inline std::optional<LoopbackHttpServer::TlsIdentity> identity;
};

TEST_F(QtHttpClientTlsTest, OnlyATrustedCertificateGetsThroughAndADowngradeIsFollowed)
{
    QtHttpClient trusting(QtHttpClient::Options { QList<QSslCertificate> { identity->certificate } });
    QtHttpClient untrusting;
    auto plain = answering(LoopbackHttpServer::status(200));
    const QByteArray target = plain->url(QStringLiteral("/plain")).toEncoded();
    auto secure = startServer(
        [target](const QByteArray &) { return LoopbackHttpServer::redirect(302, target); }, identity);

    const Fetched refused = fetch(untrusting, secure->url());
    ASSERT_TRUE(refused.outcome);
    EXPECT_EQ(errorCode(refused), NSURLErrorSecureConnectionFailed);
    EXPECT_EQ(refused.outcome->statusCode, std::nullopt);
    EXPECT_EQ(plain->requestsSeen(), 0);

    const Fetched fetched = fetch(trusting, secure->url());
    ASSERT_TRUE(fetched.outcome);
    EXPECT_EQ(*fetched.outcome, (HttpOutcome { std::nullopt, 200 }));
    EXPECT_EQ(plain->requestsSeen(), 1);
}

TEST(AdBlockTesterOverTheNetwork, ScoresLoopbackHostsThroughTheRealClientAndMainQueue)
{
    QtHttpClient client;
    QtMainQueue mainQueue(QCoreApplication::instance());
    auto ok = answering(LoopbackHttpServer::status(200));
    auto missing = answering(LoopbackHttpServer::status(404));
    const QStringList domains { ok->url().toString(), missing->url().toString(),
        QStringLiteral("https://brivanta-probe.invalid"), QStringLiteral("not a url") };
    auto tester = AdBlockTester::withTestDomainsForTesting(client, mainQueue, domains);
    QSignalSpy scoreChanged(tester.get(), &AdBlockTester::overallScoreChanged);

    tester->runTest();
    ASSERT_TRUE(scoreChanged.wait(10'000));

    const std::map<QString, bool> expected { { domains[0], false }, { domains[1], true },
        { domains[2], true } };
    EXPECT_EQ(tester->results(), expected);
    // The entry that does not parse stays in the total: 2 of 4.
    EXPECT_EQ(tester->overallScore(), 50);
}

} // namespace
} // namespace brivanta
