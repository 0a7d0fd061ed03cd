#include "GridView.h"

#include "GlobalPointer.h"
#include "PictureProvider.h"
#include "ScreensaverEventMonitor.h"
#include "SlideshowManager.h"
#include "audio/SlideshowAudio.h"
#include "core/Logger.h"
#include "core/RandomSource.h"
#include "core/SettingsStore.h"
#include "media/PictureCaches.h"
#include "media/Queue.h"

#include <algorithm>
#include <numeric>

namespace tb {

namespace {

// A number as the console lines have always shown it: "3.0", "0.5".
QString secondsText(double value)
{
    QString text = QString::number(value, 'g', 15);
    if (!text.contains(QLatin1Char('.')) && !text.contains(QLatin1Char('e')))
        text += QStringLiteral(".0");
    return text;
}

QString listText(QList<int> values, bool sorted)
{
    if (sorted)
        std::sort(values.begin(), values.end());
    QStringList parts;
    for (int value : values)
        parts.append(QString::number(value));
    return QLatin1Char('[') + parts.join(QStringLiteral(", ")) + QLatin1Char(']');
}

QSet<int> setOf(const QList<int>& values) { return QSet<int>(values.begin(), values.end()); }

QList<int> allIndices(int count)
{
    QList<int> all(count);
    std::iota(all.begin(), all.end(), 0);
    return all;
}

// Ascending, so a seeded random source draws the same picture in every run.
QList<int> without(const QList<int>& all, const QSet<int>& taken)
{
    QList<int> rest;
    for (int value : all)
        if (!taken.contains(value))
            rest.append(value);
    return rest;
}

} // namespace

GridView::GridView(std::shared_ptr<Queue> queue, GridConfiguration configuration, GridServices services,
                   QObject* parent)
    : ShowPlayer(parent),
      queue(std::move(queue)),
      config(configuration),
      services(services),
      indicators(services.scheduler, [this] { Q_EMIT indicatorsChanged(); })
{
    // What the window shows is known before it loads, so its first frame is already right.
    background = services.settings.loadColor(Settings::backgroundColorData, Qt::black);
    connect(&services.manager, &SlideshowManager::isSlideshowRunningChanged, this, &GridView::onRunningChanged);
    connect(this, &GridView::cellsChanged, this, &ShowPlayer::nowPlayingChanged);
    connect(this, &GridView::pausedChanged, this, &ShowPlayer::nowPlayingChanged);
    // A cell shows whatever item its index names now.
    for (auto signal : {&Queue::rowsInserted, &Queue::rowsRemoved, &Queue::rowMoved})
        connect(this->queue.get(), signal, this, &GridView::cellsChanged);
    connect(this->queue.get(), &Queue::wasReset, this, &GridView::cellsChanged);
}

GridView::~GridView() { services.scheduler.cancel(timer); }

QUrl GridView::scene() const { return QUrl(QStringLiteral("qrc:/tallowbrook/playback/qml/GridPlayer.qml")); }

int GridView::count() const { return int(queue->size()); }

const IdentifiableImage* GridView::featuredItem() const
{
    const int index = featured < current.size() ? current[featured] : -1;
    return index >= 0 && index < queue->size() ? &queue->at(index) : nullptr;
}

bool GridView::isTicking() const { return services.scheduler.isPending(timer); }

QStringList GridView::cellSources() const
{
    QStringList sources;
    for (int cell = 0; cell < cells(); ++cell) {
        const int index = cell < current.size() ? current[cell] : -1;
        if (index >= 0 && index < queue->size()) {
            const IdentifiableImage& item = queue->at(index);
            sources.append(PictureProvider::cellSourceFor(item.url(), item.isVideo()));
        } else {
            sources.append(QString());
        }
    }
    return sources;
}

// Start-up: the first grid, with the wanted item in the first cell.

void GridView::onAppear()
{
    const int cellCount = cells();
    const int n = count();
    std::optional<int> wanted;
    if (config.startingImageId) {
        if (const qsizetype at = queue->indexOf(*config.startingImageId); at >= 0)
            wanted = int(at);
    }
    QList<int> indices = allIndices(n);
    if (n >= cellCount) {
        services.random.shuffle(indices);
        if (wanted) {
            const qsizetype at = indices.indexOf(*wanted);
            std::swap(indices[0], indices[at]);
        }
        current = indices.first(cellCount);
    } else {
        // Fewer items than cells: the spare cells stay empty.
        if (wanted && *wanted != 0)
            std::swap(indices[0], indices[*wanted]);
        current = indices;
    }
    displayed = setOf(current);
    saveGridState();
    Q_EMIT cellsChanged();
    printLine(QStringLiteral("Initial currentIndices: ") + listText(current, false));
    printLine(QStringLiteral("Initial allDisplayedImages: ") + listText(displayed.values(), true));
    if (!config.isManualMode)
        setupTimer();
    if (config.screensaverMode && !hasStopped)
        screensaverEventMonitor =
            std::make_unique<ScreensaverEventMonitor>([this] { stopSlideshow(); }, globalPointer());
}

// The tick

void GridView::setupTimer()
{
    if (hasStopped)
        return;
    services.scheduler.cancel(timer);
    printLine(QStringLiteral("Setting up timer with delay ") + secondsText(config.delay));
    timer = services.scheduler.every(config.delay, [this] { tick(); });
}

void GridView::invalidateTimer()
{
    services.scheduler.cancel(timer);
    timer = 0;
}

void GridView::tick()
{
    if (!paused)
        update();
}

void GridView::update() { config.syncGridTransitions ? updateAllCells() : updateOneCell(); }

bool GridView::beginUpdate(bool oneCell, QList<int>& available)
{
    const int n = count();
    if (displayed.size() >= n) {
        if (!config.loopSlideshow) {
            printLine(QStringLiteral("All %1 images have been displayed. Stopping slideshow.").arg(n));
            logInfo(QStringLiteral("[GridView Slideshow] Invalidating timer"));
            invalidateTimer();
            stopSlideshow();
            return false;
        }
        printLine(QStringLiteral("All images shown. Looping - resetting displayed images tracker."));
        displayed = setOf(current);
        updated.clear();
        clearCaches();
    }
    if (oneCell && updated.size() >= current.size())
        updated.clear();
    const QList<int> all = allIndices(n);
    available = without(all, displayed);
    if (available.isEmpty()) {
        // Fewer pictures than cells: repeats are allowed, those on screen last.
        available = config.loopSlideshow ? without(all, setOf(current)) : all;
        if (available.isEmpty())
            available = all;
    }
    return true;
}

void GridView::updateOneCell()
{
    QList<int> available;
    if (!beginUpdate(true, available))
        return;
    const QList<int> free = without(allIndices(int(current.size())), updated);
    int position = 0;
    if (!free.isEmpty()) {
        position = free[qsizetype(services.random.bounded(quint64(free.size())))];
    } else if (!current.isEmpty()) {
        position = int(services.random.bounded(quint64(current.size())));
    } else {
        // Only an empty grid has no cell to change: the queue was empty at the start.
        logError(QStringLiteral("Failed to select grid position to update"));
        return;
    }
    if (available.isEmpty())
        return;
    const int picked = available[qsizetype(services.random.bounded(quint64(available.size())))];
    const int old = current[position];
    current[position] = picked;
    featured = position;
    displayed.insert(picked);
    updated.insert(position);
    Q_EMIT cellsChanged();
    printLine(
        QStringLiteral("Grid update: Position %1 changed from image %2 to %3").arg(position).arg(old).arg(picked));
    printProgress();
    clearCachesEvery(int(current.size()));
}

void GridView::updateAllCells()
{
    QList<int> available;
    if (!beginUpdate(false, available))
        return;
    const int cellCount = cells();
    for (int cell = 0; cell < cellCount; ++cell) {
        if (cell >= current.size() || available.isEmpty())
            continue; // with fewer pictures left than cells, some cells keep theirs
        const int picked = int(available.takeAt(qsizetype(services.random.bounded(quint64(available.size())))));
        current[cell] = picked;
        displayed.insert(picked);
    }
    updated = setOf(allIndices(cellCount));
    featured = 0;
    Q_EMIT cellsChanged();
    printLine(QStringLiteral("Grid sync update: All %1 cells updated").arg(cellCount));
    printProgress();
    clearCachesEvery(cellCount);
}

void GridView::printProgress() const
{
    printLine(QStringLiteral("Progress: %1/%2 images displayed").arg(displayed.size()).arg(count()));
}

void GridView::clearCachesEvery(int cellCount)
{
    if (displayed.size() % std::max(2 * cellCount, 10) == 0)
        clearCaches();
}

void GridView::clearCaches()
{
    services.caches.clearPictures();
    services.caches.clearThumbnails();
}

// History: whole grid states, at most fifty.

void GridView::saveGridState()
{
    if (historyAt < history.size() - 1) {
        const qsizetype keep = historyAt + 1;
        history.resize(keep);
        displayedHistory.resize(keep);
        updatedHistory.resize(keep);
    }
    history.append(current);
    displayedHistory.append(displayed);
    updatedHistory.append(updated);
    historyAt = int(history.size()) - 1;
    if (const qsizetype excess = history.size() - historyLimit; excess > 0) {
        history.remove(0, excess);
        displayedHistory.remove(0, excess);
        updatedHistory.remove(0, excess);
        historyAt -= int(excess);
    }
}

void GridView::restoreGridState()
{
    const QList<int> before = current;
    current = history[historyAt];
    for (int cell = 0; cell < current.size(); ++cell) {
        if (cell >= before.size() || before[cell] != current[cell]) {
            featured = cell;
            break;
        }
    }
    displayed = displayedHistory[historyAt];
    updated = updatedHistory[historyAt];
    Q_EMIT cellsChanged();
}

void GridView::goForwardInGrid()
{
    invalidateTimer();
    if (historyAt >= history.size() - 1) {
        update();
        saveGridState();
    } else {
        ++historyAt;
        restoreGridState();
    }
    if (!paused && !config.isManualMode)
        setupTimer();
}

// At the first state only the timer starts again.
void GridView::goBackInGrid()
{
    invalidateTimer();
    if (historyAt >= 1) {
        --historyAt;
        restoreGridState();
    }
    if (!paused && !config.isManualMode)
        setupTimer();
}

// Pause and keys

void GridView::pauseSlideshow()
{
    paused = true;
    if (!config.isManualMode)
        indicators.paused();
    if (services.audio.trackCount() > 0) {
        services.audio.pausePlayer();
        logInfo(QStringLiteral("Audio playback paused"));
    }
    invalidateTimer();
    Q_EMIT pausedChanged();
}

// The whole delay runs again: a grid does not remember how far its tick had come.
void GridView::resumeSlideshow()
{
    paused = false;
    if (!config.isManualMode)
        indicators.resumed();
    if (services.audio.trackCount() > 0)
        services.audio.play();
    if (!config.isManualMode) {
        invalidateTimer();
        setupTimer();
    }
    Q_EMIT pausedChanged();
}

void GridView::handleKey(int key)
{
    if (!hasStopped) {
        switch (key) {
        case Qt::Key_Escape:
            printLine(QStringLiteral("Key pressed: ESC"));
            stopSlideshow();
            break;
        case Qt::Key_Space:
            togglePause();
            break;
        case Qt::Key_Right:
            stepForward();
            break;
        case Qt::Key_Left:
            stepBack();
            break;
        default:
            break;
        }
    }
    if (key == Qt::Key_F && toggleFullScreen)
        toggleFullScreen();
}

// Ending

void GridView::stopSlideshow()
{
    if (hasStopped)
        return;
    hasStopped = true;
    logInfo(QStringLiteral("[GridView Slideshow] stopSlideshow() method executed"));
    Q_EMIT nowPlayingChanged();
    if (services.audio.trackCount() > 0) {
        // Paused, not stopped: the playlist goes on from here at the next show.
        services.audio.pausePlayer();
        logInfo(QStringLiteral("Audio playback paused"));
    }
    invalidateTimer();
    if (services.manager.isSlideshowRunning())
        services.manager.setSlideshowRunning(false);
    if (!closePlayer) {
        logError(QStringLiteral("[GridView Slideshow] Could not get keyWindow."));
        cleanup();
        return;
    }
    cleanup();
    logInfo(QStringLiteral("[GridView Slideshow] Closing window directly."));
    closePlayer();
}

void GridView::cleanup()
{
    logInfo(QStringLiteral("[GridView Slideshow] Performing cleanup (caches)."));
    services.caches.cancelPreloads();
    clearCaches();
    ScreensaverEventMonitor::dispose(screensaverEventMonitor);
}

void GridView::onRunningChanged(bool running)
{
    if (!running)
        stopSlideshow();
}

void GridView::onDisappear()
{
    invalidateTimer();
    stopSlideshow();
}

} // namespace tb
