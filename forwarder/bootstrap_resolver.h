#pragma once

#include <QHostAddress>
#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>
#include <chrono>
#include <functional>
#include <memory>
#include <sys/socket.h>
#include <vector>

namespace brivanta {

struct HostPort
{
    QHostAddress address;
    quint16 port = 53;
    bool operator==(const HostPort &) const = default;
};
QString toString(const HostPort &server);
sockaddr_storage toSockaddr(const HostPort &where, socklen_t &length);

// Resolves the DNS-over-HTTPS endpoint's own host name with plain DNS, asking the given servers one after
// the other. The system resolver is never used: it may well be the forwarder that needs this answer.
//
// Runs on the thread of its event loop; the completion is called there, never inside resolve().
class BootstrapResolver : public QObject
{
    Q_OBJECT

public:
    struct Result
    {
        std::vector<QHostAddress> addresses; // empty on failure
        std::chrono::seconds ttl { 0 };
        QString error;
    };
    using Completion = std::function<void(Result)>;

    explicit BootstrapResolver(std::chrono::milliseconds perServerTimeout, QObject *parent = nullptr);
    ~BootstrapResolver() override;

    // A new call cancels the one under way without calling its completion.
    void resolve(const QString &host, std::vector<HostPort> servers, Completion completion);
    bool busy() const { return static_cast<bool>(m_completion); }

private:
    void askNext();
    void readAnswers();
    void finish(Result result);
    void dropSocket();

    std::chrono::milliseconds m_timeout;
    QByteArray m_name;
    QString m_host;
    std::vector<HostPort> m_servers;
    size_t m_next = 0;
    Completion m_completion;
    int m_fd = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_timer;
    quint16 m_ids[2] {};
    int m_pending = 0;
    Result m_partial;
};

} // namespace brivanta
