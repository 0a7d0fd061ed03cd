#pragma once

#include "PauseIndicators.h"
#include "ScreensaverEventMonitor.h"
#include "ShowPlayer.h"
#include "core/Scheduler.h"

#include <QColor>
#include <QList>
#include <QSet>
#include <QStringList>
#include <QUuid>

#include <memory>
#include <optional>

namespace tb {

class PictureCaches;
class Queue;
class RandomSource;
class SettingsStore;
class SlideshowAudio;
class SlideshowManager;

// What a grid show is opened with; fixed for its life.
struct GridConfiguration {
    // The tick: the show's delay as it is, not divided among the cells.
    double delay = 3.0;
    // Carried for symmetry with the single player; a grid always picks at random.
    bool randomOrder = false;
    bool loopSlideshow = false;
    bool isManualMode = false;
    std::optional<QUuid> startingImageId;
    int rows = 1;
    int columns = 2;
    bool syncGridTransitions = false;
    bool screensaverMode = false;
};

struct GridServices {
    Scheduler& scheduler;
    RandomSource& random;
    SlideshowManager& manager;
    SlideshowAudio& audio;
    PictureCaches& caches;
    SettingsStore& settings;
};

// The player of the side-by-side, 2x2 and 3x3 shows: a fixed set of cells, each showing an item
// of the queue. Each tick of one repeating timer changes one cell (no cell twice before every
// cell had its turn) or, in sync, all cells; no picture comes twice before every picture was
// shown. Pictures are always drawn at random. Its history holds whole grid states, saved at the
// start and by the right arrow only. It holds no display-sleep hold, and at its end only pauses
// the playlist. A plain state machine on the scheduler and the random source; its window only
// draws the cells. Indices refer to the queue as it is now: one that no longer exists (the
// queue shrank) leaves its cell empty.
class GridView final : public ShowPlayer {
    Q_OBJECT
    Q_PROPERTY(int rows READ rows CONSTANT)
    Q_PROPERTY(int columns READ columns CONSTANT)
    Q_PROPERTY(QColor backgroundColor READ backgroundColor CONSTANT)
    // One picture source per cell, empty for an empty cell.
    Q_PROPERTY(QStringList cellSources READ cellSources NOTIFY cellsChanged)
    Q_PROPERTY(bool isPaused READ isPaused NOTIFY pausedChanged)
    Q_PROPERTY(bool showPauseInfo READ showPauseInfo NOTIFY indicatorsChanged)
    Q_PROPERTY(bool showResumeInfo READ showResumeInfo NOTIFY indicatorsChanged)
public:
    GridView(std::shared_ptr<Queue> queue, GridConfiguration configuration, GridServices services,
             QObject* parent = nullptr);
    ~GridView() override;

    QUrl scene() const override;
    void onAppear() override;
    void onDisappear() override;
    // Escape, Space, both arrows and F; other keys do nothing.
    void handleKey(int key) override;

    void goForwardInGrid();
    void goBackInGrid();
    void stepForward() override { goForwardInGrid(); }
    void stepBack() override { goBackInGrid(); }
    void pauseSlideshow() override;
    void resumeSlideshow() override;
    // Ends the show, once.
    void stopSlideshow() override;
    // The picture of the cell that changed last; when several changed at once (the first grid, a
    // tick in sync, a step through the history), the first of them in reading order.
    const IdentifiableImage* featuredItem() const override;

    int rows() const { return config.rows; }
    int columns() const { return config.columns; }
    int cells() const { return config.rows * config.columns; }
    QColor backgroundColor() const { return background; }
    QStringList cellSources() const;
    bool isPaused() const override { return paused; }
    bool showPauseInfo() const { return indicators.showPauseInfo(); }
    bool showResumeInfo() const { return indicators.showResumeInfo(); }
    bool hasStoppedSlideshow() const override { return hasStopped; }

    const QList<int>& currentIndices() const { return current; }
    const QSet<int>& allDisplayedImages() const { return displayed; }
    const QSet<int>& updatedGridPositions() const { return updated; }
    const QList<QList<int>>& gridHistory() const { return history; }
    const QList<QSet<int>>& allDisplayedImagesHistory() const { return displayedHistory; }
    const QList<QSet<int>>& updatedGridPositionsHistory() const { return updatedHistory; }
    int historyIndex() const { return historyAt; }
    bool isTicking() const;

    static constexpr int historyLimit = 50;

Q_SIGNALS:
    void cellsChanged();
    void pausedChanged();
    void indicatorsChanged();

private:
    void setupTimer();
    void invalidateTimer();
    void tick();
    // What both updates do first; false when the show ended instead. Leaves the indices a
    // picture may come from in `available`, in ascending order.
    bool beginUpdate(bool oneCell, QList<int>& available);
    void updateOneCell();
    void updateAllCells();
    void update();
    // Empties the pictures every so many shown, so a long show's memory stays bounded.
    void clearCachesEvery(int cellCount);
    void clearCaches();
    void saveGridState();
    void restoreGridState();
    void onRunningChanged(bool running);
    void cleanup();
    void printProgress() const;
    int count() const;

    std::shared_ptr<Queue> queue;
    const GridConfiguration config;
    GridServices services;
    QColor background = Qt::black;
    PauseIndicators indicators;
    // Only in screen-saver shows: the first input ends the show.
    std::unique_ptr<ScreensaverEventMonitor> screensaverEventMonitor;

    QList<int> current;
    QSet<int> displayed;
    QSet<int> updated;
    QList<QList<int>> history;
    QList<QSet<int>> displayedHistory;
    QList<QSet<int>> updatedHistory;
    int historyAt = -1;
    int featured = 0;
    TaskId timer = 0;
    bool paused = false;
    bool hasStopped = false;
};

} // namespace tb
