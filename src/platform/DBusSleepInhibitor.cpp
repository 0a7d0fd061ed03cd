#include "DBusSleepInhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace tb {

namespace {

QDBusMessage screenSaverCall(const QString& method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                          QStringLiteral("/org/freedesktop/ScreenSaver"),
                                          QStringLiteral("org.freedesktop.ScreenSaver"), method);
}

// A desktop that does not answer within this gives the hold up as failed.
constexpr int callTimeoutMs = 2000;

const QString disconnected = QStringLiteral("org.freedesktop.DBus.Error.Disconnected");

// Sends the call and hands its reply to `answered` on the GUI thread.
void send(const QDBusMessage& call, std::function<void(const QDBusPendingCall&)> answered)
{
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, callTimeoutMs));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
                         answered(*finished);
                         finished->deleteLater();
                     });
}

} // namespace

void DBusSleepInhibitor::inhibit(const QString& reason, Inhibited done)
{
    if (!QDBusConnection::sessionBus().isConnected()) {
        done(disconnected);
        return;
    }
    QDBusMessage call = screenSaverCall(QStringLiteral("Inhibit"));
    call << QStringLiteral("Tallowbrook") << reason;
    send(call, [done = std::move(done)](const QDBusPendingCall& answer) {
        const QDBusPendingReply<quint32> reply = answer;
        if (reply.isError())
            done(reply.error().name());
        else
            done(reply.value());
    });
}

void DBusSleepInhibitor::uninhibit(quint32 id, Released done)
{
    if (!QDBusConnection::sessionBus().isConnected()) {
        done(disconnected);
        return;
    }
    QDBusMessage call = screenSaverCall(QStringLiteral("UnInhibit"));
    call << id;
    send(call, [done = std::move(done)](const QDBusPendingCall& answer) {
        if (answer.isError())
            done(answer.error().name());
        else
            done(std::nullopt);
    });
}

} // namespace tb
