#include "SingleInstance.h"

#include "core/Logger.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

#include <unistd.h>

namespace tb {

namespace {
// A request is one line of JSON; anything longer than this is not from us.
constexpr qint64 maximumRequestBytes = 1 << 20;
} // namespace

SingleInstance::SingleInstance(QString serverName, QObject* parent) : QObject(parent), name(std::move(serverName)) {}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::defaultServerName()
{
    // The user's runtime folder is private to the user's session; without one, a per-user name
    // in the temporary folder.
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (!runtime.isEmpty())
        return QDir(runtime).filePath(QStringLiteral("com.tallowbrook.Tallowbrook.socket"));
    return QStringLiteral("com.tallowbrook.Tallowbrook-%1").arg(uint(getuid()));
}

bool SingleInstance::forwardToRunningInstance(const QStringList& paths, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    QByteArray request = QJsonDocument(QJsonArray::fromStringList(paths)).toJson(QJsonDocument::Compact);
    request += '\n';
    socket.write(request);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    socket.disconnectFromServer();
    if (socket.state() != QLocalSocket::UnconnectedState)
        socket.waitForDisconnected(timeoutMs);
    return true;
}

bool SingleInstance::listen()
{
    server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(name)) {
        // Nobody answered on this name (or we would not be here): it is a leftover socket file.
        QLocalServer::removeServer(name);
        if (!server->listen(name)) {
            logWarning(QStringLiteral("Could not listen for file open requests: ") + server->errorString());
            return false;
        }
    }
    connect(server, &QLocalServer::newConnection, this, &SingleInstance::acceptConnections);
    return true;
}

void SingleInstance::acceptConnections()
{
    while (QLocalSocket* socket = server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine()) {
                if (socket->bytesAvailable() > maximumRequestBytes)
                    socket->abort();
                return;
            }
            const QByteArray line = socket->readLine(maximumRequestBytes);
            socket->disconnectFromServer();
            const QJsonDocument request = QJsonDocument::fromJson(line);
            if (!request.isArray()) {
                logWarning(QStringLiteral("Ignored a malformed file open request from another launch"));
                return;
            }
            QStringList paths;
            for (const QJsonValue& value : request.array())
                if (value.isString())
                    paths.append(value.toString());
            if (paths.isEmpty())
                Q_EMIT activationRequested();
            else
                Q_EMIT filesRequested(paths);
        });
    }
}

} // namespace tb
