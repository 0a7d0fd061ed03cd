#pragma once

#include "PlayerPresenter.h"

#include <QList>

#include <functional>
#include <memory>

namespace tb {

class Analytics;
class Queue;
class RandomSource;
class SettingsStore;
class SlideshowAudio;
class SlideshowManager;
class UserDialogs;

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

    // What a show started from here tells the main window when live mode changes the queue.
    void setLiveModeReports(std::function<void(const QList<IdentifiableImage>&)> added,
                            std::function<void(int)> removed);

    // The main window's own shuffle order. Players build their own; this one is kept, and not
    // rebuilt by a second start, as it always has been.
    const QList<int>& shuffledIndices() const { return shuffled; }

private:
    void buildShuffleOrder();

    std::shared_ptr<Queue> queue;
    Services services;
    QList<int> shuffled;
    int shuffledIndex = 0;
    std::function<void(const QList<IdentifiableImage>&)> onNewImagesAdded;
    std::function<void(int)> onImagesRemoved;
};

} // namespace tb
