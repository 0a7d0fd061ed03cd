#include "SlideshowView.h"

#include "GlobalPointer.h"
#include "InfoBox.h"
#include "PreloadPolicy.h"
#include "ScreensaverEventMonitor.h"
#include "SlideshowManager.h"
#include "audio/SlideshowAudio.h"
#include "core/FileRevealer.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"
#include "media/LiveFolder.h"
#include "media/MetadataService.h"
#include "media/PictureCaches.h"
#include "media/Queue.h"

#include <QDir>

#include <cmath>

namespace tb {

namespace {
constexpr double shuffledFirstArmDelay = 0.1;
} // namespace

SlideshowView::SlideshowView(std::shared_ptr<Queue> queue, SlideshowConfiguration configuration,
                             PlayerServices services, QObject* parent)
    : ShowPlayer(parent),
      queue(std::move(queue)),
      config(std::move(configuration)),
      services(services),
      sleepPreventer(services.sleepInhibitor),
      order(config.randomOrder, services.random),
      countdown(
          services.scheduler, config.slideshowDelay, [this] { return this->services.manager.isSlideshowRunning(); },
          [this] { Q_EMIT remainingTimeChanged(); }),
      indicators(services.scheduler, [this] { Q_EMIT indicatorsChanged(); })
{
    connect(&services.manager, &SlideshowManager::isSlideshowRunningChanged, this, &SlideshowView::onRunningChanged);
    connect(this, &SlideshowView::currentIndexChanged, this, &ShowPlayer::nowPlayingChanged);
    connect(this, &SlideshowView::pausedChanged, this, &ShowPlayer::nowPlayingChanged);
    folderMonitor = std::make_unique<LiveFolder>(
        *this->queue, services.scheduler, services.folderWatchers,
        LiveFolder::Hooks{[this](const QList<IdentifiableImage>& items) { addLiveItems(items); },
                          [this](const QSet<QString>& paths) { removeLiveItems(paths); }});
    // What the window shows is known before it loads, so its first frame is already right.
    background = services.settings.loadColor(Settings::backgroundColorData, Qt::black);
    muted = services.settings.value(Settings::muteVideoAudio);
    showCurrent();
}

SlideshowView::~SlideshowView()
{
    services.scheduler.cancel(slideshowWorkItem);
    for (TaskId task : helperTasks)
        services.scheduler.cancel(task);
}

void SlideshowView::later(double seconds, std::function<void()> fn)
{
    // Forget finished tasks so a long show does not collect ids.
    helperTasks.removeIf([this](TaskId task) { return !services.scheduler.isPending(task); });
    helperTasks.append(services.scheduler.after(seconds, std::move(fn)));
}

int SlideshowView::count() const { return int(queue->size()); }

const IdentifiableImage* SlideshowView::itemAt(int index) const
{
    return index >= 0 && index < queue->size() ? &queue->at(index) : nullptr;
}

QUrl SlideshowView::scene() const { return QUrl(QStringLiteral("qrc:/tallowbrook/playback/qml/SlideshowPlayer.qml")); }

QUrl SlideshowView::currentUrl() const
{
    const IdentifiableImage* item = itemAt(order.current());
    return item ? item->url() : QUrl();
}

// Start-up

void SlideshowView::onAppear()
{
    logInfo(QStringLiteral("[Slideshow] View appeared"));
    sleepPreventer.preventSleep();
    followLiveMode();
    connect(&services.manager, &SlideshowManager::isLiveModeActiveChanged, this, &SlideshowView::followLiveMode);
    connect(&services.manager, &SlideshowManager::watchedFolderChanged, this, &SlideshowView::followLiveMode);

    if (services.manager.isSlideshowRunning()) {
        std::optional<int> startAt;
        if (config.startingImageId) {
            if (const qsizetype at = queue->indexOf(*config.startingImageId); at >= 0)
                startAt = int(at);
        }
        const int before = order.current();
        order.begin(count(), startAt);
        if (!follow(order.isValid() ? OrderStep::moved : OrderStep::stop))
            return;
        showIfMoved(before);
        if (!config.isManualMode) {
            if (config.randomOrder)
                // The first shuffled item deliberately stays about 0.1 s longer than the others.
                later(shuffledFirstArmDelay, [this] { scheduleNextShuffled(); });
            else
                scheduleNextSequential();
        }
    }

    countdown.start();
    countdown.start(); // as it stands: the second start replaces the first timer
    history.begin(order.current());
    if (config.screensaverMode && !hasStopped)
        screensaverEventMonitor =
            std::make_unique<ScreensaverEventMonitor>([this] { stopSlideshow(); }, globalPointer());
}

// Arming

bool SlideshowView::clipsPlayToTheirEnd() const
{
    const IdentifiableImage* item = itemAt(order.current());
    return item && item->isVideo() &&
           services.settings.value(Settings::videoPlaybackMode) == QLatin1String("fullVideo");
}

bool SlideshowView::mayArm() const
{
    return services.manager.isSlideshowRunning() && !paused && !config.isManualMode && !clipsPlayToTheirEnd();
}

void SlideshowView::arm(void (SlideshowView::*step)(), double delay)
{
    slideshowWorkItem = services.scheduler.after(delay, [this, step] {
        slideshowWorkItem = 0;
        (this->*step)();
    });
}

void SlideshowView::scheduleNextSequential()
{
    if (!mayArm())
        return;
    services.scheduler.cancel(slideshowWorkItem);
    arm(&SlideshowView::advance, config.slideshowDelay);
}

void SlideshowView::scheduleNextShuffled()
{
    if (!mayArm())
        return;
    // Deliberately no cancel here: only the sequential path replaces a pending advance.
    arm(&SlideshowView::advance, config.slideshowDelay);
}

void SlideshowView::scheduleNext() { config.randomOrder ? scheduleNextShuffled() : scheduleNextSequential(); }

// Steps

bool SlideshowView::follow(OrderStep step)
{
    switch (step) {
    case OrderStep::moved:
    case OrderStep::wrapped:
        return true;
    case OrderStep::clearRunning:
        services.manager.setSlideshowRunning(false); // the flag's observer runs the stop path
        return false;
    case OrderStep::stop:
        // Live mode can empty the queue of a shuffled show; that ends the show, not the program.
        if (!order.isValid())
            logError(QStringLiteral("[Slideshow] Ending the show: the shuffled order no longer fits the queue."));
        stopSlideshow();
        return false;
    }
    return false;
}

// The timer's step.
void SlideshowView::advance()
{
    const int before = order.current();
    const OrderStep step = order.afterDelay(count(), config.loopSlideshow);
    if (!follow(step))
        return;
    showIfMoved(before);
    addToHistory();
    refill(PreloadPolicy::afterDelay(order, step, count()));
    if (services.manager.isSlideshowRunning())
        scheduleNext();
}

void SlideshowView::advanceAfterResume()
{
    const int before = order.current();
    if (!follow(order.afterResume(count(), config.loopSlideshow)))
        return;
    showIfMoved(before);
    addToHistory();
    if (services.manager.isSlideshowRunning())
        scheduleNext();
}

void SlideshowView::addToHistory()
{
    if (!order.isValid()) {
        follow(OrderStep::stop);
        return;
    }
    history.record(order.current());
}

void SlideshowView::goForward()
{
    const int before = order.current();
    if (history.atEnd()) {
        const OrderStep step = order.afterArrow(count(), config.loopSlideshow, history);
        if (follow(step)) {
            showIfMoved(before);
            refill(PreloadPolicy::afterArrowForward(order, count()));
        }
        addToHistory(); // also after a stop on the way: the current index is recorded once more
        return;
    }
    // An index no longer in a shuffled order moves the history, not the picture.
    if (order.jumpTo(*history.forward()))
        showIfMoved(before);
}

void SlideshowView::goBack()
{
    const std::optional<int> index = history.back();
    if (!index)
        return; // no wrap at the start of the history
    const int before = order.current();
    if (order.jumpTo(*index))
        showIfMoved(before);
    refill(PreloadPolicy::afterArrowBack(order, count()));
}

void SlideshowView::goForwardByArrow() { arrowStep(&SlideshowView::goForward); }

void SlideshowView::goBackByArrow() { arrowStep(&SlideshowView::goBack); }

// Both arrows, in every mode: the step, then a full delay for the new item. The scheduling tests
// keep a paused show paused.
void SlideshowView::arrowStep(void (SlideshowView::*step)())
{
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    (this->*step)();
    if (!config.isManualMode)
        scheduleNext();
}

// Pause and keys

void SlideshowView::pauseSlideshow()
{
    paused = true;
    videoPlaying = false;
    countdown.freeze();
    if (!config.isManualMode)
        indicators.paused();
    services.audio.pausePlayer();
    logInfo(QStringLiteral("Audio playback paused"));
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    Q_EMIT pausedChanged();
}

void SlideshowView::resumeSlideshow()
{
    paused = false;
    videoPlaying = true;
    if (config.isManualMode)
        indicators.hidePause();
    else
        indicators.resumed();
    Q_EMIT pausedChanged();
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    if (!config.isManualMode)
        arm(&SlideshowView::advanceAfterResume, std::max(countdown.remaining(), 0.1));
    countdown.resume();
    services.audio.play();
}

void SlideshowView::handleKey(int key)
{
    if (hasStopped)
        return;
    switch (key) {
    case Qt::Key_Space:
        logInfo(QStringLiteral("Spacebar pressed"));
        togglePause();
        break;
    case Qt::Key_Escape:
        logInfo(QStringLiteral("ESC key pressed."));
        stopSlideshow();
        break;
    case Qt::Key_Right:
        stepForward();
        break;
    case Qt::Key_Left:
        stepBack();
        break;
    case Qt::Key_T:
        timerShown = !timerShown;
        Q_EMIT overlaysChanged();
        break;
    case Qt::Key_I:
        infoShown = !infoShown;
        rebuildInfo();
        Q_EMIT overlaysChanged();
        break;
    case Qt::Key_F:
        if (toggleFullScreen)
            toggleFullScreen();
        break;
    case Qt::Key_R:
        if (const IdentifiableImage* item = itemAt(order.current()))
            services.revealer.reveal(item->filePath());
        break;
    default:
        break;
    }
}

QString SlideshowView::countdownText() const { return QString::asprintf("%.0f", std::ceil(countdown.remaining())); }

void SlideshowView::rebuildInfo()
{
    const IdentifiableImage* item = itemAt(order.current());
    if (!infoShown || !item)
        return;
    info = infoBoxText(*item, services.metadata.exifData(*item));
}

// Clips

void SlideshowView::onVideoDismantled() { logInfo(QStringLiteral("VideoPlayerView dismantled")); }

void SlideshowView::onVideoEnded()
{
    if (hasStopped || config.isManualMode ||
        services.settings.value(Settings::videoPlaybackMode) != QLatin1String("fullVideo"))
        return;
    logInfo(QStringLiteral("[SlideshowView] Video ended, advancing to next item"));
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    if (!videoPlaying) {
        videoPlaying = true;
        Q_EMIT pausedChanged();
    }
    goForwardByArrow();
}

SlideshowView::OnScreen SlideshowView::onScreen() const
{
    const IdentifiableImage* item = itemAt(order.current());
    return {order.current(), item ? item->id() : QUuid()};
}

void SlideshowView::showIfMoved(int before)
{
    if (order.current() != before)
        showNewCurrent();
}

void SlideshowView::showIfChanged(const OnScreen& before)
{
    const OnScreen now = onScreen();
    if (now.index != before.index || now.id != before.id)
        showNewCurrent();
}

void SlideshowView::showNewCurrent()
{
    countdown.start();
    showCurrent();
    rebuildInfo();
    Q_EMIT currentIndexChanged();
    Q_EMIT overlaysChanged();
}

void SlideshowView::showCurrent()
{
    slide = SlidePresentation::choose(itemAt(order.current()), config.transitionType, config.imageScalingMode,
                                      services.random);
}

// Ending

void SlideshowView::onRunningChanged(bool running)
{
    if (running)
        return;
    stopSlideshow();
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    countdown.stop();
    stopAudioIfPlaying();
}

void SlideshowView::stopAudioIfPlaying()
{
    if (!services.audio.isPlaying())
        return;
    services.audio.stopPlayer();
    logInfo(QStringLiteral("Audio playback stopped"));
}

void SlideshowView::stopSlideshow()
{
    if (hasStopped)
        return;
    hasStopped = true;
    logInfo(QStringLiteral("stopSlideshow() method executed"));
    Q_EMIT nowPlayingChanged();
    if (services.audio.trackCount() > 0) {
        services.audio.pausePlayer();
        logInfo(QStringLiteral("Audio playback paused"));
    }
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    if (services.manager.isSlideshowRunning())
        services.manager.setSlideshowRunning(false);

    if (!closePlayer) {
        logError(QStringLiteral("[Slideshow] Could not get keyWindow."));
        cleanup();
        return;
    }
    cleanup();
    logInfo(QStringLiteral("[Slideshow] Closing window directly."));
    closePlayer();
    // As it stands: the playlist is started right before it is stopped, so the log ends a show
    // with "Audio playback started".
    services.audio.play();
    services.audio.stopPlayer();
    logInfo(QStringLiteral("Audio playback stopped"));
}

void SlideshowView::cleanup()
{
    logInfo(QStringLiteral("[Slideshow] Performing cleanup (caches, sleep prevention)."));
    services.caches.cancelPreloads();
    services.caches.clearPictures();
    services.caches.clearThumbnails();
    services.caches.clearVideoThumbnails();
    sleepPreventer.allowSleep();
    ScreensaverEventMonitor::dispose(screensaverEventMonitor);
    if (folderMonitor->watchedFolder())
        folderMonitor->stopWatching();
}

void SlideshowView::onDisappear()
{
    stopSlideshow();
    sleepPreventer.allowSleep();
    countdown.stop();
    stopAudioIfPlaying();
}

// Live mode

// Watches while live mode is on with a folder; a new folder while it stays on is watched instead
// of the old one.
void SlideshowView::followLiveMode()
{
    if (hasStopped)
        return;
    const std::optional<QUrl>& folder = services.manager.watchedFolder();
    if (services.manager.isLiveModeActive() && folder) {
        if (folderMonitor->watchedFolder() != folder)
            folderMonitor->startWatching(*folder);
    } else if (folderMonitor->watchedFolder()) {
        folderMonitor->stopWatching();
    }
}

bool SlideshowView::newPhotosGoNext() const
{
    return services.settings.value(Settings::liveModeNewPhotosBehavior) == QLatin1String("next");
}

void SlideshowView::fitShuffledOrder()
{
    isLiveModeUpdate = true;
    order.fitToChangedQueue(
        count(), [this](int index) { return queue->at(index).id(); }, newPhotosGoNext());
    isLiveModeUpdate = false;
}

void SlideshowView::addLiveItems(const QList<IdentifiableImage>& items)
{
    const OnScreen before = onScreen();
    if (newPhotosGoNext())
        queue->insert(std::min(count(), order.current() + 1), items);
    else
        queue->append(items);
    if (config.onNewImagesAdded)
        config.onNewImagesAdded(items);
    if (config.randomOrder)
        fitShuffledOrder();
    // A show that had seen everything is opened again, so the next arrow goes on to the new items
    // instead of ending it.
    const int previous = count() - int(items.size());
    if (history.viewed().size() >= previous && order.isValid())
        history.restartViewed(order.current());
    showIfChanged(before);
    logInfo(QStringLiteral("Added %1 new images to the slideshow").arg(items.size()));
}

void SlideshowView::removeLiveItems(const QSet<QString>& paths)
{
    const OnScreen before = onScreen();
    const int old = count();
    queue->removeIf(
        [&paths](const IdentifiableImage& item) { return paths.contains(QDir::cleanPath(item.filePath())); });
    const int removed = old - count();
    if (removed == 0)
        return;
    if (config.onImagesRemoved)
        config.onImagesRemoved(removed);
    // Indices are not renumbered, neither the one on screen nor the history's: only a range is
    // repaired. A shuffled show that lost everything ends at its next step.
    if (!config.randomOrder) {
        if (order.current() >= count() && count() != 0)
            order.setCurrent(count() - 1);
        else if (count() == 0)
            services.manager.setSlideshowRunning(false);
    } else {
        fitShuffledOrder();
    }
    logInfo(QStringLiteral("[Slideshow] Removed %1 images. Current index now: %2").arg(removed).arg(order.current()));
    if (!hasStopped)
        showIfChanged(before);
}

void SlideshowView::refill(const Refill& refill)
{
    if (refill.clear) {
        services.caches.clearPictures();
        services.caches.clearVideoThumbnails();
    }
    QList<IdentifiableImage> items;
    for (int index : refill.preload)
        if (const IdentifiableImage* item = itemAt(index))
            items.append(*item);
    if (!items.isEmpty())
        services.caches.preload(items);
}

} // namespace tb
