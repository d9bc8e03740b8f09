#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <map>

namespace brivanta {

class HttpClient;
class MainQueue;

// Probes a fixed list of advertising hosts and publishes, per entry, whether it was blocked, and the
// blocking score of the last finished run. Lives on the main thread; every change is made there.
class AdBlockTester : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QVariantMap results READ resultsForQml NOTIFY resultsChanged)
    Q_PROPERTY(qint64 overallScore READ overallScore NOTIFY overallScoreChanged)

public:
    AdBlockTester(HttpClient &httpClient, MainQueue &mainQueue, QObject *parent = nullptr);

    // Test entry text (scheme included) -> blocked.
    const std::map<QString, bool> &results() const { return m_results; }
    qint64 overallScore() const { return m_overallScore; }
    const QStringList &testDomains() const { return m_testDomains; }

    Q_INVOKABLE void runTest();

signals:
    void resultsChanged();
    void overallScoreChanged();

private:
    QVariantMap resultsForQml() const;

    HttpClient &m_httpClient;
    MainQueue &m_mainQueue;
    std::map<QString, bool> m_results;
    qint64 m_overallScore = 0;
    const QStringList m_testDomains;
};

} // namespace brivanta
