#pragma once

#include "core/IdleTimeProbe.h"
#include "core/IdleTimeSource.h"

#include <QDBusConnection>

namespace tb {

// The desktop's idle time over D-Bus: GNOME's Mutter idle monitor first, then the freedesktop
// screen saver (KDE and others). Each question waits at most `timeoutMs`, so a service that has
// hung costs a poll that long and no more. A session without either does not know: asked as a
// probe, it says so, so that the X server can be asked next; asked as a source, it answers 0.0.
class DBusIdleTimeSource final : public IdleTimeSource, public IdleTimeProbe {
public:
    explicit DBusIdleTimeSource(QDBusConnection bus = QDBusConnection::sessionBus(), int timeoutMs = 100);
    std::optional<double> ask() override;
    double idleSeconds() override { return ask().value_or(0.0); }

private:
    QDBusConnection bus;
    int timeoutMs;
};

} // namespace tb
