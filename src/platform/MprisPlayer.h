#pragma once

#include "core/MediaRemote.h"

#include <QDBusConnection>
#include <QObject>

namespace tb {

// The running show as an MPRIS media player on the session bus, which is where the desktop's
// media keys, its media applets and phone remotes look for players: the bus name
// org.mpris.MediaPlayer2.tallowbrook with the org.mpris.MediaPlayer2 and
// org.mpris.MediaPlayer2.Player interfaces at /org/mpris/MediaPlayer2. The name is held only
// while a show is offered, so no applet shows a player when there is nothing to play. Without a
// session bus nothing is offered, and that is said once.
class MprisPlayer final : public MediaRemote {
public:
    explicit MprisPlayer(QDBusConnection bus = QDBusConnection::sessionBus());
    ~MprisPlayer() override;
    MprisPlayer(const MprisPlayer&) = delete;
    MprisPlayer& operator=(const MprisPlayer&) = delete;

    void setStatus(Status status) override;
    void setItem(const std::optional<Item>& item) override;
    void offer(CommandHandler handler) override;
    void withdraw() override;

    Status status() const { return currentStatus; }
    const std::optional<Item>& item() const { return currentItem; }
    // The name held while a show is offered, else empty. When another program holds ours (a
    // second copy started on purpose), ".instance<pid>" is added, as MPRIS asks.
    const QString& busName() const { return name; }

    static const QString serviceName;
    static const QString objectPath;

private:
    void announce(const QString& property, const QVariant& value);
    void deliver(Command command);

    QDBusConnection bus;
    // The object at objectPath; the two interfaces are its adaptors.
    QObject root;
    Status currentStatus = Status::stopped;
    std::optional<Item> currentItem;
    CommandHandler handler;
    QString name;
    bool exported = false;
    bool toldNoBus = false;
};

} // namespace tb
