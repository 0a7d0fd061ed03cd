#pragma once

#include <QPointer>
#include <QQuickView>

#include <memory>

namespace tb {

class OverlayView;
class PictureProvider;
class SettingsStore;
class Scheduler;
class PictureCaches;
class ShowPlayer;

// The window of one show, of either kind: black, on the chosen screen, full screen or 75 %
// centred. It owns its player and the show's share of the picture service, forwards every key
// to the player (no key of a show goes anywhere else), switches full screen when the player
// asks, and ends the show when it is closed by hand.
class PlayerWindow final : public QQuickView {
    Q_OBJECT
public:
    // `pictureBacklog`: how many picture decodes may wait at once (see PictureProvider).
    // The overlay mark reads its own settings from `settings`.
    PlayerWindow(ShowPlayer* player, std::unique_ptr<PictureCaches> pictures, int pictureBacklog,
                 SettingsStore& settings, QScreen* screen, bool windowed, bool floatOnTop);
    ~PlayerWindow() override;

    // Draws shows with Qt Quick's own software renderer when OpenGL is itself emulated on the
    // CPU (llvmpipe and the like: virtual machines, remote desktops, no GPU driver), where it
    // keeps a full-screen cross-fade at the display's rate and OpenGL does not, and where there
    // is no OpenGL at all. Call before the first Qt Quick window; QT_QUICK_BACKEND wins.
    static void chooseRenderer();

    // 75 % of the screen, centred on it.
    static QRect windowedGeometry(const QRect& screen);

    void present();
    // Closes and deletes the window from the event loop (the player may be mid-step).
    void closeLater();
    void toggleFullScreen();
    // Hides the pointer over the full-screen show after a second without input, if the player
    // wants it; the hider goes with the window.
    void hideIdleCursor(Scheduler& scheduler);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    std::unique_ptr<PictureCaches> pictures;
    QPointer<ShowPlayer> player;
    PictureProvider* provider; // owned by the engine
    OverlayView* overlay;      // a child of the window
    QScreen* targetScreen;
    bool windowed;
    bool disappeared = false;
};

} // namespace tb
