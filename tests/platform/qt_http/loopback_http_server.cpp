#include "platform/qt_http/loopback_http_server.h"

#include <QProcess>
#include <QSslServer>
#include <QTimer>
#include <memory>

namespace brivanta::testing {

LoopbackHttpServer::LoopbackHttpServer(Handler handler, std::optional<TlsIdentity> tls)
    : m_handler(std::move(handler))
    , m_tls(std::move(tls))
{ }

bool LoopbackHttpServer::listen()
{
    auto *tlsServer = m_tls ? new QSslServer(this) : nullptr;
    m_server = tlsServer ? tlsServer : new QTcpServer(this);
    if (tlsServer) {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(m_tls->certificate);
        configuration.setPrivateKey(m_tls->key);
        tlsServer->setSslConfiguration(configuration);
    }
    connect(m_server, &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket *socket = m_server->nextPendingConnection())
            accept(socket);
    });
    const bool listening = m_server->listen(QHostAddress::LocalHost);
    m_port = m_server->serverPort();
    return listening;
}

QUrl LoopbackHttpServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("%1://127.0.0.1:%2%3").arg(m_tls ? "https" : "http").arg(m_port).arg(path));
}

LoopbackHttpServer::Answer LoopbackHttpServer::status(int code, const QByteArray &extraHeaders)
{
    // Clients read the code only; the reason phrase is the same for all.
    return { Answer::Kind::Respond,
        "HTTP/1.1 " + QByteArray::number(code) + " Status\r\n" + extraHeaders + "Content-Length: 0\r\n\r\n" };
}

void LoopbackHttpServer::accept(QTcpSocket *socket)
{
    ++m_openConnections;
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
        --m_openConnections;
        socket->deleteLater();
    });
    // GET requests only: a head without a body, possibly several on one kept-alive connection.
    const auto serve = [this, socket, buffer = std::make_shared<QByteArray>()] {
        buffer->append(socket->readAll());
        for (qsizetype end; (end = buffer->indexOf("\r\n\r\n")) >= 0; buffer->remove(0, end + 4)) {
            ++m_requests;
            const Answer answer = m_handler(buffer->left(buffer->indexOf("\r\n")).split(' ').value(1, "/"));
            if (answer.kind == Answer::Kind::Trickle) {
                auto *timer = new QTimer(socket);
                timer->callOnTimeout(socket, [socket, timer, bytes = answer.bytes, at = 0]() mutable {
                    socket->write(bytes.mid(at, 1));
                    if (++at >= bytes.size())
                        timer->stop();
                });
                timer->start(answer.interval);
            } else if (answer.kind != Answer::Kind::Silent) {
                QTimer::singleShot(answer.delay, Qt::PreciseTimer, socket, [socket, answer] {
                    socket->write(answer.bytes);
                    if (answer.kind == Answer::Kind::Respond) {
                        if (answer.bytes.contains("\r\nConnection: close\r\n"))
                            socket->disconnectFromHost();
                        return;
                    }
                    // Keeps one chunk queued: the body never ends, but memory stays bounded.
                    const auto stream = [socket] {
                        if (socket->state() == QAbstractSocket::ConnectedState
                            && socket->bytesToWrite() < 65536)
                            socket->write(QByteArray(65536, 'x'));
                    };
                    connect(socket, &QTcpSocket::bytesWritten, socket, stream);
                    stream();
                });
            }
        }
    };
    connect(socket, &QTcpSocket::readyRead, this, serve);
    serve();
}

std::optional<LoopbackHttpServer::TlsIdentity> LoopbackHttpServer::generateSelfSignedIdentity()
{
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
        QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj "
                       "/CN=localhost -addext subjectAltName=DNS:localhost,IP:127.0.0.1 "
                       "-keyout /dev/stdout -out /dev/stdout")
            .split(u' '));
    openssl.waitForFinished(30'000); // on failure the output holds no key, which is checked below
    const QByteArray pem = openssl.readAllStandardOutput();
    TlsIdentity identity { QSslCertificate(pem, QSsl::Pem), QSslKey(pem, QSsl::Ec, QSsl::Pem) };
    if (identity.certificate.isNull() || identity.key.isNull())
        return std::nullopt;
    return identity;
}

} // namespace brivanta::testing
