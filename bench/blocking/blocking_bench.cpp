// How long a blocking test run takes against ten loopback hosts that answer 200 after 50 to 500 ms,
// compared with the slowest host and with curl fetching the same URLs in parallel; and how long a run
// takes against hosts that never finish (endless body, trickled headers, silence, a redirect loop).
//
// The hosts are plain HTTP on 127.0.0.1, served from a thread of their own; the tester, the real Qt
// client and the Qt main queue run as in the app. TLS is left out on purpose: it costs the same for
// both clients and would only add noise to what is measured here (our scheduling and hand-offs).
//
// Prints one "name: value" line per figure.

#include "platform/qt/qt_http_client.h"
#include "platform/qt/qt_main_queue.h"
#include "platform/qt_http/loopback_http_server.h"
#include "tester/ad_block_tester.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

using brivanta::AdBlockTester;
using brivanta::QtHttpClient;
using brivanta::QtMainQueue;
using brivanta::testing::LoopbackHttpServer;
using Answer = LoopbackHttpServer::Answer;
using namespace std::chrono_literals;

constexpr int runs = 7;

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

void print(const char *name, double value)
{
    std::printf("%s: %.4f\n", name, value);
    std::fflush(stdout);
}

// The hosts live on their own thread so that neither client competes with them for an event loop.
class HostThread
{
public:
    HostThread() { m_thread.start(); }
    ~HostThread()
    {
        for (LoopbackHttpServer *server : m_servers)
            QMetaObject::invokeMethod(
                server, [server] { delete server; }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }

    QUrl start(Answer answer)
    {
        auto *server = new LoopbackHttpServer([answer](const QByteArray &) { return answer; });
        server->moveToThread(&m_thread);
        bool listening = false;
        QMetaObject::invokeMethod(
            server, [&] { listening = server->listen(); }, Qt::BlockingQueuedConnection);
        if (!listening)
            qFatal("cannot listen on 127.0.0.1");
        m_servers.push_back(server);
        return server->url();
    }

private:
    QThread m_thread;
    std::vector<LoopbackHttpServer *> m_servers;
};

// Wall time from runTest until the run publishes its score.
double timeRun(AdBlockTester &tester, qint64 expectedScore)
{
    QEventLoop loop;
    QObject::connect(&tester, &AdBlockTester::overallScoreChanged, &loop, &QEventLoop::quit);
    QTimer::singleShot(30s, &loop, [&] { qFatal("a run did not end within 30 s"); });
    QElapsedTimer elapsed;
    elapsed.start();
    tester.runTest();
    loop.exec();
    const double seconds = elapsed.nsecsElapsed() / 1e9;
    if (tester.overallScore() != expectedScore)
        qFatal("run scored %lld, expected %lld", tester.overallScore(), expectedScore);
    return seconds;
}

double timeCurl(const QStringList &urls)
{
    QStringList arguments { QStringLiteral("--parallel"), QStringLiteral("--parallel-max"),
        QStringLiteral("10"), QStringLiteral("--silent"), QStringLiteral("--fail") };
    for (const QString &url : urls)
        arguments << url << QStringLiteral("--output") << QStringLiteral("/dev/null");
    QProcess curl;
    QElapsedTimer elapsed;
    elapsed.start();
    curl.start(QStringLiteral("curl"), arguments);
    if (!curl.waitForFinished(30'000) || curl.exitStatus() != QProcess::NormalExit || curl.exitCode() != 0)
        qFatal("curl failed: %s", curl.readAllStandardError().constData());
    return elapsed.nsecsElapsed() / 1e9;
}

double timeSingleHostRun(QtHttpClient &client, QtMainQueue &mainQueue, const QUrl &url)
{
    auto tester = AdBlockTester::withTestDomainsForTesting(client, mainQueue, { url.toString() });
    return timeRun(*tester, 100);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    HostThread hosts;

    // 50, 100, ... 500 ms; a fresh connection per request, as for curl.
    QStringList urls;
    std::vector<std::chrono::milliseconds> delays;
    for (int i = 1; i <= 10; ++i) {
        delays.push_back(i * 50ms);
        urls << hosts
                    .start({ Answer::Kind::Respond,
                        "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nConnection: close\r\n\r\nok", i * 50ms })
                    .toString();
    }
    const double slowest = std::max_element(delays.begin(), delays.end())->count() / 1000.0;

    QtHttpClient client;
    QtMainQueue mainQueue(&app);
    auto tester = AdBlockTester::withTestDomainsForTesting(client, mainQueue, urls);

    print("blocking_test_first_run_seconds", timeRun(*tester, 0));
    std::vector<double> ours;
    std::vector<double> curl;
    for (int i = 0; i < runs; ++i) {
        ours.push_back(timeRun(*tester, 0));
        curl.push_back(timeCurl(urls));
    }
    print("slowest_server_delay_seconds", slowest);
    print("blocking_test_run_seconds_median", median(ours));
    print("curl_parallel_run_seconds_median", median(curl));
    print("blocking_test_vs_slowest_ratio", median(ours) / slowest);
    print("blocking_test_vs_curl_ratio", median(ours) / median(curl));
    std::printf("runs: %d (after one warm-up run of ours)\n", runs);

    const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n\r\n";
    print("endless_body_run_seconds", [&] {
        auto endless = AdBlockTester::withTestDomainsForTesting(
            client, mainQueue, { hosts.start({ Answer::Kind::EndlessBody, head }).toString() });
        return timeRun(*endless, 0);
    }());
    print("slowloris_run_seconds",
        timeSingleHostRun(client, mainQueue, hosts.start({ Answer::Kind::Trickle, head, 0ms, 1s })));
    print("silent_host_run_seconds",
        timeSingleHostRun(client, mainQueue, hosts.start({ Answer::Kind::Silent, {} })));
    print("redirect_loop_run_seconds",
        timeSingleHostRun(client, mainQueue, hosts.start(LoopbackHttpServer::redirect(302, "/again"))));
    return 0;
}
