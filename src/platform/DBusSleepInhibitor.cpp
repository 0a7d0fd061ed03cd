#include "DBusSleepInhibitor.h"

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

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
// The portal's Inhibit flag for the session going idle (display sleep, screen saver).
constexpr quint32 portalIdleFlag = 8;

// A desktop that does not answer within this gives the hold up as failed. The portal is often
// started by its first call, which takes longer.
constexpr int callTimeoutMs = 2000;
constexpr int portalTimeoutMs = 5000;

const QString disconnected = QStringLiteral("org.freedesktop.DBus.Error.Disconnected");

// Errors that say the desktop has no org.freedesktop.ScreenSaver at all.
bool isMissing(const QString& error)
{
    return error == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
           error == QLatin1String("org.freedesktop.DBus.Error.UnknownObject") ||
           error == QLatin1String("org.freedesktop.DBus.Error.UnknownInterface") ||
           error == QLatin1String("org.freedesktop.DBus.Error.UnknownMethod");
}

// Sends the call and hands its reply to `answered` on the GUI thread.
void send(QDBusConnection& bus, const QDBusMessage& call, int timeoutMs,
          std::function<void(const QDBusPendingCall&)> answered)
{
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, timeoutMs));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
                         answered(*finished);
                         finished->deleteLater();
                     });
}

} // namespace

DBusSleepInhibitor::DBusSleepInhibitor(QDBusConnection bus) : bus(std::move(bus)) {}

void DBusSleepInhibitor::inhibit(const QString& reason, Inhibited done)
{
    if (!bus.isConnected()) {
        done(disconnected);
        return;
    }
    QDBusMessage call = screenSaverCall(QStringLiteral("Inhibit"));
    call << QStringLiteral("Tallowbrook") << reason;
    send(bus, call, callTimeoutMs,
         [bus = bus, holds = portalHolds, reason, done = std::move(done)](const QDBusPendingCall& answer) {
             const QDBusPendingReply<quint32> reply = answer;
             if (!reply.isError())
                 done(reply.value());
             else if (isMissing(reply.error().name()))
                 inhibitThroughPortal(bus, holds, reason, done);
             else
                 done(reply.error().name());
         });
}

void DBusSleepInhibitor::inhibitThroughPortal(QDBusConnection bus, std::shared_ptr<PortalHolds> holds,
                                              const QString& reason, Inhibited done)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(portalService, QStringLiteral("/org/freedesktop/portal/desktop"),
                                       QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
    call << QString() << portalIdleFlag << QVariantMap{{QStringLiteral("reason"), reason}};
    send(bus, call, portalTimeoutMs,
         [holds = std::move(holds), done = std::move(done)](const QDBusPendingCall& answer) {
             const QDBusPendingReply<QDBusObjectPath> reply = answer;
             if (reply.isError()) {
                 done(reply.error().name());
                 return;
             }
             const quint32 id = holds->nextId++;
             holds->requests[id] = reply.value();
             done(id);
         });
}

void DBusSleepInhibitor::uninhibit(quint32 id, Released done)
{
    if (!bus.isConnected()) {
        done(disconnected);
        return;
    }
    QDBusMessage call;
    if (const auto request = portalHolds->requests.find(id); request != portalHolds->requests.end()) {
        call =
            QDBusMessage::createMethodCall(portalService, request->second.path(),
                                           QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Close"));
        portalHolds->requests.erase(request);
    } else {
        call = screenSaverCall(QStringLiteral("UnInhibit"));
        call << id;
    }
    send(bus, call, callTimeoutMs, [done = std::move(done)](const QDBusPendingCall& answer) {
        if (answer.isError())
            done(answer.error().name());
        else
            done(std::nullopt);
    });
}

} // namespace tb
