#include "DBusSleepInhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>

namespace tb {

namespace {

QDBusMessage screenSaverCall(const QString& method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                          QStringLiteral("/org/freedesktop/ScreenSaver"),
                                          QStringLiteral("org.freedesktop.ScreenSaver"), method);
}

// Without a desktop session the bus is absent; calls must not stall a show's start.
constexpr int callTimeoutMs = 2000;

} // namespace

std::variant<quint32, QString> DBusSleepInhibitor::inhibit(const QString& reason)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return QStringLiteral("org.freedesktop.DBus.Error.Disconnected");
    QDBusMessage call = screenSaverCall(QStringLiteral("Inhibit"));
    call << QStringLiteral("Tallowbrook") << reason;
    const QDBusReply<quint32> reply = bus.call(call, QDBus::Block, callTimeoutMs);
    if (!reply.isValid())
        return reply.error().name();
    return reply.value();
}

std::optional<QString> DBusSleepInhibitor::uninhibit(quint32 id)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return QStringLiteral("org.freedesktop.DBus.Error.Disconnected");
    QDBusMessage call = screenSaverCall(QStringLiteral("UnInhibit"));
    call << id;
    const QDBusMessage reply = bus.call(call, QDBus::Block, callTimeoutMs);
    if (reply.type() == QDBusMessage::ErrorMessage)
        return reply.errorName();
    return std::nullopt;
}

} // namespace tb
