#pragma once

#include <QObject>
#include <QUrl>

#include <functional>

namespace tb {

class IdentifiableImage;

// What a show's window needs of its player, whichever kind it is: the scene that draws it, the
// start and the end of the window's life, and the keys. The window gives the player the two
// things only a window can do: close itself and switch full screen.
class ShowPlayer : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // The QML file that draws this kind of player.
    virtual QUrl scene() const = 0;
    virtual void onAppear() = 0;
    // The window went away (closed by hand, or after the stop path).
    virtual void onDisappear() = 0;
    // A key pressed in the player's window; modifiers are not looked at.
    virtual void handleKey(int key) = 0;
    // Whether the pointer hides over the show after a second without input.
    virtual bool hidesCursor() const { return false; }

    // The show's own controls. The keys and the remote controls (media keys, the desktop's media
    // applets) both take these, so a button always does what its key does.
    virtual bool isPaused() const = 0;
    virtual bool hasStoppedSlideshow() const = 0;
    virtual void pauseSlideshow() = 0;
    virtual void resumeSlideshow() = 0;
    // Space.
    void togglePause() { isPaused() ? resumeSlideshow() : pauseSlideshow(); }
    // The right and the left arrow.
    virtual void stepForward() = 0;
    virtual void stepBack() = 0;
    // Escape: ends the show, once.
    virtual void stopSlideshow() = 0;
    // The item a remote names as playing; none while nothing is shown.
    virtual const IdentifiableImage* featuredItem() const = 0;

    // Removes the player's window. Without it, the stop path reports that it has no window.
    void setClosePlayer(std::function<void()> close) { closePlayer = std::move(close); }
    void setToggleFullScreen(std::function<void()> toggle) { toggleFullScreen = std::move(toggle); }

Q_SIGNALS:
    // The pause, the featured item or the end of the show changed.
    void nowPlayingChanged();

protected:
    std::function<void()> closePlayer;
    std::function<void()> toggleFullScreen;
};

} // namespace tb
