#pragma once

#include "core/IdleTimeSource.h"

#include <QDBusConnection>

namespace tb {

// The desktop's idle time over D-Bus: GNOME's Mutter idle monitor first, then the freedesktop
// screen saver (KDE and others). Each question waits at most `timeoutMs`, so a service that has
// hung costs a poll that long and no more; a session without either answers 0.0.
class DBusIdleTimeSource final : public IdleTimeSource {
public:
    explicit DBusIdleTimeSource(QDBusConnection bus = QDBusConnection::sessionBus(), int timeoutMs = 100);
    double idleSeconds() override;

private:
    QDBusConnection bus;
    int timeoutMs;
};

} // namespace tb
