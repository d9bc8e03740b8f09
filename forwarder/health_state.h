#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

namespace brivanta {

// What the forwarder tells the world about itself, in <state dir>/health.json (0644, replaced atomically):
// its endpoint, when the upstream last answered or failed, counters, and the per-boot canary secret.
// Written at start, when the upstream's state or error changes, otherwise at most every five seconds.
// Main thread only.
class HealthState : public QObject
{
    Q_OBJECT

public:
    struct Counters
    {
        quint64 queries = 0;
        quint64 cacheHits = 0;
        quint64 upstreamQueries = 0;
        quint64 upstreamFailures = 0;
        quint64 servfails = 0;
    };

    HealthState(QString stateDir, QString endpoint, QString listen, QObject *parent = nullptr);

    QString path() const;
    QByteArray canarySecret() const { return m_secret; }
    // Whether the upstream answered within the last `ms` milliseconds.
    bool upstreamAnsweredWithin(qint64 ms) const;

    void upstreamSucceeded();
    void upstreamFailed(const QString &error);
    Counters &counters()
    {
        scheduleWrite();
        return m_counters;
    }
    bool writeNow();

private:
    void scheduleWrite();

    QString m_dir;
    QString m_endpoint;
    QString m_listen;
    QByteArray m_secret;
    qint64 m_startedAtMs = 0;
    qint64 m_lastSuccessMs = 0;
    qint64 m_lastFailureMs = 0;
    QString m_lastError;
    bool m_healthy = false;
    QElapsedTimer m_sinceSuccess;
    Counters m_counters;
    QTimer m_writeTimer;
};

} // namespace brivanta
