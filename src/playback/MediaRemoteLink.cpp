#include "MediaRemoteLink.h"

#include "ShowPlayer.h"
#include "core/Logger.h"
#include "media/IdentifiableImage.h"

namespace tb {

namespace {

// As the remote's interface names its buttons, for the log.
QString buttonName(MediaRemote::Command command)
{
    switch (command) {
    case MediaRemote::Command::playPause:
        return QStringLiteral("PlayPause");
    case MediaRemote::Command::play:
        return QStringLiteral("Play");
    case MediaRemote::Command::pause:
        return QStringLiteral("Pause");
    case MediaRemote::Command::next:
        return QStringLiteral("Next");
    case MediaRemote::Command::previous:
        return QStringLiteral("Previous");
    case MediaRemote::Command::stop:
        break;
    }
    return QStringLiteral("Stop");
}

} // namespace

MediaRemoteLink::MediaRemoteLink(ShowPlayer& player, MediaRemote& remote)
    : QObject(&player), player(player), remote(remote)
{
    if (player.hasStoppedSlideshow())
        return;
    // The state first, so that whoever sees the offer reads it right away.
    offered = true;
    follow();
    remote.offer([this](MediaRemote::Command command) { press(command); });
    connect(&player, &ShowPlayer::nowPlayingChanged, this, &MediaRemoteLink::follow);
}

// Only as a last resort: a show withdraws itself when it stops, and the player is already
// half gone here.
MediaRemoteLink::~MediaRemoteLink() { withdraw(); }

void MediaRemoteLink::follow()
{
    if (!offered)
        return;
    if (player.hasStoppedSlideshow()) {
        remote.setStatus(MediaRemote::Status::stopped);
        withdraw();
        return;
    }
    remote.setStatus(player.isPaused() ? MediaRemote::Status::paused : MediaRemote::Status::playing);
    const IdentifiableImage* item = player.featuredItem();
    remote.setItem(item ? std::optional<MediaRemote::Item>(
                              MediaRemote::Item{item->id(), item->url(), item->filename(), item->isVideo()})
                        : std::nullopt);
}

void MediaRemoteLink::withdraw()
{
    if (!offered)
        return;
    offered = false;
    remote.withdraw();
}

// Play and Pause are Space when it would do that, and nothing otherwise.
void MediaRemoteLink::press(MediaRemote::Command command)
{
    if (player.hasStoppedSlideshow())
        return;
    logInfo(QStringLiteral("Remote control: ") + buttonName(command));
    switch (command) {
    case MediaRemote::Command::playPause:
        player.togglePause();
        break;
    case MediaRemote::Command::play:
        if (player.isPaused())
            player.togglePause();
        break;
    case MediaRemote::Command::pause:
        if (!player.isPaused())
            player.togglePause();
        break;
    case MediaRemote::Command::next:
        player.stepForward();
        break;
    case MediaRemote::Command::previous:
        player.stepBack();
        break;
    case MediaRemote::Command::stop:
        player.stopSlideshow();
        break;
    }
}

} // namespace tb
