#pragma once

#include <QObject>
#include <QStringList>

class QLocalServer;

namespace tb {

// One Tallowbrook per user session: a second launch hands its file paths to the running
// program over a local socket and exits, so documents opened from the file manager land in
// the open program and two programs never share one log file.
class SingleInstance final : public QObject {
    Q_OBJECT
public:
    explicit SingleInstance(QString serverName, QObject* parent = nullptr);
    ~SingleInstance() override;

    // The program's socket in the user's session.
    static QString defaultServerName();

    // True when a running program took the paths (an empty list asks it to come to the front).
    bool forwardToRunningInstance(const QStringList& paths, int timeoutMs = 2000);
    // Claims the name for this program; a socket left behind by a crashed run is replaced.
    bool listen();

Q_SIGNALS:
    void filesRequested(const QStringList& paths);
    void activationRequested();

private:
    void acceptConnections();

    QString name;
    QLocalServer* server = nullptr;
};

} // namespace tb
