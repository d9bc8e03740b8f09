#include "ui/single_instance.h"

#include <QDir>
#include <QLocalSocket>
#include <QStandardPaths>

namespace brivanta {

namespace {

constexpr int timeoutMilliseconds = 1000;
const QByteArray activate = QByteArrayLiteral("activate\n");

} // namespace

SingleInstance::SingleInstance(const QString &name, QObject *parent)
    : QObject(parent)
{
    QString directory = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (directory.isEmpty())
        directory = QDir::tempPath();
    m_path = QDir(directory).filePath(name);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                if (socket->readAll().contains(activate))
                    emit activationRequested();
            });
        }
    });
}

bool SingleInstance::askRunningToActivate()
{
    QLocalSocket socket;
    socket.connectToServer(m_path);
    if (!socket.waitForConnected(timeoutMilliseconds))
        return false;
    socket.write(activate);
    return socket.waitForBytesWritten(timeoutMilliseconds);
}

bool SingleInstance::listen()
{
    if (m_server.listen(m_path))
        return true;
    // Nobody answered on it (askRunningToActivate came first), so the socket file is stale.
    QLocalServer::removeServer(m_path);
    return m_server.listen(m_path);
}

} // namespace brivanta
