#pragma once

#include <QString>
#include <QUrl>
#include <QUuid>

#include <functional>
#include <optional>

namespace tb {

// The desktop's remote controls of a running show: media keys, the panel's media applets, phone
// remotes. A show offers itself when it starts and withdraws when it ends; in between it tells
// the remote whether it plays and what it shows, and the remote hands back the buttons pressed,
// on the GUI thread and from the event loop, never from inside one of these calls.
class MediaRemote {
public:
    enum class Command : int { playPause = 0, play = 1, pause = 2, next = 3, previous = 4, stop = 5 };
    enum class Status : int { stopped = 0, playing = 1, paused = 2 };

    // The item a remote names as playing.
    struct Item {
        // The queue item's own: another item is another track, while the same item shown again
        // (a loop, a step back) is the same track.
        QUuid id;
        QUrl url;
        QString title;
        bool isVideo = false;

        bool operator==(const Item&) const = default;
    };

    using CommandHandler = std::function<void(Command)>;

    virtual ~MediaRemote() = default;
    // What the remote announces is what was set last, also before the offer.
    virtual void setStatus(Status status) = 0;
    virtual void setItem(const std::optional<Item>& item) = 0;
    // The buttons reach `handler` until the withdrawal. A second offer replaces the first.
    virtual void offer(CommandHandler handler) = 0;
    virtual void withdraw() = 0;
};

} // namespace tb
