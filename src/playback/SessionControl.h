#pragma once

#include "SlideshowView.h"
#include "core/Analytics.h"

#include <QList>

#include <memory>

namespace tb {

class Queue;
class RandomSource;
class SettingsStore;
class SlideshowAudio;
class SlideshowManager;
class UserDialogs;

// Everything a show's window is built from, read from the settings at the moment of start.
struct ShowRequest {
    bool screensaverMode = false;
    GridOption grid = GridOption::none;
    SlideshowConfiguration single;
    int selectedDisplayID = 0;
    bool startInWindowedMode = false;
    bool floatOnTop = false;
    bool syncGridTransitions = false;
};

// Builds the player and its window on the chosen screen.
class PlayerPresenter {
public:
    virtual ~PlayerPresenter() = default;
    virtual void present(const ShowRequest& request, std::shared_ptr<Queue> queue) = 0;
};

// The main window's side of a show: the Start command, the screen-saver start and the start path
// up to the player's window. The queue, with its starting point, is the main window's; the
// player shares it.
class SessionControl {
public:
    struct Services {
        SettingsStore& settings;
        SlideshowManager& manager;
        SlideshowAudio& audio;
        Analytics& analytics;
        RandomSource& random;
        UserDialogs& dialogs;
        PlayerPresenter& presenter;
    };

    SessionControl(std::shared_ptr<Queue> queue, Services services);

    // The Start button and the menu's Start Slideshow.
    void startCommand();
    // The idle watcher's request; silent when there is nothing to show or a show runs.
    void screensaverStart();
    void startSlideshow(bool screensaverMode);

    // The main window's own shuffle order. Players build their own; this one is kept, and not
    // rebuilt by a second start, as it always has been.
    const QList<int>& shuffledIndices() const { return shuffled; }

private:
    void buildShuffleOrder();

    std::shared_ptr<Queue> queue;
    Services services;
    QList<int> shuffled;
    int shuffledIndex = 0;
};

// "slideshowStarted": every value a string.
Segmentation slideshowStartedSegmentation(int queueSize, double delay, bool loop, bool shuffle,
                                          const QString& transitionType, double crossfadeDuration, int displayModeRaw,
                                          bool liveMode, int audioTracks, bool overlayEnabled);

// A real number as the analytics server has always received it: "3.0", "2.5".
QString decimalText(double value);

} // namespace tb
