#pragma once

#include <QObject>
#include <QSslCertificate>
#include <QSslKey>
#include <QUrl>
#include <atomic>
#include <chrono>
#include <functional>
#include <optional>

class QTcpServer;
class QTcpSocket;

namespace brivanta::testing {

// A scripted HTTP/1.1 server on 127.0.0.1, plain or TLS, for tests and benchmarks. It serves on its
// thread (move it before listen()); the counters may be read from any thread.
class LoopbackHttpServer : public QObject
{
public:
    struct Answer
    {
        enum class Kind {
            Respond, // writes `bytes` after `delay`; closes if they say "Connection: close"
            EndlessBody, // writes `bytes` (the head) after `delay`, then a body that never ends
            Trickle, // writes `bytes` one byte every `interval`
            Silent, // accepts the request and never answers
        };
        Kind kind = Kind::Respond;
        QByteArray bytes;
        std::chrono::milliseconds delay { 0 };
        std::chrono::milliseconds interval { 1000 };
    };
    // Called with the request target (path) of each request.
    using Handler = std::function<Answer(const QByteArray &target)>;

    struct TlsIdentity
    {
        QSslCertificate certificate;
        QSslKey key;
    };

    explicit LoopbackHttpServer(Handler handler, std::optional<TlsIdentity> tls = std::nullopt);

    bool listen(); // on the server's thread
    QUrl url(const QString &path = QStringLiteral("/")) const;

    int requestsSeen() const { return m_requests.load(); }
    int openConnections() const { return m_openConnections.load(); }

    static Answer status(int code, const QByteArray &extraHeaders = {}); // with an empty body
    static Answer redirect(int code, QByteArray to) { return status(code, "Location: " + to + "\r\n"); }

    // A key and self-signed certificate for 127.0.0.1 and localhost, made with the openssl tool.
    static std::optional<TlsIdentity> generateSelfSignedIdentity();

private:
    void accept(QTcpSocket *socket);

    Handler m_handler;
    std::optional<TlsIdentity> m_tls;
    QTcpServer *m_server = nullptr;
    std::atomic<quint16> m_port { 0 };
    std::atomic<int> m_requests { 0 };
    std::atomic<int> m_openConnections { 0 };
};

} // namespace brivanta::testing
