#include "fakes/manual_main_queue.h"
#include "tester/ad_block_tester.h"
#include "tester/fake_http_client.h"

#include <QSignalSpy>
#include <array>
#include <gtest/gtest.h>
#include <limits>

namespace brivanta {
namespace {

using namespace std::chrono_literals;
using testing::FakeHttpClient;
using testing::httpStatus;
using testing::ManualMainQueue;
using testing::transportError;

std::map<QString, bool> resultsOf(std::initializer_list<std::pair<const char *, bool>> entries)
{
    std::map<QString, bool> map;
    for (const auto &[key, blocked] : entries)
        map.emplace(QString::fromUtf8(key), blocked);
    return map;
}

QStringList numberedDomains(int count)
{
    QStringList list;
    for (int i = 0; i < count; ++i)
        list << QStringLiteral("https://host%1.test").arg(i, 3, 10, QLatin1Char('0'));
    return list;
}

class AdBlockTesterTest : public ::testing::Test
{
protected:
    std::unique_ptr<AdBlockTester> makeTester(QStringList domains)
    {
        return AdBlockTester::withTestDomainsForTesting(http, mainQueue, std::move(domains));
    }

    FakeHttpClient http;
    ManualMainQueue mainQueue;
};

TEST_F(AdBlockTesterTest, StartsOneRequestPerEntryInListOrderAndReturnsBeforeAnyAnswer)
{
    AdBlockTester tester(http, mainQueue);
    tester.runTest();

    const std::vector<HttpRequest> requests = http.requests();
    ASSERT_EQ(requests.size(), 10u);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(requests[i].url, QUrl(tester.testDomains()[qsizetype(i)]));
        EXPECT_EQ(requests[i].timeoutInterval, 5s);
        EXPECT_EQ(requests[i].cachePolicy, HttpRequest::CachePolicy::UseProtocolCachePolicy);
    }
    EXPECT_TRUE(tester.results().empty());
    EXPECT_EQ(mainQueue.pending(), 0u);
}

TEST_F(AdBlockTesterTest, OutcomesReachResultsOnlyThroughTheMainQueueOneAtATime)
{
    auto tester = makeTester({ QStringLiteral("https://a.test"), QStringLiteral("https://b.test") });
    QSignalSpy resultsChanged(tester.get(), &AdBlockTester::resultsChanged);
    QSignalSpy scoreChanged(tester.get(), &AdBlockTester::overallScoreChanged);
    tester->runTest();
    EXPECT_EQ(resultsChanged.count(), 1);

    http.completeOnOtherThread(QUrl(QStringLiteral("https://b.test")), httpStatus(200));
    EXPECT_TRUE(tester->results().empty());
    ASSERT_TRUE(mainQueue.runOne());
    EXPECT_EQ(tester->results(), resultsOf({ { "https://b.test", false } }));
    EXPECT_EQ(resultsChanged.count(), 2);

    http.completeOnOtherThread(
        QUrl(QStringLiteral("https://a.test")), transportError(NSURLErrorCannotFindHost));
    ASSERT_TRUE(mainQueue.runOne());
    EXPECT_EQ(tester->results(), resultsOf({ { "https://a.test", true }, { "https://b.test", false } }));
    EXPECT_EQ(resultsChanged.count(), 3);

    // The score comes as a task of its own, after the last outcome.
    EXPECT_EQ(scoreChanged.count(), 0);
    EXPECT_EQ(mainQueue.runAll(), 1);
    EXPECT_EQ(scoreChanged.count(), 1);
    EXPECT_EQ(tester->overallScore(), 50);
}

TEST_F(AdBlockTesterTest, OnlyAnErrorFree200GetsThrough)
{
    const PlatformError timedOut { QString::fromLatin1(nsURLErrorDomain), NSURLErrorTimedOut,
        QStringLiteral("t") };
    const std::pair<HttpOutcome, bool> cases[] = { { httpStatus(200), false }, { httpStatus(204), true },
        { httpStatus(404), true }, { { std::nullopt, std::nullopt }, true }, { { timedOut, 200 }, true } };
    for (const auto &[outcome, blocked] : cases) {
        auto tester = makeTester({ QStringLiteral("https://a.test") });
        tester->runTest();
        http.completeOnOtherThread(QUrl(QStringLiteral("https://a.test")), outcome);
        mainQueue.runAll();

        EXPECT_EQ(tester->results(), resultsOf({ { "https://a.test", blocked } }))
            << outcome.statusCode.value_or(0);
        EXPECT_EQ(tester->overallScore(), blocked ? 100 : 0);
    }
}

TEST_F(AdBlockTesterTest, StartingARunClearsResultsAtOnceButKeepsTheOldScoreUntilItFinishes)
{
    auto tester = makeTester({ QStringLiteral("https://a.test"), QStringLiteral("https://b.test") });
    tester->runTest();
    http.completeAll([](const QUrl &) { return httpStatus(404); });
    mainQueue.runAll();
    ASSERT_EQ(tester->overallScore(), 100);

    QSignalSpy resultsChanged(tester.get(), &AdBlockTester::resultsChanged);
    QSignalSpy scoreChanged(tester.get(), &AdBlockTester::overallScoreChanged);
    tester->runTest();
    EXPECT_TRUE(tester->results().empty());
    EXPECT_EQ(resultsChanged.count(), 1);
    EXPECT_EQ(tester->overallScore(), 100);

    http.completeOnOtherThread(QUrl(QStringLiteral("https://a.test")), httpStatus(200));
    mainQueue.runAll();
    EXPECT_EQ(tester->overallScore(), 100);
    EXPECT_EQ(scoreChanged.count(), 0);

    http.completeOnOtherThread(QUrl(QStringLiteral("https://b.test")), httpStatus(200));
    mainQueue.runAll();
    EXPECT_EQ(tester->overallScore(), 0);
    EXPECT_EQ(scoreChanged.count(), 1);
}

// Results are keyed by the entry's text as written, not by the URL it parses to.
TEST_F(AdBlockTesterTest, EntriesThatDoNotParseAreSkippedButStayInTheTotal)
{
    auto tester = makeTester({
        QStringLiteral(""),
        QStringLiteral("https://AD.Example.TEST"),
        QStringLiteral("https://exa mple.com"),
        QStringLiteral("example.com"),
        QStringLiteral("https://"),
    });
    tester->runTest();

    ASSERT_EQ(http.requests().size(), 1u);
    EXPECT_EQ(http.requests()[0].url, QUrl(QStringLiteral("https://ad.example.test")));
    http.completeAll([](const QUrl &) { return transportError(NSURLErrorCannotFindHost); });
    mainQueue.runAll();

    EXPECT_EQ(tester->results(), resultsOf({ { "https://AD.Example.TEST", true } }));
    EXPECT_EQ(tester->overallScore(), 20);

    // A run with nothing to ask still publishes its score.
    auto nothing = makeTester({ QStringLiteral("not a url") });
    QSignalSpy scoreChanged(nothing.get(), &AdBlockTester::overallScoreChanged);
    nothing->runTest();
    mainQueue.runAll();
    EXPECT_EQ(scoreChanged.count(), 1);
    EXPECT_EQ(nothing->overallScore(), 0);
}

TEST_F(AdBlockTesterTest, OverlappingRunsEachCountTheirOwnOutcomesAndPublishTheirOwnScore)
{
    const QStringList domains = numberedDomains(10);
    auto tester = makeTester(domains);
    std::vector<qint64> published;
    QObject::connect(tester.get(), &AdBlockTester::overallScoreChanged,
        [&] { published.push_back(tester->overallScore()); });

    tester->runTest();
    // The first run's first three answers arrive before the second run starts.
    for (int i = 0; i < 3; ++i)
        http.completeOnOtherThread(QUrl(domains[i]), transportError(NSURLErrorTimedOut));
    mainQueue.runAll();
    tester->runTest();
    EXPECT_TRUE(tester->results().empty());

    // The rest of the first run: all blocked. Its late outcomes land in the shared results.
    for (int i = 3; i < 10; ++i)
        http.completeOnOtherThread(QUrl(domains[i]), transportError(NSURLErrorTimedOut));
    mainQueue.runAll();
    EXPECT_EQ(published, std::vector<qint64> { 100 });
    EXPECT_EQ(tester->results().size(), 7u);

    // The second run: two blocked.
    http.completeAll([&](const QUrl &url) {
        return url.host().endsWith(QLatin1String("1.test")) || url.host().endsWith(QLatin1String("2.test"))
            ? httpStatus(500)
            : httpStatus(200);
    });
    mainQueue.runAll();
    EXPECT_EQ(published, (std::vector<qint64> { 100, 20 }));
    EXPECT_EQ(tester->overallScore(), 20);
    EXPECT_EQ(tester->results().size(), 10u);
}

TEST_F(AdBlockTesterTest, TheRunThatDrainsLastLeavesItsScoreBehind)
{
    const QUrl url(QStringLiteral("https://a.test"));
    auto tester = makeTester({ url.toString() });
    std::vector<qint64> published;
    QObject::connect(tester.get(), &AdBlockTester::overallScoreChanged,
        [&] { published.push_back(tester->overallScore()); });
    tester->runTest();
    tester->runTest();

    // The second run is answered first and gets through; the first run times out later.
    http.completeNewestOnOtherThread(url, httpStatus(200));
    mainQueue.runAll();
    http.completeOnOtherThread(url, transportError(NSURLErrorTimedOut));
    mainQueue.runAll();

    EXPECT_EQ(published, (std::vector<qint64> { 0, 100 }));
    EXPECT_EQ(tester->overallScore(), 100);
    EXPECT_EQ(tester->results(), resultsOf({ { "https://a.test", true } }));
}

TEST_F(AdBlockTesterTest, AnEmptyListDividesZeroByZeroAndStops)
{
    EXPECT_DEATH(
        {
            auto tester = makeTester({});
            tester->runTest();
            mainQueue.runAll();
        },
        "");
}

TEST(AdBlockTesterScore, DividesMultipliesAndTruncatesInThatOrder)
{
    constexpr qint64 max = std::numeric_limits<qint64>::max();
    const std::array<qint64, 3> cases[] = { { 2, 3, 66 }, { 29, 100, 28 }, { 0, 10, 0 }, { 10, 10, 100 },
        { 3, 10, 30 }, { 1, 7, 14 }, { max / 1000, max / 10, 1 } };
    for (const auto &[blocked, total, score] : cases)
        EXPECT_EQ(AdBlockTester::blockingScore(blocked, total), score) << blocked << " of " << total;
}

TEST(AdBlockTesterScoreDeathTest, AScoreOutside64BitsStops)
{
    EXPECT_DEATH(AdBlockTester::blockingScore(std::numeric_limits<qint64>::max(), 1), "");
}

TEST_F(AdBlockTesterTest, OutcomesAfterTheTesterIsGoneTouchNothing)
{
    auto tester = makeTester({ QStringLiteral("https://a.test"), QStringLiteral("https://b.test") });
    tester->runTest();
    http.completeOnOtherThread(QUrl(QStringLiteral("https://a.test")), httpStatus(200));
    tester.reset();
    http.completeOnOtherThread(QUrl(QStringLiteral("https://b.test")), httpStatus(200));
    EXPECT_EQ(mainQueue.runAll(), 3);
}

} // namespace
} // namespace brivanta
