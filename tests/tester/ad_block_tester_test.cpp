#include "fakes/manual_main_queue.h"
#include "tester/ad_block_tester.h"
#include "tester/fake_http_client.h"

#include <QSignalSpy>
#include <array>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using namespace testing;

using Results = std::map<QString, bool>;
const QUrl a(QStringLiteral("https://a.test"));
const QUrl b(QStringLiteral("https://b.test"));

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
using AdBlockTesterDeathTest = AdBlockTesterTest;

TEST_F(AdBlockTesterTest, StartsOneRequestPerEntryInListOrderWithAFiveSecondTimeout)
{
    AdBlockTester tester(http, mainQueue);
    tester.runTest();
    ASSERT_EQ(http.requests().size(), 10u);
    for (qsizetype i = 0; i < 10; ++i) {
        EXPECT_EQ(http.requests()[i].url, QUrl(tester.testDomains()[i]));
        EXPECT_EQ(http.requests()[i].timeoutInterval, std::chrono::seconds(5));
    }
    EXPECT_EQ(mainQueue.pending(), 0u);
}

// Each outcome reaches the results as a main-queue task of its own; the score comes after the last.
TEST_F(AdBlockTesterTest, OnlyAnErrorFree200GetsThroughAndEachOutcomeArrivesThroughTheMainQueue)
{
    const PlatformError timedOut { QString::fromLatin1(nsURLErrorDomain), NSURLErrorTimedOut, {} };
    const std::pair<HttpOutcome, bool> outcomes[] = { { httpStatus(200), false }, { httpStatus(204), true },
        { httpStatus(404), true }, { { std::nullopt, std::nullopt }, true }, { { timedOut, 200 }, true } };
    QStringList domains;
    Results expected;
    for (const auto &[outcome, blocked] : outcomes)
        expected[domains.emplace_back(QStringLiteral("https://%1.test").arg(domains.size()))] = blocked;
    auto tester = makeTester(domains);
    QSignalSpy resultsChanged(tester.get(), &AdBlockTester::resultsChanged);
    QSignalSpy scoreChanged(tester.get(), &AdBlockTester::overallScoreChanged);
    tester->runTest();
    for (qsizetype i = 0; i < domains.size(); ++i) {
        http.completeOnOtherThread(QUrl(domains[i]), outcomes[i].first);
        EXPECT_EQ(tester->results().size(), std::size_t(i));
        ASSERT_TRUE(mainQueue.runOne());
    }
    EXPECT_EQ(tester->results(), expected);
    EXPECT_EQ(resultsChanged.count(), 6);
    EXPECT_EQ(scoreChanged.count(), 0);
    EXPECT_EQ(mainQueue.runAll(), 1);
    EXPECT_EQ(tester->overallScore(), 80);
}

// The old score stays until a run finishes; of two overlapping runs each counts only its own outcomes,
// and the one that finishes last leaves its score.
TEST_F(AdBlockTesterTest, EachRunClearsResultsAtOnceAndPublishesItsOwnScoreWhenItFinishes)
{
    auto tester = makeTester({ a.toString(), b.toString() });
    tester->runTest();
    http.completeAll([](const QUrl &) { return httpStatus(404); });
    mainQueue.runAll();
    std::vector<qint64> published;
    QObject::connect(tester.get(), &AdBlockTester::overallScoreChanged,
        [&] { published.push_back(tester->overallScore()); });

    tester->runTest();
    EXPECT_TRUE(tester->results().empty());
    tester->runTest();
    // The second run is answered first and gets through; the first run times out later.
    http.completeOnOtherThread(a, httpStatus(200), /*newest=*/true);
    mainQueue.runAll();
    EXPECT_EQ(tester->overallScore(), 100);
    http.completeOnOtherThread(b, httpStatus(200), /*newest=*/true);
    http.completeAll([](const QUrl &) { return transportError(NSURLErrorTimedOut); });
    mainQueue.runAll();
    EXPECT_EQ(published, (std::vector<qint64> { 0, 100 }));
    EXPECT_EQ(tester->results(), (Results { { a.toString(), true }, { b.toString(), true } }));
}

// Results are keyed by the entry's text as written, not by the URL it parses to.
TEST_F(AdBlockTesterTest, EntriesThatDoNotParseAreSkippedButStayInTheTotal)
{
    auto tester = makeTester({ {}, QStringLiteral("https://AD.Example.TEST"),
        QStringLiteral("https://exa mple.com"), QStringLiteral("example.com"), QStringLiteral("https://") });
    tester->runTest();
    ASSERT_EQ(http.requests().size(), 1u);
    EXPECT_EQ(http.requests()[0].url, QUrl(QStringLiteral("https://ad.example.test")));
    http.completeAll([](const QUrl &) { return transportError(NSURLErrorCannotFindHost); });
    mainQueue.runAll();
    EXPECT_EQ(tester->results(), (Results { { QStringLiteral("https://AD.Example.TEST"), true } }));
    EXPECT_EQ(tester->overallScore(), 20);

    // A run with nothing to ask still publishes its score.
    auto nothing = makeTester({ QStringLiteral("not a url") });
    QSignalSpy scoreChanged(nothing.get(), &AdBlockTester::overallScoreChanged);
    nothing->runTest();
    mainQueue.runAll();
    EXPECT_EQ(scoreChanged.count(), 1);
}

TEST(AdBlockTesterScore, DividesMultipliesAndTruncatesInThatOrder)
{
    const std::array<qint64, 3> cases[] = { { 2, 3, 66 }, { 29, 100, 28 }, { 0, 10, 0 }, { 10, 10, 100 },
        { 1, 7, 14 }, { INT64_MAX / 1000, INT64_MAX / 10, 1 } };
    for (const auto &[blocked, total, score] : cases)
        EXPECT_EQ(AdBlockTester::blockingScore(blocked, total), score) << blocked << " of " << total;
}

TEST_F(AdBlockTesterDeathTest, AnEmptyListOrAScoreOutside64BitsStops)
{
    EXPECT_DEATH(AdBlockTester::blockingScore(INT64_MAX, 1), "out of range");
    auto tester = makeTester({});
    EXPECT_DEATH(tester->runTest(); mainQueue.runAll(), "empty test run");
}

TEST_F(AdBlockTesterTest, OutcomesAfterTheTesterIsGoneTouchNothing)
{
    auto tester = makeTester({ a.toString(), b.toString() });
    tester->runTest();
    http.completeOnOtherThread(a, httpStatus(200));
    tester.reset();
    http.completeOnOtherThread(b, httpStatus(200));
    EXPECT_EQ(mainQueue.runAll(), 3);
}

} // namespace
} // namespace brivanta
