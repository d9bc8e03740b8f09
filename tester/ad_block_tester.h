#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <map>
#include <memory>

namespace brivanta {

class HttpClient;
class MainQueue;

// Probes a fixed list of advertising hosts and publishes, per entry, whether it was blocked, and the
// blocking score of the last finished run. Lives on the main thread; every change is made there.
//
// The screen owns the tester, so in-flight requests cannot keep it alive: they hold a QPointer to it
// and, once it is gone, still count into their run but store and publish nothing. The HTTP client and
// the main queue must outlive every request the tester started.
class AdBlockTester : public QObject
{
    Q_OBJECT

public:
    AdBlockTester(HttpClient &httpClient, MainQueue &mainQueue, QObject *parent = nullptr);

    // Tests and benchmarks only: the same tester probing a list of their own.
    static std::unique_ptr<AdBlockTester> withTestDomainsForTesting(
        HttpClient &httpClient, MainQueue &mainQueue, QStringList testDomains, QObject *parent = nullptr);

    // blocked / total * 100 in double precision, truncated toward zero. Fatal when the result is not
    // finite or does not fit in 64 bits (0 of 0 among them).
    static qint64 blockingScore(qint64 blocked, qint64 total);

    // Test entry text (scheme included) -> blocked.
    [[nodiscard]] const std::map<QString, bool> &results() const { return m_results; }
    [[nodiscard]] qint64 overallScore() const { return m_overallScore; }
    [[nodiscard]] const QStringList &testDomains() const { return m_testDomains; }
    // Whether a run has not published its score yet.
    [[nodiscard]] bool isRunning() const { return m_runsInFlight > 0; }

    // Starts one request per entry and returns at once. Runs may overlap: each counts its own outcomes
    // and publishes its own score when its last outcome is in.
    void runTest();

signals:
    void resultsChanged();
    void overallScoreChanged();
    void isRunningChanged();

private:
    AdBlockTester(HttpClient &httpClient, MainQueue &mainQueue, QStringList testDomains, QObject *parent);

    void storeResult(const QString &entry, bool blocked);
    void publishScore(qint64 score);
    void setRunsInFlight(int count);

    HttpClient &m_httpClient;
    MainQueue &m_mainQueue;
    std::map<QString, bool> m_results;
    qint64 m_overallScore = 0;
    int m_runsInFlight = 0;
    const QStringList m_testDomains;
};

} // namespace brivanta
