#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

namespace brivanta {

// One running app per user: a later launch asks the running one, through a local socket in the user's
// runtime directory, to bring its window forward, and ends without showing anything (so it counts no
// launch). Lives on the main thread.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    // The socket's path: `name` in the user's runtime directory.
    explicit SingleInstance(const QString &name, QObject *parent = nullptr);

    // True when an instance is running and was asked to come forward.
    [[nodiscard]] bool askRunningToActivate();
    // Takes the socket for this instance, replacing one a crashed instance left; false when it cannot.
    bool listen();

signals:
    void activationRequested();

private:
    QString m_path;
    QLocalServer m_server;
};

} // namespace brivanta
