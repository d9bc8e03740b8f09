#include "forwarder/bootstrap_resolver.h"

#include "forwarder/dns_message.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QtEndian>
#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace brivanta {

namespace {

constexpr std::chrono::seconds minimumTtl { 60 };
constexpr std::chrono::seconds maximumTtl { 86400 };

} // namespace

sockaddr_storage toSockaddr(const HostPort &where, socklen_t &length)
{
    sockaddr_storage storage {};
    if (where.address.protocol() == QAbstractSocket::IPv6Protocol) {
        auto *in6 = reinterpret_cast<sockaddr_in6 *>(&storage);
        in6->sin6_family = AF_INET6;
        in6->sin6_port = htons(where.port);
        const Q_IPV6ADDR bytes = where.address.toIPv6Address();
        std::memcpy(&in6->sin6_addr, bytes.c, sizeof bytes.c);
        in6->sin6_scope_id = where.address.scopeId().toUInt();
        length = sizeof *in6;
    } else {
        auto *in = reinterpret_cast<sockaddr_in *>(&storage);
        in->sin_family = AF_INET;
        in->sin_port = htons(where.port);
        in->sin_addr.s_addr = htonl(where.address.toIPv4Address());
        length = sizeof *in;
    }
    return storage;
}

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

BootstrapResolver::~BootstrapResolver()
{
    dropSocket();
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
        if (m_completion && m_fd < 0)
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
    socklen_t length = 0;
    const sockaddr_storage address = toSockaddr(server, length);
    // A connected socket of our own rather than QUdpSocket: only its peer's answers arrive, and an ICMP
    // "port unreachable" shows as ECONNREFUSED, so a server that is not there is skipped at once.
    m_fd = ::socket(address.ss_family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (m_fd < 0 || ::connect(m_fd, reinterpret_cast<const sockaddr *>(&address), length) != 0) {
        askNext();
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &BootstrapResolver::readAnswers);
    const quint16 types[2] = { dns::RRType::A, dns::RRType::AAAA };
    m_pending = 2;
    for (int i = 0; i < 2; ++i) {
        m_ids[i] = quint16(QRandomGenerator::system()->generate());
        const QByteArray query = dns::makeQuery(m_ids[i], m_name, types[i]);
        // The refusal of the first can already show here, and is then not reported again.
        if (::send(m_fd, query.constData(), size_t(query.size()), MSG_NOSIGNAL) < 0 && errno != EAGAIN) {
            askNext();
            return;
        }
    }
    m_timer.start(m_timeout);
}

void BootstrapResolver::readAnswers()
{
    char buffer[4096];
    while (m_fd >= 0) {
        const ssize_t n = ::recv(m_fd, buffer, sizeof buffer, 0);
        if (n < 0) {
            if (errno == ECONNREFUSED && m_partial.addresses.empty())
                askNext();
            return;
        }
        const QByteArray datagram = QByteArray::fromRawData(buffer, qsizetype(n));
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
    // It may be the notifier whose signal is being handled.
    if (m_notifier) {
        m_notifier->setEnabled(false);
        m_notifier->disconnect(this);
        m_notifier.release()->deleteLater();
    }
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
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
