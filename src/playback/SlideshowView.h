#pragma once

#include "core/Scheduler.h"
#include "media/IdentifiableImage.h"
#include "media/MediaTypes.h"
#include "playback/SleepPreventer.h"

#include <QColor>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QSet>
#include <QSize>
#include <QUrl>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

namespace tb {

class PlaybackCaches;
class Queue;
class RandomSource;
class SettingsStore;
class SleepInhibitor;
class SlideshowAudio;
class SlideshowManager;

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
    PlaybackCaches& caches;
    SleepInhibitor& sleepInhibitor;
    SettingsStore& settings;
};

// The single-photo player: which item is on screen, when the next comes, and how shuffle, loop,
// manual mode, history and pause combine, until the show ends. A plain state machine on the
// Scheduler; its window only shows this state and forwards keys. Stopping is final: a new show
// is a new player. The queue is the main window's, read through a reference, so live mode can
// change it during the show.
class SlideshowView final : public QObject {
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
    Q_PROPERTY(QSize currentPictureSize READ currentPictureSize NOTIFY currentIndexChanged)
    Q_PROPERTY(bool fades READ fades CONSTANT)
    Q_PROPERTY(double crossfadeDuration READ crossfadeDuration CONSTANT)
    Q_PROPERTY(double kenBurnsScale READ kenBurnsScale NOTIFY currentIndexChanged)
    Q_PROPERTY(QPointF kenBurnsOffset READ kenBurnsOffset NOTIFY currentIndexChanged)
public:
    SlideshowView(std::shared_ptr<Queue> queue, SlideshowConfiguration configuration, PlayerServices services,
                  QObject* parent = nullptr);
    ~SlideshowView() override;

    // Removes the player's window. Without it, the stop path reports that it has no window.
    void setClosePlayer(std::function<void()> close) { closePlayer = std::move(close); }

    void onAppear();
    // The window went away (closed by hand, or after the stop path).
    void onDisappear();
    // Space, Escape, Left and Right; other keys are ignored.
    void handleKey(int key);

    void pauseSlideshow();
    void resumeSlideshow();
    // The arrow wrapper: the step, then a full delay for the new item.
    void goForwardByArrow();
    void goBackByArrow();
    // Ends the show, once.
    void stopSlideshow();

    int currentIndex() const { return current; }
    QUrl currentUrl() const;
    double remainingTime() const { return remaining; }
    bool isPaused() const { return paused; }
    bool showPauseInfo() const { return pauseInfo; }
    bool showResumeInfo() const { return resumeInfo; }
    QColor backgroundColor() const { return background; }
    // "none" (nothing to show), "video", "gif", "kenBurns", "bestFit", "fit" or "fill", chosen in
    // that order of precedence.
    QString currentKind() const { return kind; }
    QString currentSource() const { return source; }
    QSize currentPictureSize() const { return pictureSizeValue; }
    bool fades() const { return config.transitionType == TransitionType::fade; }
    double crossfadeDuration() const { return config.crossfadeDuration; }
    // Where the Ken Burns motion of the current picture ends: a zoom of 1.1 to 1.25 and a drift
    // of up to 30 points each way, drawn afresh at each change.
    double kenBurnsScale() const { return kenBurnsZoom; }
    QPointF kenBurnsOffset() const { return kenBurnsDrift; }
    bool hasStoppedSlideshow() const { return hasStopped; }
    const QList<int>& shuffledIndices() const { return shuffled; }
    int shuffledIndex() const { return shuffledPosition; }
    const QList<int>& viewHistory() const { return history; }
    int historyIndex() const { return historyPosition; }
    const QSet<int>& allViewedImages() const { return viewed; }
    TaskId pendingAdvance() const { return slideshowWorkItem; }

    static constexpr int historyLimit = 100;

Q_SIGNALS:
    void currentIndexChanged();
    void remainingTimeChanged();
    void pausedChanged();
    void indicatorsChanged();

private:
    bool mayArm() const;
    void scheduleNextSequential();
    void scheduleNextShuffled();
    void arm(void (SlideshowView::*step)(), double delay);
    void runStep(void (SlideshowView::*step)());
    void arrowStep(void (SlideshowView::*step)());
    void advanceSequential();
    void advanceShuffled();
    void advanceAfterResume();
    void goForward();
    void goBack();
    void moveToNext();
    void addToHistory();

    void setCurrentIndex(int index);
    void choosePresentation();
    void setRemainingTime(double seconds);
    void startCountdown();
    void restartCountdown();
    void showIndicator(bool& flag);
    // A one-shot task that dies with this player.
    void later(double seconds, std::function<void()> fn);
    void onRunningChanged(bool running);
    void stopAudioIfPlaying();
    void cleanup();
    // The order of play: every index of the queue, shuffled.
    QList<int> freshShuffle();
    // A subscript that would fall outside the queue or the order ends the show instead.
    bool guard(bool inRange, const char* what);

    void clearCachesForRefill();
    void preloadIndices(const QList<int>& indices);
    void preloadFrom(int firstIndex);
    void preloadPositions(int firstPosition, int length);

    const QList<IdentifiableImage>& images() const;

    std::shared_ptr<Queue> queue;
    const SlideshowConfiguration config;
    PlayerServices services;
    SleepPreventer sleepPreventer;
    std::function<void()> closePlayer;

    QColor background = Qt::black;
    QString kind = QStringLiteral("none");
    QString source;
    QSize pictureSizeValue;
    double kenBurnsZoom = 1.0;
    QPointF kenBurnsDrift;
    int current = 0;
    QList<int> shuffled;
    int shuffledPosition = 0;
    bool hasCompletedLoop = false;
    QList<int> history;
    int historyPosition = -1;
    QSet<int> viewed;
    TaskId slideshowWorkItem = 0;
    double remaining = 0;
    TaskId timer = 0;
    QList<TaskId> helperTasks; // the shuffled first arm and the indicator fades
    bool paused = false;
    bool pauseInfo = false;
    bool resumeInfo = false;
    bool isVideoPlaying = true;
    bool hasStopped = false;
};

} // namespace tb
