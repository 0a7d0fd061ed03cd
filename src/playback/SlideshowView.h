#pragma once

#include "Countdown.h"
#include "PauseIndicators.h"
#include "PlayOrder.h"
#include "ScreensaverEventMonitor.h"
#include "ShowPlayer.h"
#include "SlidePresentation.h"
#include "ViewHistory.h"
#include "core/Scheduler.h"
#include "media/IdentifiableImage.h"
#include "media/MediaTypes.h"
#include "playback/SleepPreventer.h"

#include <QColor>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QSet>
#include <QUrl>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

namespace tb {

class FileRevealer;
class FolderWatchers;
class LiveFolder;
class MetadataService;
class PictureCaches;
class Queue;
class RandomSource;
class SettingsStore;
class SleepInhibitor;
class SlideshowAudio;
class SlideshowManager;
struct Refill;

// What a single-photo show is opened with; fixed for its life.
struct SlideshowConfiguration {
    double slideshowDelay = 3.0;
    bool randomOrder = false;
    bool loopSlideshow = false;
    TransitionType transitionType = TransitionType::none;
    bool isManualMode = false;
    double crossfadeDuration = 2.0;
    ImageScalingMode imageScalingMode = ImageScalingMode::bestFit;
    std::optional<QUuid> startingImageId;
    bool screensaverMode = false;
    std::function<void(const QList<IdentifiableImage>&)> onNewImagesAdded;
    std::function<void(int)> onImagesRemoved;
};

struct PlayerServices {
    Scheduler& scheduler;
    RandomSource& random;
    SlideshowManager& manager;
    SlideshowAudio& audio;
    PictureCaches& caches;
    SleepInhibitor& sleepInhibitor;
    SettingsStore& settings;
    FileRevealer& revealer;
    MetadataService& metadata;
    FolderWatchers& folderWatchers;
};

// The single-photo player: which item is on screen, when the next comes, and how shuffle, loop,
// manual mode, history and pause combine, until the show ends. It wires its parts (the play
// order, the view history, the countdown, the slide presentation and the preload policy) to the
// Scheduler, the keys and the one stop path; its window only shows this state and forwards
// keys. Stopping is final: a new show is a new player. The queue is the main window's, shared,
// so live mode can change it during the show and the show can outlive the window: while live
// mode is on, the player keeps the queue in step with the watched folder and fits its order,
// history and screen to each change.
class SlideshowView final : public ShowPlayer {
    Q_OBJECT
    Q_PROPERTY(int currentIndex READ currentIndex NOTIFY currentIndexChanged)
    Q_PROPERTY(QUrl currentUrl READ currentUrl NOTIFY currentIndexChanged)
    Q_PROPERTY(double remainingTime READ remainingTime NOTIFY remainingTimeChanged)
    Q_PROPERTY(bool isPaused READ isPaused NOTIFY pausedChanged)
    Q_PROPERTY(bool showPauseInfo READ showPauseInfo NOTIFY indicatorsChanged)
    Q_PROPERTY(bool showResumeInfo READ showResumeInfo NOTIFY indicatorsChanged)
    Q_PROPERTY(QColor backgroundColor READ backgroundColor CONSTANT)
    // What the window draws for the current item, and how it changes.
    Q_PROPERTY(QString currentKind READ currentKind NOTIFY currentIndexChanged)
    Q_PROPERTY(QString currentSource READ currentSource NOTIFY currentIndexChanged)
    Q_PROPERTY(bool fades READ fades CONSTANT)
    Q_PROPERTY(double crossfadeDuration READ crossfadeDuration CONSTANT)
    Q_PROPERTY(double kenBurnsScale READ kenBurnsScale NOTIFY currentIndexChanged)
    Q_PROPERTY(QPointF kenBurnsOffset READ kenBurnsOffset NOTIFY currentIndexChanged)
    // The countdown badge (T) and the file information box (I).
    Q_PROPERTY(bool showTimer READ showTimer NOTIFY overlaysChanged)
    Q_PROPERTY(QString countdownText READ countdownText NOTIFY remainingTimeChanged)
    Q_PROPERTY(bool showInfobox READ showInfobox NOTIFY overlaysChanged)
    Q_PROPERTY(QString currentImageInfo READ currentImageInfo NOTIFY overlaysChanged)
    // A clip on screen: whether it plays (pause holds it), whether it repeats, whether it is heard.
    Q_PROPERTY(bool isVideoPlaying READ isVideoPlaying NOTIFY pausedChanged)
    Q_PROPERTY(bool clipsLoop READ clipsLoop CONSTANT)
    Q_PROPERTY(bool muteVideoAudio READ muteVideoAudio CONSTANT)
public:
    SlideshowView(std::shared_ptr<Queue> queue, SlideshowConfiguration configuration, PlayerServices services,
                  QObject* parent = nullptr);
    ~SlideshowView() override;

    QUrl scene() const override;
    void onAppear() override;
    void onDisappear() override;
    // Space or Escape, then each of Right, Left, T, I, F and R; other keys do nothing.
    void handleKey(int key) override;
    bool hidesCursor() const override { return true; }
    // A clip on screen played to its end.
    Q_INVOKABLE void onVideoEnded();
    // A clip's view went away with its slide.
    Q_INVOKABLE void onVideoDismantled();

    void pauseSlideshow() override;
    void resumeSlideshow() override;
    // The arrow wrapper: the step, then a full delay for the new item.
    void goForwardByArrow();
    void goBackByArrow();
    void stepForward() override { goForwardByArrow(); }
    void stepBack() override { goBackByArrow(); }
    // Ends the show, once.
    void stopSlideshow() override;
    // The item on screen.
    const IdentifiableImage* featuredItem() const override { return itemAt(order.current()); }

    int currentIndex() const { return order.current(); }
    QUrl currentUrl() const;
    double remainingTime() const { return countdown.remaining(); }
    bool isPaused() const override { return paused; }
    bool showPauseInfo() const { return indicators.showPauseInfo(); }
    bool showResumeInfo() const { return indicators.showResumeInfo(); }
    QColor backgroundColor() const { return background; }
    QString currentKind() const { return slide.kind; }
    QString currentSource() const { return slide.source; }
    bool fades() const { return config.transitionType == TransitionType::fade; }
    double crossfadeDuration() const { return config.crossfadeDuration; }
    double kenBurnsScale() const { return slide.kenBurnsScale; }
    QPointF kenBurnsOffset() const { return slide.kenBurnsOffset; }
    bool showTimer() const { return timerShown; }
    QString countdownText() const;
    bool showInfobox() const { return infoShown; }
    QString currentImageInfo() const { return info; }
    bool isVideoPlaying() const { return videoPlaying; }
    bool clipsLoop() const { return config.isManualMode; }
    bool muteVideoAudio() const { return muted; }
    bool hasStoppedSlideshow() const override { return hasStopped; }
    const QList<int>& shuffledIndices() const { return order.shuffledIndices(); }
    int shuffledIndex() const { return order.shuffledIndex(); }
    const QList<int>& viewHistory() const { return history.entries(); }
    int historyIndex() const { return history.position(); }
    const QSet<int>& allViewedImages() const { return history.viewed(); }
    TaskId pendingAdvance() const { return slideshowWorkItem; }
    const LiveFolder& liveFolder() const { return *folderMonitor; }

Q_SIGNALS:
    void currentIndexChanged();
    void remainingTimeChanged();
    void pausedChanged();
    void indicatorsChanged();
    void overlaysChanged();

private:
    bool mayArm() const;
    // Read at each arming, not fixed at the start: a clip on screen that plays to its end drives
    // the show itself.
    bool clipsPlayToTheirEnd() const;
    void scheduleNextSequential();
    void scheduleNextShuffled();
    void scheduleNext();
    void arm(void (SlideshowView::*step)(), double delay);
    void arrowStep(void (SlideshowView::*step)());
    void advance();
    void advanceAfterResume();
    void goForward();
    void goBack();
    // What every step does with the order's answer: true while the show goes on.
    bool follow(OrderStep step);
    void addToHistory();

    // Live mode.
    void followLiveMode();
    void addLiveItems(const QList<IdentifiableImage>& items);
    void removeLiveItems(const QSet<QString>& paths);
    bool newPhotosGoNext() const;
    void fitShuffledOrder();

    // What is on screen, by index and by item: live mode can change the item at an index.
    struct OnScreen {
        int index;
        QUuid id;
    };
    OnScreen onScreen() const;
    // After the order moved: a full countdown and the new item's slide.
    void showIfMoved(int before);
    void showIfChanged(const OnScreen& before);
    void showNewCurrent();
    void showCurrent();
    // The information box's text for the item on screen; read only while the box is shown.
    void rebuildInfo();
    const IdentifiableImage* itemAt(int index) const;
    // A one-shot task that dies with this player.
    void later(double seconds, std::function<void()> fn);
    void onRunningChanged(bool running);
    void stopAudioIfPlaying();
    void cleanup();
    void refill(const Refill& refill);
    int count() const;

    std::shared_ptr<Queue> queue;
    const SlideshowConfiguration config;
    PlayerServices services;
    SleepPreventer sleepPreventer;
    // Only in screen-saver shows: the first input ends the show.
    std::unique_ptr<ScreensaverEventMonitor> screensaverEventMonitor;
    // The watched folder, its debounce and its syncs.
    std::unique_ptr<LiveFolder> folderMonitor;
    bool isLiveModeUpdate = false; // while live mode fits the shuffled order

    QColor background = Qt::black;
    PlayOrder order;
    ViewHistory history;
    Countdown countdown;
    SlidePresentation slide;
    PauseIndicators indicators;
    TaskId slideshowWorkItem = 0;
    QList<TaskId> helperTasks; // the shuffled first arm
    bool paused = false;
    bool videoPlaying = true;
    bool muted = false;
    bool timerShown = false;
    bool infoShown = false;
    QString info;
    bool hasStopped = false;
};

} // namespace tb
