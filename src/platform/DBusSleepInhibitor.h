#pragma once

#include "core/SleepInhibitor.h"

#include <QDBusConnection>
#include <QDBusObjectPath>

#include <map>
#include <memory>

namespace tb {

// Holds display sleep off through the desktop, asked without waiting. org.freedesktop.ScreenSaver
// is asked first (KDE, Xfce, LXQt and others, on X11 and Wayland alike; its cookie is the id);
// where nothing answers to it (GNOME, wlroots desktops) the desktop portal's Inhibit is asked for
// the same, and the id stands for the portal's request, which is closed to let go. A D-Bus
// error's name is the error code.
class DBusSleepInhibitor final : public SleepInhibitor {
public:
    explicit DBusSleepInhibitor(QDBusConnection bus = QDBusConnection::sessionBus());

    void inhibit(const QString& reason, Inhibited done) override;
    void uninhibit(quint32 id, Released done) override;

private:
    // The portal's requests by the ids handed out for them; shared with calls still in flight.
    struct PortalHolds {
        std::map<quint32, QDBusObjectPath> requests;
        quint32 nextId = 1;
    };
    static void inhibitThroughPortal(QDBusConnection bus, std::shared_ptr<PortalHolds> holds, const QString& reason,
                                     Inhibited done);

    QDBusConnection bus;
    std::shared_ptr<PortalHolds> portalHolds = std::make_shared<PortalHolds>();
};

} // namespace tb
