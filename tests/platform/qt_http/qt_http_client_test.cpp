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

    qint64 error() const { return outcome && outcome->error ? outcome->error->code : 0; }
};

// Starts one request and spins the event loop until its completion has been handed back here.
Fetched fetch(HttpClient &client, const QUrl &url, std::chrono::milliseconds timeout = 2s)
{
    auto fetched = std::make_shared<Fetched>();
    client.dataTask(HttpRequest { url, HttpRequest::CachePolicy::UseProtocolCachePolicy, timeout },
        [fetched](HttpOutcome outcome) {
            QMetaObject::invokeMethod(qApp, [fetched, outcome, thread = QThread::currentThread()] {
                *fetched = { outcome, thread };
            });
        });
    (void)QTest::qWaitFor([&] { return fetched->outcome.has_value(); }, 10'000);
    return *fetched;
}

std::unique_ptr<LoopbackHttpServer> serve(
    LoopbackHttpServer::Handler handler, std::optional<LoopbackHttpServer::TlsIdentity> tls = std::nullopt)
{
    auto server = std::make_unique<LoopbackHttpServer>(std::move(handler), std::move(tls));
    EXPECT_TRUE(server->listen());
    return server;
}

std::unique_ptr<LoopbackHttpServer> answering(Answer answer)
{
    return serve([answer](const QByteArray &) { return answer; });
}

bool allConnectionsClose(const LoopbackHttpServer &server)
{
    return QTest::qWaitFor([&] { return server.openConnections() == 0; }, 3000);
}

TEST(QtHttpClient, TheFinalStatusPassesThroughOnTheClientsOwnThreadAfterRedirects)
{
    QtHttpClient client;
    const std::pair<int, int> cases[] = { { 200, 200 }, { 404, 404 }, { 500, 500 }, { 301, 200 },
        { 307, 200 }, { 302, 404 } }; // first status (3xx: a redirect to /final), final status
    for (const auto &[first, final] : cases) {
        const bool redirects = first / 100 == 3;
        auto server = serve([&](const QByteArray &target) {
            return redirects && target != "/final" ? LoopbackHttpServer::redirect(first, "/final")
                                                   : LoopbackHttpServer::status(final);
        });
        const Fetched fetched = fetch(client, server->url());
        EXPECT_EQ(fetched.outcome, (HttpOutcome { std::nullopt, final })) << first;
        EXPECT_NE(fetched.thread, QThread::currentThread());
        EXPECT_EQ(server->requestsSeen(), redirects ? 2 : 1) << first;
    }
}

TEST(QtHttpClient, ARedirectLoopEndsWithTooManyRedirects)
{
    QtHttpClient client;
    auto server = answering(LoopbackHttpServer::redirect(302, "/again"));
    EXPECT_EQ(fetch(client, server->url()).error(), NSURLErrorHTTPTooManyRedirects);
    // The first request and sixteen redirects.
    EXPECT_EQ(server->requestsSeen(), 17);
}

TEST(QtHttpClient, TransportFailuresGiveTheirErrorAndNoStatus)
{
    QtHttpClient client;
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
        EXPECT_EQ(fetched.error(), code);
        EXPECT_EQ(fetched.outcome->statusCode, std::nullopt);
    }
}

TEST(QtHttpClient, AHostThatNeverFinishesIsDecidedAtTheHeadersOrCutOffAtTheTimeout)
{
    const QByteArray head = "HTTP/1.1 200 OK\r\nX-Padding: " + QByteArray(200, 'p') + "\r\n\r\n";
    const struct
    {
        const char *what;
        Answer answer;
        std::chrono::milliseconds timeout;
        qint64 error;
        std::optional<int> status;
    } cases[] = {
        { "endless body", { Answer::Kind::EndlessBody, head }, 3s, 0, 200 },
        // A byte every 20 ms never leaves the connection idle, but the head takes over 4 s to arrive.
        { "trickled head", { Answer::Kind::Trickle, head, 0ms, 20ms }, 500ms, NSURLErrorTimedOut,
            std::nullopt },
        { "silence", { Answer::Kind::Silent, {} }, 300ms, NSURLErrorTimedOut, std::nullopt },
    };
    QtHttpClient client;
    for (const auto &c : cases) {
        auto server = answering(c.answer);
        const Fetched fetched = fetch(client, server->url(), c.timeout);
        ASSERT_TRUE(fetched.outcome) << c.what;
        EXPECT_EQ(fetched.error(), c.error) << c.what;
        EXPECT_EQ(fetched.outcome->statusCode, c.status) << c.what;
        EXPECT_TRUE(allConnectionsClose(*server)) << c.what;
    }
}

TEST(QtHttpClient, DestroyingTheClientDropsOpenRequests)
{
    auto server = answering({ Answer::Kind::Silent, {} });
    bool called = false;
    {
        QtHttpClient shortLived;
        shortLived.dataTask(HttpRequest { server->url() }, [&called](HttpOutcome) { called = true; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return server->requestsSeen() == 1; }, 3000));
    }
    EXPECT_FALSE(called);
    EXPECT_TRUE(allConnectionsClose(*server));
}

TEST(QtHttpClient, OnlyATrustedCertificateGetsThroughAndADowngradeIsFollowed)
{
    const auto identity = LoopbackHttpServer::generateSelfSignedIdentity();
    ASSERT_TRUE(identity) << "openssl could not make a test certificate";
    QtHttpClient trusting(QtHttpClient::Options { QList<QSslCertificate> { identity->certificate } });
    QtHttpClient untrusting;
    auto plain = answering(LoopbackHttpServer::status(200));
    const QByteArray target = plain->url(QStringLiteral("/plain")).toEncoded();
    auto secure
        = serve([target](const QByteArray &) { return LoopbackHttpServer::redirect(302, target); }, identity);

    const Fetched refused = fetch(untrusting, secure->url());
    ASSERT_TRUE(refused.outcome);
    EXPECT_EQ(refused.error(), NSURLErrorSecureConnectionFailed);
    EXPECT_EQ(refused.outcome->statusCode, std::nullopt);
    EXPECT_EQ(plain->requestsSeen(), 0);

    EXPECT_EQ(fetch(trusting, secure->url()).outcome, (HttpOutcome { std::nullopt, 200 }));
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
