#pragma once

#include <QPointer>
#include <QQuickView>

namespace tb {

class PlaybackCaches;
class SlideshowView;

// The window of one show: black, on the chosen screen, full screen or 75 % centred. It owns
// its player, forwards keys to it, and ends the show when it is closed by hand.
class PlayerWindow final : public QQuickView {
    Q_OBJECT
public:
    PlayerWindow(SlideshowView* player, PlaybackCaches& caches, QScreen* screen, bool windowed, bool floatOnTop);
    ~PlayerWindow() override;

    // 75 % of the screen, centred on it.
    static QRect windowedGeometry(const QRect& screen);

    void present();
    // Closes and deletes the window from the event loop (the player may be mid-step).
    void closeLater();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    QPointer<SlideshowView> player;
    QScreen* targetScreen;
    bool windowed;
    bool disappeared = false;
};

} // namespace tb
