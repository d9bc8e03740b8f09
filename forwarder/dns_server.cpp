#include "forwarder/dns_server.h"

#include "forwarder/dns_message.h"
#include "forwarder/forwarder.h"

#include <QLoggingCategory>
#include <QTcpSocket>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcServer, "brivanta.dohd.server", QtWarningMsg)

namespace brivanta {

namespace {

constexpr int batchSize = 64;
constexpr int maxBatchesPerWakeUp = 8; // then let TCP and the upstream have a turn
constexpr int maxConnections = 256;
constexpr int maxPendingPerConnection = 128;
constexpr std::chrono::seconds tcpIdleTimeout { 10 };
constexpr int maxUdpMessage = 65535;

} // namespace

class DnsServer::TcpConnection : public QTcpSocket
{
public:
    TcpConnection(DnsServer &server, qintptr fd)
        : QTcpSocket(&server)
        , m_server(server)
    {
        setSocketDescriptor(fd);
        ++m_server.m_connections;
        m_idle.setSingleShot(true);
        m_idle.setInterval(tcpIdleTimeout);
        connect(&m_idle, &QTimer::timeout, this, [this] { abort(); });
        connect(this, &QTcpSocket::readyRead, this, &TcpConnection::readQueries);
        connect(this, &QTcpSocket::disconnected, this, &QObject::deleteLater);
        connect(this, &QTcpSocket::errorOccurred, this, &QObject::deleteLater);
        m_idle.start();
    }

    ~TcpConnection() override { --m_server.m_connections; }

private:
    void readQueries()
    {
        m_reader.append(readAll());
        while (m_pending < maxPendingPerConnection) {
            std::optional<QByteArray> message = m_reader.next();
            if (!message)
                break;
            ++m_pending;
            m_idle.stop();
            QPointer<TcpConnection> self(this);
            m_server.m_forwarder.handle(*message, false, [self](const QByteArray &answer) {
                if (!self)
                    return;
                self->write(dns::frame(answer));
                if (--self->m_pending == 0)
                    self->m_idle.start();
                if (self->m_pending == maxPendingPerConnection - 1 && self->m_reader.buffered() > 0)
                    QMetaObject::invokeMethod(self, &TcpConnection::readQueries, Qt::QueuedConnection);
            });
        }
        // A client that keeps sending without reading answers is held back by TCP itself.
        if (m_reader.buffered() > 4 * maxUdpMessage)
            abort();
    }

    DnsServer &m_server;
    dns::TcpFrameReader m_reader;
    int m_pending = 0;
    QTimer m_idle;
};

DnsServer::DnsServer(Forwarder &forwarder, int udpFd, int tcpFd, QObject *parent)
    : QObject(parent)
    , m_forwarder(forwarder)
    , m_udpFd(udpFd)
    , m_tcpFd(tcpFd)
{
    if (m_udpFd >= 0) {
        m_udpNotifier = std::make_unique<QSocketNotifier>(m_udpFd, QSocketNotifier::Read);
        connect(m_udpNotifier.get(), &QSocketNotifier::activated, this, &DnsServer::readUdp);
    }
    if (m_tcpFd >= 0) {
        m_tcpNotifier = std::make_unique<QSocketNotifier>(m_tcpFd, QSocketNotifier::Read);
        connect(m_tcpNotifier.get(), &QSocketNotifier::activated, this, &DnsServer::acceptTcp);
    }
    m_outgoing.reserve(batchSize);
    // Left uninitialised: only the pages datagrams are written to ever become resident.
    m_buffers.reset(new char[size_t(batchSize) * maxUdpMessage]);
}

DnsServer::~DnsServer() = default;

void DnsServer::readUdp()
{
    mmsghdr messages[batchSize];
    iovec vectors[batchSize];
    sockaddr_storage peers[batchSize];
    for (int batch = 0; batch < maxBatchesPerWakeUp; ++batch) {
        for (int i = 0; i < batchSize; ++i) {
            vectors[i] = { m_buffers.get() + size_t(i) * maxUdpMessage, maxUdpMessage };
            messages[i].msg_hdr = msghdr {};
            messages[i].msg_hdr.msg_name = &peers[i];
            messages[i].msg_hdr.msg_namelen = sizeof peers[i];
            messages[i].msg_hdr.msg_iov = &vectors[i];
            messages[i].msg_hdr.msg_iovlen = 1;
        }
        const int count = ::recvmmsg(m_udpFd, messages, batchSize, MSG_DONTWAIT, nullptr);
        if (count <= 0)
            break;
        m_inBatch = true;
        for (int i = 0; i < count; ++i) {
            const QByteArrayView message(static_cast<const char *>(vectors[i].iov_base), messages[i].msg_len);
            const sockaddr_storage peer = peers[i];
            const socklen_t peerLength = messages[i].msg_hdr.msg_namelen;
            m_forwarder.handle(message, true, [this, peer, peerLength](const QByteArray &answer) {
                m_outgoing.push_back({ peer, peerLength, answer });
                // Upstream answers arrive several per wake-up: sent together once it is handled.
                if (!m_inBatch && !m_flushPosted) {
                    m_flushPosted = true;
                    QMetaObject::invokeMethod(this, &DnsServer::flushUdp, Qt::QueuedConnection);
                }
            });
        }
        m_inBatch = false;
        flushUdp();
        if (count < batchSize)
            break;
    }
}

void DnsServer::flushUdp()
{
    m_flushPosted = false;
    size_t done = 0;
    while (done < m_outgoing.size()) {
        const size_t count = std::min<size_t>(m_outgoing.size() - done, batchSize);
        mmsghdr messages[batchSize];
        iovec vectors[batchSize];
        for (size_t i = 0; i < count; ++i) {
            Outgoing &out = m_outgoing[done + i];
            vectors[i] = { out.answer.data(), size_t(out.answer.size()) };
            messages[i].msg_hdr = msghdr {};
            messages[i].msg_hdr.msg_name = &out.peer;
            messages[i].msg_hdr.msg_namelen = out.peerLength;
            messages[i].msg_hdr.msg_iov = &vectors[i];
            messages[i].msg_hdr.msg_iovlen = 1;
        }
        const int sent = ::sendmmsg(m_udpFd, messages, unsigned(count), MSG_DONTWAIT);
        if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            // A full send buffer drops answers, as a busy DNS server does; the client asks again.
            break;
        }
        if (sent <= 0) {
            // One peer the kernel refuses must not cost the others their answers.
            if (errno != EINTR)
                qCWarning(lcServer) << "sendmmsg:" << std::strerror(errno);
            done += errno == EINTR ? 0 : 1;
            continue;
        }
        done += size_t(sent);
    }
    m_outgoing.clear();
}

void DnsServer::acceptTcp()
{
    for (;;) {
        const int fd = ::accept4(m_tcpFd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd < 0)
            return;
        if (m_connections >= maxConnections) {
            ::close(fd);
            continue;
        }
        new TcpConnection(*this, fd);
    }
}

} // namespace brivanta
