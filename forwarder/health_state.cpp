#include "forwarder/health_state.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QSaveFile>

Q_LOGGING_CATEGORY(lcHealth, "brivanta.dohd.health", QtWarningMsg)

namespace brivanta {

namespace {

constexpr int secretBytes = 16;
constexpr std::chrono::seconds writeInterval { 5 };

qint64 nowMs()
{
    return QDateTime::currentMSecsSinceEpoch();
}

} // namespace

HealthState::HealthState(QString stateDir, QString endpoint, QString listen, QObject *parent)
    : QObject(parent)
    , m_dir(std::move(stateDir))
    , m_endpoint(std::move(endpoint))
    , m_listen(std::move(listen))
    , m_startedAtMs(nowMs())
{
    // The secret lives as long as the state directory (on /run: one boot), across restarts.
    QFile previous(path());
    if (previous.open(QIODevice::ReadOnly)) {
        const QByteArray hex = QJsonDocument::fromJson(previous.readAll())
                                   .object()
                                   .value(QLatin1String("canarySecret"))
                                   .toString()
                                   .toLatin1();
        const QByteArray secret = QByteArray::fromHex(hex);
        if (secret.size() == secretBytes && secret.toHex() == hex)
            m_secret = secret;
    }
    if (m_secret.isEmpty()) {
        m_secret.resize(secretBytes);
        QRandomGenerator::system()->fillRange(reinterpret_cast<quint32 *>(m_secret.data()), secretBytes / 4);
    }
    m_writeTimer.setSingleShot(true);
    connect(&m_writeTimer, &QTimer::timeout, this, &HealthState::writeNow);
}

QString HealthState::path() const
{
    return QDir(m_dir).filePath(QStringLiteral("health.json"));
}

bool HealthState::upstreamAnsweredWithin(qint64 ms) const
{
    return m_lastSuccessMs != 0 && m_sinceSuccess.isValid() && m_sinceSuccess.elapsed() <= ms;
}

void HealthState::upstreamSucceeded()
{
    m_lastSuccessMs = nowMs();
    m_sinceSuccess.start();
    if (!m_healthy) {
        m_healthy = true;
        writeNow();
    } else {
        scheduleWrite();
    }
}

void HealthState::upstreamFailed(const QString &error)
{
    m_lastFailureMs = nowMs();
    ++m_counters.upstreamFailures;
    if (m_healthy || error != m_lastError) {
        m_healthy = false;
        m_lastError = error;
        writeNow();
    } else {
        scheduleWrite();
    }
}

void HealthState::scheduleWrite()
{
    if (!m_writeTimer.isActive())
        m_writeTimer.start(writeInterval);
}

bool HealthState::writeNow()
{
    m_writeTimer.stop();
    const QJsonObject object {
        { QStringLiteral("version"), 1 },
        { QStringLiteral("pid"), QCoreApplication::applicationPid() },
        { QStringLiteral("endpoint"), m_endpoint },
        { QStringLiteral("listen"), m_listen },
        { QStringLiteral("startedAtMs"), m_startedAtMs },
        { QStringLiteral("canarySecret"), QString::fromLatin1(m_secret.toHex()) },
        { QStringLiteral("lastSuccessMs"), m_lastSuccessMs },
        { QStringLiteral("lastFailureMs"), m_lastFailureMs },
        { QStringLiteral("lastError"), m_lastError },
        { QStringLiteral("queries"), qint64(m_counters.queries) },
        { QStringLiteral("cacheHits"), qint64(m_counters.cacheHits) },
        { QStringLiteral("upstreamQueries"), qint64(m_counters.upstreamQueries) },
        { QStringLiteral("upstreamFailures"), qint64(m_counters.upstreamFailures) },
        { QStringLiteral("servfails"), qint64(m_counters.servfails) },
    };
    QSaveFile file(path());
    if (!file.open(QIODevice::WriteOnly)) {
        qCWarning(lcHealth) << "cannot write" << path() << file.errorString();
        return false;
    }
    file.setPermissions(
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther);
    file.write(QJsonDocument(object).toJson(QJsonDocument::Compact));
    file.write("\n");
    return file.commit();
}

} // namespace brivanta
