#pragma once

#include <QObject>
#include <QUrl>

#include <functional>

namespace tb {

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

    // Removes the player's window. Without it, the stop path reports that it has no window.
    void setClosePlayer(std::function<void()> close) { closePlayer = std::move(close); }
    void setToggleFullScreen(std::function<void()> toggle) { toggleFullScreen = std::move(toggle); }

protected:
    std::function<void()> closePlayer;
    std::function<void()> toggleFullScreen;
};

} // namespace tb
