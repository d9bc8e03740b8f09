#include "platform/qt_http/loopback_http_server.h"

#include <QFile>
#include <QHostAddress>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslServer>
#include <QSslSocket>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTimer>
#include <memory>

namespace brivanta::testing {

namespace {

constexpr qint64 bodyChunk = 64 * 1024;

} // namespace

LoopbackHttpServer::LoopbackHttpServer(Handler handler, std::optional<TlsIdentity> tls)
    : m_handler(std::move(handler))
    , m_tls(std::move(tls))
{ }

LoopbackHttpServer::~LoopbackHttpServer() = default;

bool LoopbackHttpServer::listen()
{
    if (m_tls) {
        auto *server = new QSslServer(this);
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(m_tls->certificate);
        configuration.setPrivateKey(m_tls->key);
        configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
        server->setSslConfiguration(configuration);
        m_server = server;
    } else {
        m_server = new QTcpServer(this);
    }
    connect(m_server, &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket *socket = m_server->nextPendingConnection())
            accept(socket);
    });
    if (!m_server->listen(QHostAddress::LocalHost))
        return false;
    m_port = m_server->serverPort();
    return true;
}

QUrl LoopbackHttpServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("%1://127.0.0.1:%2%3").arg(m_tls ? "https" : "http").arg(port()).arg(path));
}

LoopbackHttpServer::Answer LoopbackHttpServer::status(int code, const QByteArray &extraHeaders)
{
    // Clients read the code only; the reason phrase is the same for all.
    return { Answer::Kind::Respond,
        "HTTP/1.1 " + QByteArray::number(code) + " Status\r\n" + extraHeaders + "Content-Length: 0\r\n\r\n" };
}

LoopbackHttpServer::Answer LoopbackHttpServer::redirect(int code, const QByteArray &location)
{
    return status(code, "Location: " + location + "\r\n");
}

void LoopbackHttpServer::accept(QTcpSocket *socket)
{
    ++m_openConnections;
    auto buffer = std::make_shared<QByteArray>();
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
        --m_openConnections;
        socket->deleteLater();
    });
    connect(socket, &QTcpSocket::readyRead, this, [this, socket, buffer] {
        buffer->append(socket->readAll());
        serve(socket, *buffer);
    });
    if (socket->bytesAvailable() > 0) {
        buffer->append(socket->readAll());
        serve(socket, *buffer);
    }
}

void LoopbackHttpServer::serve(QTcpSocket *socket, QByteArray &buffer)
{
    // GET requests only: a head without a body, possibly several on one kept-alive connection.
    qsizetype end;
    while ((end = buffer.indexOf("\r\n\r\n")) >= 0) {
        const QByteArray requestLine = buffer.left(buffer.indexOf("\r\n"));
        buffer.remove(0, end + 4);
        ++m_requests;
        const QList<QByteArray> parts = requestLine.split(' ');
        const Answer answer = m_handler(parts.size() > 1 ? parts[1] : QByteArray("/"));

        switch (answer.kind) {
        case Answer::Kind::Respond:
            QTimer::singleShot(answer.delay, Qt::PreciseTimer, socket, [socket, bytes = answer.bytes] {
                socket->write(bytes);
                if (bytes.contains("\r\nConnection: close\r\n"))
                    socket->disconnectFromHost();
            });
            break;
        case Answer::Kind::EndlessBody:
            QTimer::singleShot(answer.delay, Qt::PreciseTimer, socket, [this, socket, head = answer.bytes] {
                socket->write(head);
                connect(socket, &QTcpSocket::bytesWritten, this, [this, socket] { streamBody(socket); });
                streamBody(socket);
            });
            break;
        case Answer::Kind::Trickle: {
            auto *timer = new QTimer(socket);
            auto position = std::make_shared<qsizetype>(0);
            connect(timer, &QTimer::timeout, socket, [socket, timer, position, bytes = answer.bytes] {
                socket->write(bytes.mid(*position, 1));
                if (++*position >= bytes.size())
                    timer->stop();
            });
            timer->start(answer.interval);
            break;
        }
        case Answer::Kind::Silent:
            break;
        }
    }
}

void LoopbackHttpServer::streamBody(QTcpSocket *socket)
{
    // Keeps one chunk queued: the body never ends, but memory stays bounded.
    if (socket->state() == QAbstractSocket::ConnectedState && socket->bytesToWrite() < bodyChunk)
        socket->write(QByteArray(bodyChunk, 'x'));
}

std::optional<LoopbackHttpServer::TlsIdentity> LoopbackHttpServer::generateSelfSignedIdentity()
{
    QTemporaryDir dir;
    if (!dir.isValid())
        return std::nullopt;
    const QString keyPath = dir.filePath(QStringLiteral("key.pem"));
    const QString certificatePath = dir.filePath(QStringLiteral("certificate.pem"));
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
        { QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("ec"),
            QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:prime256v1"),
            QStringLiteral("-nodes"), QStringLiteral("-days"), QStringLiteral("2"), QStringLiteral("-subj"),
            QStringLiteral("/CN=localhost"), QStringLiteral("-addext"),
            QStringLiteral("subjectAltName=DNS:localhost,IP:127.0.0.1"), QStringLiteral("-keyout"), keyPath,
            QStringLiteral("-out"), certificatePath });
    if (!openssl.waitForFinished(30'000) || openssl.exitStatus() != QProcess::NormalExit
        || openssl.exitCode() != 0)
        return std::nullopt;

    QFile keyFile(keyPath);
    QFile certificateFile(certificatePath);
    if (!keyFile.open(QIODevice::ReadOnly) || !certificateFile.open(QIODevice::ReadOnly))
        return std::nullopt;
    TlsIdentity identity { QSslCertificate(certificateFile.readAll(), QSsl::Pem),
        QSslKey(keyFile.readAll(), QSsl::Ec, QSsl::Pem) };
    if (identity.certificate.isNull() || identity.key.isNull())
        return std::nullopt;
    return identity;
}

} // namespace brivanta::testing
