#include "DBusIdleTimeSource.h"

#include <QDBusMessage>

namespace tb {

namespace {

std::optional<double> askService(const QDBusConnection& bus, const char* service, const char* path,
                                 const char* interface, const char* method, int timeoutMs)
{
    const QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(service), QLatin1String(path),
                                                             QLatin1String(interface), QLatin1String(method));
    const QDBusMessage reply = bus.call(call, QDBus::Block, timeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    bool ok = false;
    const qulonglong milliseconds = reply.arguments().first().toULongLong(&ok);
    return ok ? std::optional<double>(double(milliseconds) / 1000.0) : std::nullopt;
}

} // namespace

DBusIdleTimeSource::DBusIdleTimeSource(QDBusConnection bus, int timeoutMs) : bus(std::move(bus)), timeoutMs(timeoutMs)
{
}

std::optional<double> DBusIdleTimeSource::ask()
{
    if (!bus.isConnected())
        return std::nullopt;
    if (const auto idle = askService(bus, "org.gnome.Mutter.IdleMonitor", "/org/gnome/Mutter/IdleMonitor/Core",
                                     "org.gnome.Mutter.IdleMonitor", "GetIdletime", timeoutMs))
        return idle;
    // The interface says seconds, but KDE, the desktop that answers it, counts milliseconds.
    if (const auto idle = askService(bus, "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                                     "org.freedesktop.ScreenSaver", "GetSessionIdleTime", timeoutMs))
        return idle;
    return std::nullopt;
}

} // namespace tb
