#include "platform/qt/qt_http_client.h"
#include "platform/qt/qt_main_queue.h"
#include "platform/qt_http/loopback_http_server.h"
#include "tester/ad_block_tester.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <gtest/gtest.h>

// For LeakSanitizer: OpenSSL may keep an error record of a thread Qt's network stack has ended.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libcrypto.so\n";
}

namespace brivanta {
namespace {

using namespace std::chrono_literals;
using Server = testing::LoopbackHttpServer;
using Answer = Server::Answer;

struct Fetched
{
    std::optional<HttpOutcome> outcome;
    QThread *thread = nullptr;

    qint64 error() const { return outcome && outcome->error ? outcome->error->code : 0; }
    std::optional<int> status() const { return outcome ? outcome->statusCode : std::nullopt; }
};

// Starts one request and spins the event loop until its completion has been handed back here.
Fetched fetch(HttpClient &client, const QUrl &url, std::chrono::milliseconds timeout = 2s)
{
    auto fetched = std::make_shared<Fetched>();
    client.dataTask(HttpRequest { url, HttpRequest::CachePolicy::UseProtocolCachePolicy, timeout },
        [fetched](HttpOutcome outcome) {
            QMetaObject::invokeMethod(QCoreApplication::instance(), [=, thread = QThread::currentThread()] {
                *fetched = { outcome, thread };
            });
        });
    (void)QTest::qWaitFor([&] { return fetched->outcome.has_value(); }, 10'000);
    return *fetched;
}

std::unique_ptr<Server> serve(Server::Handler handler, std::optional<Server::TlsIdentity> tls = std::nullopt)
{
    auto server = std::make_unique<Server>(std::move(handler), std::move(tls));
    EXPECT_TRUE(server->listen());
    return server;
}

const auto always = [](Answer answer) -> Server::Handler { return [answer](auto &) { return answer; }; };

TEST(QtHttpClient, EachRequestEndsOnceOffTheCallersThreadWithTheFinalStatusOrAnError)
{
    const QByteArray head = "HTTP/1.1 200 OK\r\nX-Padding: " + QByteArray(200, 'p') + "\r\n\r\n";
    const struct
    {
        const char *what;
        Server::Handler handler;
        std::chrono::milliseconds timeout;
        qint64 error;
        std::optional<int> status;
        int requests;
        bool neverFinishes; // the connection must still be dropped
    } cases[] = {
        // The first request and sixteen redirects.
        { "redirect loop", always(Server::redirect(302, "/again")), 2s, NSURLErrorHTTPTooManyRedirects, 302,
            17, false },
        // Decided at the headers.
        { "endless body", always({ Answer::Kind::EndlessBody, head }), 3s, 0, 200, 1, true },
        // A byte every 20 ms never leaves the connection idle, but the head takes over 4 s to arrive.
        { "trickled head", always({ Answer::Kind::Trickle, head, 0ms, 20ms }), 500ms, NSURLErrorTimedOut,
            std::nullopt, 1, true },
        { "silence", always({ Answer::Kind::Silent, {} }), 300ms, NSURLErrorTimedOut, std::nullopt, 1, true },
    };
    QtHttpClient client;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        auto server = serve(c.handler);
        const Fetched fetched = fetch(client, server->url(), c.timeout);
        EXPECT_EQ(fetched.error(), c.error);
        EXPECT_EQ(fetched.status(), c.status);
        EXPECT_NE(fetched.thread, QThread::currentThread());
        EXPECT_EQ(server->requestsSeen(), c.requests);
        EXPECT_TRUE(
            !c.neverFinishes || QTest::qWaitFor([&] { return server->openConnections() == 0; }, 3000));
    }
}

TEST(QtHttpClient, TransportFailuresGiveTheirErrorAndNoStatus)
{
    QtHttpClient client;
    auto closed = serve(always(Server::status(200)));
    const QUrl refused = closed->url();
    closed.reset();
    const std::pair<QUrl, qint64> cases[] = { { refused, NSURLErrorCannotConnectToHost },
        { QUrl("https://brivanta-probe.invalid"), NSURLErrorCannotFindHost } };
    for (const auto &[url, code] : cases) {
        const Fetched fetched = fetch(client, url);
        EXPECT_EQ(fetched.error(), code) << url.toString().toStdString();
        EXPECT_TRUE(fetched.outcome && !fetched.status());
    }
}

TEST(QtHttpClient, DestroyingTheClientDropsOpenRequests)
{
    auto server = serve(always({ Answer::Kind::Silent, {} }));
    bool called = false;
    {
        QtHttpClient shortLived;
        shortLived.dataTask(HttpRequest { server->url() }, [&called](HttpOutcome) { called = true; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return server->requestsSeen() == 1; }, 3000));
    }
    EXPECT_FALSE(called);
    EXPECT_TRUE(QTest::qWaitFor([&] { return server->openConnections() == 0; }, 3000));
}

TEST(QtHttpClient, OnlyATrustedCertificateGetsThroughAndADowngradeIsFollowed)
{
    const auto identity = Server::generateSelfSignedIdentity();
    ASSERT_TRUE(identity) << "openssl could not make a test certificate";
    QtHttpClient trusting(QtHttpClient::Options { QList<QSslCertificate> { identity->certificate } });
    QtHttpClient untrusting;
    auto plain = serve(always(Server::status(200)));
    const QByteArray target = plain->url("/plain").toEncoded();
    auto secure = serve(always(Server::redirect(302, target)), identity);

    const Fetched refused = fetch(untrusting, secure->url());
    EXPECT_EQ(refused.error(), NSURLErrorSecureConnectionFailed);
    EXPECT_TRUE(refused.outcome && !refused.status());
    EXPECT_EQ(plain->requestsSeen(), 0);

    EXPECT_EQ(fetch(trusting, secure->url()).outcome, (HttpOutcome { std::nullopt, 200 }));
    EXPECT_EQ(plain->requestsSeen(), 1);
}

TEST(AdBlockTesterOverTheNetwork, ScoresLoopbackHostsThroughTheRealClientAndMainQueue)
{
    QtHttpClient client;
    QtMainQueue mainQueue(QCoreApplication::instance());
    auto ok = serve(always(Server::status(200)));
    auto missing = serve(always(Server::status(404)));
    const QString reached = ok->url().toString(), blocked = missing->url().toString();
    auto tester = AdBlockTester::withTestDomainsForTesting(client, mainQueue, { reached, blocked });
    QSignalSpy scoreChanged(tester.get(), &AdBlockTester::overallScoreChanged);

    tester->runTest();

    ASSERT_TRUE(scoreChanged.wait(10'000));
    EXPECT_EQ(tester->results(), (std::map<QString, bool> { { reached, false }, { blocked, true } }));
    EXPECT_EQ(tester->overallScore(), 50);
}

} // namespace
} // namespace brivanta
