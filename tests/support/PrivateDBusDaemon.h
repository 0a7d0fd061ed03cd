#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace tb::test {

// A session bus of the test's own: a dbus-daemon started for the test and killed with this object,
// so nothing the test registers reaches the desktop's bus.
class PrivateDBusDaemon {
public:
    PrivateDBusDaemon() = default;
    PrivateDBusDaemon(const PrivateDBusDaemon&) = delete;
    PrivateDBusDaemon& operator=(const PrivateDBusDaemon&) = delete;
    ~PrivateDBusDaemon()
    {
        daemon.kill();
        daemon.waitForFinished();
    }

    // False when dbus-daemon is not installed.
    bool launch()
    {
        daemon.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
        return daemon.waitForStarted(5000);
    }
    // The address the daemon prints once it listens; empty if it never does.
    QString waitForAddress()
    {
        if (!daemon.waitForReadyRead(5000))
            return {};
        return QString::fromUtf8(daemon.readLine()).trimmed();
    }

private:
    QProcess daemon;
};

} // namespace tb::test
