#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>
#include <memory>
#include <sys/socket.h>
#include <unordered_map>
#include <vector>

namespace brivanta {

class Forwarder;

// Plain DNS in: one UDP and one TCP listening socket (handed over by systemd or bound by the caller).
// UDP datagrams are read in batches and answered with as few system calls as possible; TCP connections
// carry several queries each (RFC 7766), answered in any order, closed when idle.
// Main thread only.
class DnsServer : public QObject
{
    Q_OBJECT

public:
    DnsServer(Forwarder &forwarder, int udpFd, int tcpFd, QObject *parent = nullptr);
    ~DnsServer() override;

private:
    class TcpConnection;
    struct Outgoing
    {
        sockaddr_storage peer;
        socklen_t peerLength;
        QByteArray answer;
    };

    void readUdp();
    void flushUdp();
    void acceptTcp();

    Forwarder &m_forwarder;
    int m_udpFd;
    int m_tcpFd;
    std::unique_ptr<QSocketNotifier> m_udpNotifier;
    std::unique_ptr<QSocketNotifier> m_tcpNotifier;
    bool m_inBatch = false;
    bool m_flushPosted = false;
    std::vector<Outgoing> m_outgoing;
    std::unique_ptr<char[]> m_buffers;
    int m_connections = 0;
};

} // namespace brivanta
