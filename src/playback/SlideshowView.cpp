#include "SlideshowView.h"

#include "PictureProvider.h"
#include "SlideshowManager.h"
#include "audio/SlideshowAudio.h"
#include "core/Logger.h"
#include "core/RandomSource.h"
#include "core/SettingsStore.h"
#include "media/ImageLoader.h"
#include "media/PlaybackCaches.h"
#include "media/Queue.h"

#include <QFile>

#include <algorithm>
#include <numeric>

namespace tb {

namespace {
constexpr double countdownTick = 0.1;
constexpr double indicatorDuration = 1.0;
constexpr double shuffledFirstArmDelay = 0.1;
constexpr int preloadCount = 5;
} // namespace

SlideshowView::SlideshowView(std::shared_ptr<Queue> queue, SlideshowConfiguration configuration,
                             PlayerServices services, QObject* parent)
    : QObject(parent),
      queue(std::move(queue)),
      config(std::move(configuration)),
      services(services),
      sleepPreventer(services.sleepInhibitor)
{
    connect(&services.manager, &SlideshowManager::isSlideshowRunningChanged, this, &SlideshowView::onRunningChanged);
    // What the window shows is known before it loads, so its first frame is already right.
    background = services.settings.loadColor(Settings::backgroundColorData, Qt::black);
    choosePresentation();
}

SlideshowView::~SlideshowView()
{
    services.scheduler.cancel(slideshowWorkItem);
    services.scheduler.cancel(timer);
    for (TaskId task : helperTasks)
        services.scheduler.cancel(task);
}

void SlideshowView::later(double seconds, std::function<void()> fn)
{
    // Forget finished tasks so a long show does not collect ids.
    helperTasks.removeIf([this](TaskId task) { return !services.scheduler.isPending(task); });
    helperTasks.append(services.scheduler.after(seconds, std::move(fn)));
}

const QList<IdentifiableImage>& SlideshowView::images() const { return queue->items(); }

QUrl SlideshowView::currentUrl() const
{
    return current >= 0 && current < images().size() ? images()[current].url() : QUrl();
}

// Start-up

void SlideshowView::onAppear()
{
    logInfo(QStringLiteral("[Slideshow] View appeared"));
    sleepPreventer.preventSleep();

    if (services.manager.isSlideshowRunning()) {
        const auto startAt = [this]() -> std::optional<int> {
            if (!config.startingImageId)
                return std::nullopt;
            for (int i = 0; i < images().size(); ++i)
                if (images()[i].id() == *config.startingImageId)
                    return i;
            return std::nullopt;
        }();
        if (!config.randomOrder) {
            if (startAt)
                setCurrentIndex(*startAt);
            if (!config.isManualMode)
                scheduleNextSequential();
        } else {
            logInfo(QStringLiteral("[Slideshow] Initializing shuffle mode with %1 images").arg(images().size()));
            shuffled = freshShuffle();
            if (startAt) {
                const auto position = shuffled.indexOf(*startAt);
                if (position >= 0)
                    std::swap(shuffled[0], shuffled[position]);
            }
            shuffledPosition = 0;
            if (!guard(!shuffled.isEmpty(), "the shuffled order is empty"))
                return;
            setCurrentIndex(shuffled[0]);
            // The first shuffled item deliberately stays about 0.1 s longer than the others.
            if (!config.isManualMode)
                later(shuffledFirstArmDelay, [this] { scheduleNextShuffled(); });
        }
    }

    setRemainingTime(config.slideshowDelay);
    startCountdown();
    startCountdown(); // as it stands: the second start replaces the first timer

    history = {current};
    historyPosition = 0;
    viewed = {current};
}

// Arming

bool SlideshowView::mayArm() const
{
    if (!services.manager.isSlideshowRunning() || paused || config.isManualMode)
        return false;
    // A clip played to its end drives the show itself.
    if (current >= 0 && current < images().size() && images()[current].isVideo() &&
        services.settings.value(Settings::videoPlaybackMode) == QLatin1String("fullVideo"))
        return false;
    return true;
}

void SlideshowView::arm(void (SlideshowView::*step)(), double delay)
{
    slideshowWorkItem = services.scheduler.after(delay, [this, step] {
        slideshowWorkItem = 0;
        runStep(step);
    });
}

void SlideshowView::scheduleNextSequential()
{
    if (!mayArm())
        return;
    services.scheduler.cancel(slideshowWorkItem);
    arm(&SlideshowView::advanceSequential, config.slideshowDelay);
}

void SlideshowView::scheduleNextShuffled()
{
    if (!mayArm())
        return;
    // Deliberately no cancel here: only the sequential path replaces a pending advance.
    arm(&SlideshowView::advanceShuffled, config.slideshowDelay);
}

// Every change of item goes through here; the transition is laid over it by the window.
void SlideshowView::runStep(void (SlideshowView::*step)()) { (this->*step)(); }

// Timed steps

void SlideshowView::advanceSequential()
{
    const int count = int(images().size());
    if (current < count - 1) {
        setCurrentIndex(current + 1);
        addToHistory();
        if (current % 10 == 0) {
            clearCachesForRefill();
            preloadFrom(current);
        }
    } else if (config.loopSlideshow) {
        setCurrentIndex(0);
        addToHistory();
        clearCachesForRefill();
        preloadFrom(0);
    } else {
        logInfo(QStringLiteral("SlideshowView: Slideshow ended"));
        services.manager.setSlideshowRunning(false); // the flag's observer runs the stop path
    }
    if (services.manager.isSlideshowRunning())
        scheduleNextSequential();
}

void SlideshowView::advanceShuffled()
{
    // Live mode can empty the queue of a shuffled show; that ends the show, not the program.
    if (!guard(!shuffled.isEmpty(), "the shuffled order is empty"))
        return;
    const int next = (shuffledPosition + 1) % int(shuffled.size());
    if (!config.loopSlideshow && next == 0) {
        logInfo(QStringLiteral("[SlideshowView] Reached end of shuffled images. Stopping slideshow (no loop)."));
        stopSlideshow();
        return;
    }
    shuffledPosition = next;
    if (shuffledPosition == 0) {
        hasCompletedLoop = true;
        clearCachesForRefill();
    }
    if (config.loopSlideshow && hasCompletedLoop) {
        logInfo(
            QStringLiteral("[Slideshow] Re-shuffling after completing full cycle of %1 images").arg(images().size()));
        // The new order is not compared with the old: the item just shown may come first again.
        shuffled = freshShuffle();
        hasCompletedLoop = false;
        preloadPositions(0, preloadCount);
        if (!guard(!shuffled.isEmpty(), "the shuffled order is empty"))
            return;
    }
    if (!guard(shuffledPosition < shuffled.size(), "the shuffled position is past the order"))
        return;
    setCurrentIndex(shuffled[shuffledPosition]);
    addToHistory();
    if (current % 10 == 0) {
        clearCachesForRefill();
        preloadPositions(shuffledPosition, preloadCount);
    }
    if (services.manager.isSlideshowRunning())
        scheduleNextShuffled();
}

void SlideshowView::advanceAfterResume()
{
    const int count = int(images().size());
    if (!config.randomOrder) {
        if (current >= count - 1) {
            if (config.loopSlideshow) {
                setCurrentIndex(0);
                addToHistory();
            } else {
                services.manager.setSlideshowRunning(false);
            }
        } else {
            setCurrentIndex(current + 1);
            addToHistory();
        }
    } else {
        if (!guard(!shuffled.isEmpty(), "the shuffled order is empty"))
            return;
        shuffledPosition = (shuffledPosition + 1) % int(shuffled.size());
        setCurrentIndex(shuffled[shuffledPosition]);
        addToHistory();
    }
    if (services.manager.isSlideshowRunning())
        config.randomOrder ? scheduleNextShuffled() : scheduleNextSequential();
}

// History

void SlideshowView::addToHistory()
{
    int index = current;
    if (config.randomOrder) {
        if (!guard(shuffledPosition >= 0 && shuffledPosition < shuffled.size(),
                   "the shuffled position is past the order"))
            return;
        index = shuffled[shuffledPosition];
    }
    if (historyPosition < history.size() - 1)
        history.resize(historyPosition + 1);
    history.append(index);
    historyPosition = int(history.size()) - 1;
    viewed.insert(index);
    if (history.size() > historyLimit) {
        const auto excess = history.size() - historyLimit;
        history.remove(0, excess);
        historyPosition -= int(excess);
    }
}

void SlideshowView::goForward()
{
    if (historyPosition >= history.size() - 1) {
        moveToNext();
        addToHistory(); // also after a stop on the way: the current index is recorded once more
        return;
    }
    ++historyPosition;
    const int index = history[historyPosition];
    if (config.randomOrder) {
        const auto position = shuffled.indexOf(index);
        if (position < 0)
            return; // the history moved, the picture stays
        shuffledPosition = int(position);
    }
    setCurrentIndex(index);
}

void SlideshowView::moveToNext()
{
    const int count = int(images().size());
    if (!config.randomOrder) {
        if (viewed.size() >= count) {
            if (!config.loopSlideshow) {
                logInfo(QStringLiteral("[SlideshowView] All images viewed. Stopping slideshow (no loop)."));
                stopSlideshow();
                return;
            }
            viewed = {current};
        }
        if (current >= count - 1) {
            if (!config.loopSlideshow) {
                logInfo(QStringLiteral("[SlideshowView] Reached end of images. Stopping slideshow (no loop)."));
                stopSlideshow();
                return;
            }
            setCurrentIndex(0);
        } else {
            setCurrentIndex(current + 1);
        }
    } else {
        if (!guard(shuffledPosition >= 0 && shuffledPosition < shuffled.size(),
                   "the shuffled position is past the order"))
            return;
        if (viewed.size() >= count) {
            if (!config.loopSlideshow) {
                logInfo(QStringLiteral("[SlideshowView] All images viewed. Stopping slideshow (no loop)."));
                stopSlideshow();
                return;
            }
            viewed = {shuffled[shuffledPosition]};
        }
        if (shuffledPosition >= shuffled.size() - 1) {
            if (!config.loopSlideshow) {
                logInfo(
                    QStringLiteral("[SlideshowView] Reached end of shuffled images. Stopping slideshow (no loop)."));
                stopSlideshow();
                return;
            }
            shuffledPosition = 0; // no re-shuffle on this path
        } else {
            ++shuffledPosition;
        }
        setCurrentIndex(shuffled[shuffledPosition]);
    }
    if (current % 10 == 0) {
        clearCachesForRefill();
        // The window's length comes from the item's index even when shuffled, as it always has.
        const int length = std::min(preloadCount, count - current);
        if (config.randomOrder)
            preloadPositions(shuffledPosition, length);
        else
            preloadFrom(current);
    }
}

void SlideshowView::goBack()
{
    if (historyPosition < 1)
        return; // no wrap at the start of the history
    --historyPosition;
    const int index = history[historyPosition];
    if (config.randomOrder) {
        const auto position = shuffled.indexOf(index);
        if (position >= 0) {
            shuffledPosition = int(position);
            setCurrentIndex(index);
        }
    } else {
        setCurrentIndex(index);
    }
    if (current % 10 == 0) {
        clearCachesForRefill();
        const int count = int(images().size());
        const int position = config.randomOrder ? shuffledPosition : current;
        QList<int> around;
        for (int offset = -std::min(position, 2); offset < std::min(count - current, 3); ++offset) {
            const int at = position + offset;
            if (config.randomOrder) {
                if (at >= 0 && at < shuffled.size())
                    around.append(shuffled[at]);
            } else {
                around.append(at);
            }
        }
        preloadIndices(around);
    }
}

void SlideshowView::goForwardByArrow() { arrowStep(&SlideshowView::goForward); }

void SlideshowView::goBackByArrow() { arrowStep(&SlideshowView::goBack); }

// Both arrows, in every mode: the step, then a full delay for the new item. The scheduling tests
// keep a paused show paused.
void SlideshowView::arrowStep(void (SlideshowView::*step)())
{
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    runStep(step);
    if (!config.isManualMode)
        config.randomOrder ? scheduleNextShuffled() : scheduleNextSequential();
}

// Pause, keys, countdown

void SlideshowView::pauseSlideshow()
{
    paused = true;
    isVideoPlaying = false;
    if (!config.isManualMode)
        showIndicator(pauseInfo);
    services.audio.pausePlayer();
    logInfo(QStringLiteral("Audio playback paused"));
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    Q_EMIT pausedChanged();
}

void SlideshowView::resumeSlideshow()
{
    paused = false;
    isVideoPlaying = true;
    pauseInfo = false;
    if (!config.isManualMode)
        showIndicator(resumeInfo);
    Q_EMIT indicatorsChanged();
    Q_EMIT pausedChanged();
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    if (config.isManualMode) {
        services.audio.play();
        return;
    }
    const double wait = std::max(remaining, 0.1);
    arm(&SlideshowView::advanceAfterResume, wait);
    restartCountdown();
    services.audio.play();
}

void SlideshowView::showIndicator(bool& flag)
{
    flag = true;
    Q_EMIT indicatorsChanged();
    later(indicatorDuration, [this, &flag] {
        flag = false;
        Q_EMIT indicatorsChanged();
    });
}

void SlideshowView::handleKey(int key)
{
    if (hasStopped)
        return;
    switch (key) {
    case Qt::Key_Space:
        logInfo(QStringLiteral("Spacebar pressed"));
        paused ? resumeSlideshow() : pauseSlideshow();
        break;
    case Qt::Key_Escape:
        logInfo(QStringLiteral("ESC key pressed."));
        stopSlideshow();
        break;
    case Qt::Key_Right:
        goForwardByArrow();
        break;
    case Qt::Key_Left:
        goBackByArrow();
        break;
    default:
        break;
    }
}

void SlideshowView::setCurrentIndex(int index)
{
    if (index == current)
        return;
    current = index;
    setRemainingTime(config.slideshowDelay);
    startCountdown();
    choosePresentation();
    Q_EMIT currentIndexChanged();
}

void SlideshowView::choosePresentation()
{
    pictureSizeValue = QSize();
    source.clear();
    if (config.transitionType == TransitionType::kenBurns) {
        kenBurnsZoom = 1.1 + services.random.unit() * 0.15;
        kenBurnsDrift = QPointF(-30 + services.random.unit() * 60, -30 + services.random.unit() * 60);
    }
    if (current < 0 || current >= images().size()) {
        kind = QStringLiteral("none");
        return;
    }
    const IdentifiableImage& item = images()[current];
    if (item.isVideo()) {
        kind = QStringLiteral("video"); // the poster frame, until clips play in the show
        source = PictureProvider::sourceFor(item.url(), true);
        return;
    }
    // A GIF animates on its own, whatever the transition; one that cannot be read is shown as a
    // still picture instead.
    if (item.isGIF() && QFile(item.filePath()).open(QIODevice::ReadOnly)) {
        kind = QStringLiteral("gif");
        source = item.url().toString();
        return;
    }
    source = PictureProvider::sourceFor(item.url(), false);
    if (config.transitionType == TransitionType::kenBurns) {
        kind = QStringLiteral("kenBurns");
    } else if (config.imageScalingMode == ImageScalingMode::bestFit) {
        kind = QStringLiteral("bestFit");
        pictureSizeValue = pictureSize(item.filePath());
    } else {
        kind = config.imageScalingMode == ImageScalingMode::fill ? QStringLiteral("fill") : QStringLiteral("fit");
    }
}

void SlideshowView::setRemainingTime(double seconds)
{
    if (remaining == seconds)
        return;
    remaining = seconds;
    Q_EMIT remainingTimeChanged();
}

void SlideshowView::startCountdown()
{
    setRemainingTime(config.slideshowDelay);
    restartCountdown();
}

void SlideshowView::restartCountdown()
{
    services.scheduler.cancel(timer);
    timer = services.scheduler.every(countdownTick, [this] {
        if (!paused && services.manager.isSlideshowRunning())
            setRemainingTime(std::max(remaining - countdownTick, 0.0));
    });
}

// Ending

void SlideshowView::onRunningChanged(bool running)
{
    if (running)
        return;
    stopSlideshow();
    services.scheduler.cancel(slideshowWorkItem);
    slideshowWorkItem = 0;
    services.scheduler.cancel(timer);
    timer = 0;
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
    services.caches.clearPictures();
    services.caches.clearThumbnails();
    services.caches.clearVideoThumbnails();
    sleepPreventer.allowSleep();
}

void SlideshowView::onDisappear()
{
    stopSlideshow();
    sleepPreventer.allowSleep();
    services.scheduler.cancel(timer);
    timer = 0;
    stopAudioIfPlaying();
}

bool SlideshowView::guard(bool inRange, const char* what)
{
    if (inRange)
        return true;
    logError(QStringLiteral("[Slideshow] Ending the show: %1.").arg(QLatin1String(what)));
    stopSlideshow();
    return false;
}

// Caches

QList<int> SlideshowView::freshShuffle()
{
    QList<int> order(images().size());
    std::iota(order.begin(), order.end(), 0);
    services.random.shuffle(order);
    return order;
}

void SlideshowView::clearCachesForRefill()
{
    services.caches.clearPictures();
    services.caches.clearVideoThumbnails();
}

void SlideshowView::preloadIndices(const QList<int>& indices)
{
    QList<IdentifiableImage> items;
    for (int index : indices)
        if (index >= 0 && index < images().size())
            items.append(images()[index]);
    if (!items.isEmpty())
        services.caches.preload(items);
}

void SlideshowView::preloadFrom(int firstIndex)
{
    QList<int> indices;
    for (int i = firstIndex; i < std::min<int>(firstIndex + preloadCount, int(images().size())); ++i)
        indices.append(i);
    preloadIndices(indices);
}

void SlideshowView::preloadPositions(int firstPosition, int length)
{
    QList<int> indices;
    for (int p = firstPosition; p < firstPosition + length && p < shuffled.size(); ++p)
        indices.append(shuffled[p]);
    preloadIndices(indices);
}

} // namespace tb
