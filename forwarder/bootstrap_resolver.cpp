#include "forwarder/bootstrap_resolver.h"

#include "forwarder/dns_message.h"

#include <QNetworkDatagram>
#include <QRandomGenerator>
#include <QStringList>
#include <QtEndian>
#include <algorithm>

namespace brivanta {

namespace {

constexpr std::chrono::seconds minimumTtl { 60 };
constexpr std::chrono::seconds maximumTtl { 86400 };

} // namespace

QString toString(const HostPort &server)
{
    const QString address = server.address.protocol() == QAbstractSocket::IPv6Protocol
        ? QLatin1Char('[') + server.address.toString() + QLatin1Char(']')
        : server.address.toString();
    return server.port == 53 ? server.address.toString()
                             : address + QLatin1Char(':') + QString::number(server.port);
}

BootstrapResolver::BootstrapResolver(std::chrono::milliseconds perServerTimeout, QObject *parent)
    : QObject(parent)
    , m_timeout(perServerTimeout)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        // Whatever one family brought is enough; a silent server is skipped.
        if (!m_partial.addresses.empty())
            finish(std::move(m_partial));
        else
            askNext();
    });
}

void BootstrapResolver::resolve(const QString &host, std::vector<HostPort> servers, Completion completion)
{
    m_host = host;
    m_name = dns::nameFromText(host.toLatin1()).value_or(QByteArray());
    m_servers = std::move(servers);
    m_next = 0;
    m_completion = std::move(completion);
    m_timer.stop();
    dropSocket();
    // Answered on the next turn of the loop, even when there is nothing to ask.
    QTimer::singleShot(0, this, [this] {
        if (m_completion && !m_socket)
            askNext();
    });
}

void BootstrapResolver::askNext()
{
    m_timer.stop();
    dropSocket();
    m_partial = Result {};
    if (m_name.isEmpty() || m_next >= m_servers.size()) {
        QStringList tried;
        for (const HostPort &server : m_servers)
            tried << toString(server);
        finish(Result { {}, {},
            tried.isEmpty() ? QStringLiteral("no server to resolve %1 through").arg(m_host)
                            : QStringLiteral("could not resolve %1 through %2")
                                  .arg(m_host, tried.join(QLatin1String(", "))) });
        return;
    }
    const HostPort server = m_servers[m_next++];
    m_socket = std::make_unique<QUdpSocket>();
    connect(m_socket.get(), &QUdpSocket::readyRead, this, &BootstrapResolver::readAnswers);
    // "Connection refused" (ICMP port unreachable): no need to wait for the timeout. Queued, since the
    // socket goes away in askNext().
    connect(
        m_socket.get(), &QUdpSocket::errorOccurred, this,
        [this, asked = m_next](QAbstractSocket::SocketError error) {
            if (m_socket && asked == m_next && error == QAbstractSocket::ConnectionRefusedError
                && m_partial.addresses.empty())
                askNext();
        },
        Qt::QueuedConnection);
    m_socket->connectToHost(server.address, server.port);
    const quint16 types[2] = { dns::RRType::A, dns::RRType::AAAA };
    m_pending = 2;
    for (int i = 0; i < 2; ++i) {
        m_ids[i] = quint16(QRandomGenerator::system()->generate());
        m_socket->write(dns::makeQuery(m_ids[i], m_name, types[i]));
    }
    m_timer.start(m_timeout);
}

void BootstrapResolver::readAnswers()
{
    while (m_socket && m_socket->hasPendingDatagrams()) {
        const QByteArray datagram = m_socket->receiveDatagram(4096).data();
        const quint16 id = dns::messageId(datagram);
        const int which = id == m_ids[0] ? 0 : id == m_ids[1] ? 1 : -1;
        const auto info = dns::inspectResponse(datagram);
        if (which < 0 || !info || info->question.name != m_name)
            continue; // not ours: a late answer or a spoofing attempt
        m_ids[which] = quint16(m_ids[which] + 1); // each answer counts once
        if (const auto records = dns::answerRecords(datagram)) {
            for (const dns::ResourceRecord &record : *records) {
                const bool v4 = record.type == dns::RRType::A && record.rdata.size() == 4;
                const bool v6 = record.type == dns::RRType::AAAA && record.rdata.size() == 16;
                if (!v4 && !v6)
                    continue;
                const QHostAddress address = v4
                    ? QHostAddress(qFromBigEndian<quint32>(record.rdata.constData()))
                    : QHostAddress(reinterpret_cast<const quint8 *>(record.rdata.constData()));
                m_partial.addresses.push_back(address);
                const std::chrono::seconds ttl { record.ttl };
                m_partial.ttl = m_partial.ttl.count() == 0 ? ttl : std::min(m_partial.ttl, ttl);
            }
        }
        if (--m_pending == 0) {
            if (m_partial.addresses.empty()) {
                askNext();
            } else {
                finish(std::move(m_partial));
            }
            return;
        }
    }
}

void BootstrapResolver::dropSocket()
{
    // It may be the socket whose signal is being handled.
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket.release()->deleteLater();
    }
}

void BootstrapResolver::finish(Result result)
{
    m_timer.stop();
    dropSocket();
    if (!result.addresses.empty()) {
        // IPv4 first: it is what works on more networks.
        std::stable_partition(result.addresses.begin(), result.addresses.end(),
            [](const QHostAddress &a) { return a.protocol() == QAbstractSocket::IPv4Protocol; });
        result.ttl = std::clamp(result.ttl, minimumTtl, maximumTtl);
    }
    Completion completion = std::move(m_completion);
    m_completion = nullptr;
    if (completion)
        completion(std::move(result));
}

} // namespace brivanta
