#pragma once

#include "core/MediaRemote.h"

#include <QObject>

namespace tb {

class ShowPlayer;

// Offers one show to the desktop's remote controls for as long as it runs: tells the remote
// whether the show plays and which item it features, and turns the remote's buttons into the
// steps the show's own keys take. A child of the player; a show that has already ended is not
// offered.
class MediaRemoteLink final : public QObject {
    Q_OBJECT
public:
    MediaRemoteLink(ShowPlayer& player, MediaRemote& remote);
    ~MediaRemoteLink() override;

private:
    void follow();
    void press(MediaRemote::Command command);
    void withdraw();

    ShowPlayer& player;
    MediaRemote& remote;
    bool offered = false;
};

} // namespace tb
