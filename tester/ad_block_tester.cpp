#include "tester/ad_block_tester.h"

#include "model/checked_int.h"
#include "model/fatal.h"
#include "platform/http_client.h"
#include "platform/main_queue.h"
#include "tester/dispatch_group.h"

#include <QPointer>
#include <QUrl>
#include <chrono>
#include <cmath>

namespace brivanta {

namespace {

using namespace std::chrono_literals;

// Ad exchanges, ad serving, retargeting, verification and content recommendation, plus two hosts that
// can never resolve (made-up top-level domains). Kept in ascending order.
QStringList productTestDomains()
{
    return {
        QStringLiteral("https://ad.doubleclick.net"),
        QStringLiteral("https://adnxs.com"),
        QStringLiteral("https://adsrvr.org"),
        QStringLiteral("https://criteo.com"),
        QStringLiteral("https://fyvmicebekm.fsl"),
        QStringLiteral("https://jqjnfzlvyspuqmdmx.xkq"),
        QStringLiteral("https://moatads.com"),
        QStringLiteral("https://outbrain.com"),
        QStringLiteral("https://pubmatic.com"),
        QStringLiteral("https://taboola.com"),
    };
}

// The phone platform's URL parser rejects what QUrl would accept leniently, and a probe needs a host.
bool parses(const QUrl &url)
{
    return url.isValid() && !url.scheme().isEmpty() && !url.host().isEmpty();
}

bool isBlocked(const HttpOutcome &outcome)
{
    return outcome.error || outcome.statusCode != 200;
}

} // namespace

AdBlockTester::AdBlockTester(HttpClient &httpClient, MainQueue &mainQueue, QObject *parent)
    : AdBlockTester(httpClient, mainQueue, productTestDomains(), parent)
{ }

AdBlockTester::AdBlockTester(
    HttpClient &httpClient, MainQueue &mainQueue, QStringList testDomains, QObject *parent)
    : QObject(parent)
    , m_httpClient(httpClient)
    , m_mainQueue(mainQueue)
    , m_testDomains(std::move(testDomains))
{ }

std::unique_ptr<AdBlockTester> AdBlockTester::withTestDomainsForTesting(
    HttpClient &httpClient, MainQueue &mainQueue, QStringList testDomains, QObject *parent)
{
    return std::unique_ptr<AdBlockTester>(
        new AdBlockTester(httpClient, mainQueue, std::move(testDomains), parent));
}

qint64 AdBlockTester::blockingScore(qint64 blocked, qint64 total)
{
    // The order of operations is part of the result: 2 of 3 gives 66 and 29 of 100 gives 28.
    const double score = static_cast<double>(blocked) / static_cast<double>(total) * 100.0;
    if (!std::isfinite(score))
        fatal("blocking score of an empty test run");
    const double truncated = std::trunc(score);
    if (truncated < -0x1p63 || truncated >= 0x1p63)
        fatal("blocking score out of range");
    return static_cast<qint64>(truncated);
}

void AdBlockTester::runTest()
{
    // The old score stays published until this run's own score replaces it.
    m_results.clear();
    emit resultsChanged();
    setRunsInFlight(m_runsInFlight + 1);

    auto group = std::make_shared<DispatchGroup>();
    auto blockedCount = std::make_shared<qint64>(0);
    const QPointer<AdBlockTester> self(this);
    MainQueue *mainQueue = &m_mainQueue;

    for (const QString &entry : m_testDomains) {
        const QUrl url(entry, QUrl::StrictMode);
        if (!parses(url))
            continue;
        group->enter();
        HttpRequest request { url, HttpRequest::CachePolicy::UseProtocolCachePolicy, 60s };
        request.timeoutInterval = 5s;
        m_httpClient.dataTask(request,
            [mainQueue, self = self, entry = entry, blockedCount = blockedCount, group = group](
                HttpOutcome outcome) mutable {
                // On the client's thread: hand everything to the main thread untouched. The captures move
                // along, so nothing of the run is released on the client's thread.
                mainQueue->async(
                    [self = std::move(self), entry = std::move(entry), blockedCount = std::move(blockedCount),
                        group = std::move(group), outcome = std::move(outcome)] {
                        const bool blocked = isBlocked(outcome);
                        if (self)
                            self->storeResult(entry, blocked);
                        if (blocked)
                            *blockedCount = checkedAdd(*blockedCount, qint64 { 1 });
                        group->leave();
                    });
            });
    }

    group->notify(m_mainQueue, [self, blockedCount, total = qint64(m_testDomains.size())] {
        // Entries that did not parse stay in the total.
        const qint64 score = blockingScore(*blockedCount, total);
        if (self) {
            self->publishScore(score);
            self->setRunsInFlight(self->m_runsInFlight - 1);
        }
    });
}

void AdBlockTester::storeResult(const QString &entry, bool blocked)
{
    m_results[entry] = blocked;
    emit resultsChanged();
}

void AdBlockTester::publishScore(qint64 score)
{
    m_overallScore = score;
    emit overallScoreChanged();
}

void AdBlockTester::setRunsInFlight(int count)
{
    const bool wasRunning = isRunning();
    m_runsInFlight = count;
    if (isRunning() != wasRunning)
        emit isRunningChanged();
}

} // namespace brivanta
