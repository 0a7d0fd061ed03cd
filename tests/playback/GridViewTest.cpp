#include "playback/GridView.h"
#include "PlayerHarness.h"

#include <gtest/gtest.h>

#include <random>

using namespace tb;
using namespace tb::test;

namespace {

GridConfiguration grid(int rows, int columns, bool loop = false, bool sync = false, double delay = 3.0)
{
    GridConfiguration c;
    c.rows = rows;
    c.columns = columns;
    c.loopSlideshow = loop;
    c.syncGridTransitions = sync;
    c.delay = delay;
    return c;
}

int count(const LogCapture& log, LogLevel level, const char* message)
{
    return int(log.messages(level).count(QString::fromUtf8(message)));
}

QSet<int> setOf(const QList<int>& values) { return QSet<int>(values.begin(), values.end()); }

} // namespace

TEST(GridView, FirstGridPutsTheStartingItemFirstAndLeavesSpareCellsEmpty)
{
    for (int items : {2, 4, 12}) {
        SCOPED_TRACE(items);
        GridHarness h(items);
        GridView& p = h.start(items, grid(2, 2), 1);
        ASSERT_EQ(p.currentIndices().size(), std::min(items, 4));
        EXPECT_EQ(p.currentIndices()[0], 1);
        EXPECT_EQ(setOf(p.currentIndices()).size(), p.currentIndices().size()) << "no item twice";
        EXPECT_EQ(p.allDisplayedImages(), setOf(p.currentIndices()));
        const QStringList sources = p.cellSources();
        ASSERT_EQ(sources.size(), 4);
        EXPECT_EQ(sources.count(QString()), 4 - p.currentIndices().size());
        EXPECT_TRUE(p.isTicking());
    }
}

// Four items fill a 2x2 grid: the first tick finds everything shown and ends the show, though no
// cell ever changed. The playlist is paused, not stopped.
TEST(GridView, AFullGridWithoutLoopEndsAtTheFirstTick)
{
    LogCapture log;
    GridHarness h;
    h.audio.tracks = 2;
    GridView& p = h.start(4, grid(2, 2));
    const QList<int> first = p.currentIndices();
    h.scheduler.advance(2.9);
    EXPECT_TRUE(h.manager.isSlideshowRunning());
    h.scheduler.advance(0.1);
    EXPECT_FALSE(h.manager.isSlideshowRunning());
    EXPECT_TRUE(p.hasStoppedSlideshow());
    EXPECT_EQ(p.currentIndices(), first);
    EXPECT_EQ(h.closes, 1);
    EXPECT_EQ(h.scheduler.pendingCount(), 0);
    EXPECT_EQ(h.audio.calls, QStringList{QStringLiteral("pause")});
    EXPECT_EQ(count(log, LogLevel::Info, "[GridView Slideshow] Invalidating timer"), 1);
    EXPECT_EQ(count(log, LogLevel::Info, "[GridView Slideshow] stopSlideshow() method executed"), 1);
    EXPECT_EQ(count(log, LogLevel::Info, "Audio playback paused"), 1);
    EXPECT_EQ(count(log, LogLevel::Info, "[GridView Slideshow] Performing cleanup (caches)."), 1);
    EXPECT_GE(h.caches.pictureClears, 1);
    EXPECT_GE(h.caches.thumbnailClears, 1);
    EXPECT_EQ(h.caches.videoThumbnailClears, 0) << "the clean-up empties pictures and thumbnails only";
}

// Ten items on 2x2, one cell per tick: six ticks bring the six unseen pictures, each to a cell
// that had no turn yet in its round, and the seventh tick ends the show. Progress goes to the
// console, not to the log.
TEST(GridView, StaggeredTicksShowEveryPictureOnceThenEnd)
{
    LogCapture log;
    GridHarness h(7);
    GridView& p = h.start(10, grid(2, 2));
    QSet<int> seen = setOf(p.currentIndices());
    for (int tick = 1; tick <= 6; ++tick) {
        const QList<int> before = p.currentIndices();
        const QSet<int> turnsBefore = p.updatedGridPositions();
        h.scheduler.advance(3.0);
        int changed = -1;
        for (int cell = 0; cell < 4; ++cell)
            if (p.currentIndices()[cell] != before[cell])
                changed = cell;
        ASSERT_GE(changed, 0) << "tick " << tick;
        EXPECT_FALSE(seen.contains(p.currentIndices()[changed])) << "tick " << tick;
        seen.insert(p.currentIndices()[changed]);
        if (turnsBefore.size() < 4) {
            EXPECT_FALSE(turnsBefore.contains(changed)) << "tick " << tick;
        }
        EXPECT_TRUE(h.manager.isSlideshowRunning());
    }
    EXPECT_EQ(seen.size(), 10);
    h.scheduler.advance(3.0);
    EXPECT_FALSE(h.manager.isSlideshowRunning());
    EXPECT_EQ(p.gridHistory().size(), 1) << "ticks save no state";
    EXPECT_TRUE(log.messages(LogLevel::Info).filter(QStringLiteral("Progress")).isEmpty());
    EXPECT_TRUE(log.messages(LogLevel::Info).filter(QStringLiteral("Grid update")).isEmpty());
}

TEST(GridView, EmptyQueueWithLoopReportsEachTickAndGoesOn)
{
    LogCapture log;
    GridHarness h;
    GridView& p = h.start(0, grid(1, 2, true));
    h.scheduler.advance(9.0);
    EXPECT_EQ(count(log, LogLevel::Error, "Failed to select grid position to update"), 3);
    EXPECT_TRUE(h.manager.isSlideshowRunning());
    EXPECT_TRUE(p.currentIndices().isEmpty());
}

// The cache rule: a 2x2 staggered show empties the pictures each time the count of shown
// pictures reaches a multiple of ten (two grids would be only eight).
TEST(GridView, CachesAreEmptiedEveryTenPicturesShown)
{
    GridHarness h(3);
    GridView& p = h.start(40, grid(2, 2));
    QList<int> clearedAt;
    int clears = 0;
    for (int tick = 0; tick < 20; ++tick) {
        h.scheduler.advance(3.0);
        if (h.caches.pictureClears != clears) {
            clears = h.caches.pictureClears;
            clearedAt.append(int(p.allDisplayedImages().size()));
        }
    }
    EXPECT_EQ(clearedAt, (QList<int>{10, 20}));
    EXPECT_EQ(h.caches.thumbnailClears, 2);
}

// Sync: every cell changes at once, with no repeats; a right arrow at the end of the history
// saves a state, and the 51st state pushes the first out.
TEST(GridView, ManualSyncRightArrowSavesStatesUpToFifty)
{
    GridHarness h(5);
    GridConfiguration c = grid(3, 3, true, true);
    c.isManualMode = true;
    GridView& p = h.start(200, c);
    EXPECT_FALSE(p.isTicking());
    const QList<int> second = [&] {
        p.handleKey(Qt::Key_Right);
        return p.currentIndices();
    }();
    EXPECT_EQ(setOf(second).size(), 9);
    EXPECT_TRUE((setOf(second) & setOf(p.gridHistory().first())).isEmpty()) << "all nine cells are new";
    for (int i = 2; i < GridView::historyLimit; ++i)
        p.handleKey(Qt::Key_Right);
    EXPECT_EQ(p.gridHistory().size(), 50);
    EXPECT_EQ(p.historyIndex(), 49);
    p.handleKey(Qt::Key_Right);
    EXPECT_EQ(p.gridHistory().size(), 50);
    EXPECT_EQ(p.historyIndex(), 49);
    EXPECT_EQ(p.gridHistory().first(), second) << "the first state went";
    EXPECT_FALSE(p.isTicking()) << "manual: no timer";

    // Back through saved states and forward again without drawing anything new.
    const QList<int> last = p.currentIndices();
    p.handleKey(Qt::Key_Left);
    p.handleKey(Qt::Key_Left);
    EXPECT_EQ(p.currentIndices(), p.gridHistory()[47]);
    p.handleKey(Qt::Key_Right);
    p.handleKey(Qt::Key_Right);
    EXPECT_EQ(p.currentIndices(), last);
    EXPECT_EQ(p.gridHistory().size(), 50);
}

// The left arrow at the first state changes nothing but starts the wait again; a resume waits
// the whole delay, however much of it had passed.
TEST(GridView, LeftArrowAtTheStartAndResumeRestartTheWholeDelay)
{
    GridHarness h(2);
    GridView& p = h.start(30, grid(2, 2));
    const QList<int> first = p.currentIndices();
    h.scheduler.advance(2.0);
    p.handleKey(Qt::Key_Left);
    EXPECT_EQ(p.currentIndices(), first);
    h.scheduler.advance(2.9);
    EXPECT_EQ(p.currentIndices(), first);
    h.scheduler.advance(0.1);
    EXPECT_NE(p.currentIndices(), first);

    const QList<int> second = p.currentIndices();
    h.scheduler.advance(2.0);
    p.handleKey(Qt::Key_Space);
    EXPECT_TRUE(p.isPaused());
    EXPECT_TRUE(p.showPauseInfo());
    h.scheduler.advance(10.0);
    EXPECT_EQ(p.currentIndices(), second) << "no tick while paused";
    p.handleKey(Qt::Key_Space);
    EXPECT_FALSE(p.isPaused());
    EXPECT_TRUE(p.showResumeInfo());
    h.scheduler.advance(2.9);
    EXPECT_EQ(p.currentIndices(), second);
    EXPECT_FALSE(p.showResumeInfo()) << "the label clears itself after a second";
    h.scheduler.advance(0.1);
    EXPECT_NE(p.currentIndices(), second);
}

TEST(GridView, CellsFollowTheQueueAndOtherKeysDoNothing)
{
    GridHarness h;
    GridView& p = h.start(4, grid(1, 2));
    int toggles = 0;
    p.setToggleFullScreen([&] { ++toggles; });
    const QList<int> shown = p.currentIndices();
    for (int key : {Qt::Key_T, Qt::Key_I, Qt::Key_R, Qt::Key_A})
        p.handleKey(key);
    EXPECT_EQ(p.currentIndices(), shown);
    EXPECT_FALSE(p.isPaused());
    EXPECT_EQ(toggles, 0);
    p.handleKey(Qt::Key_F);
    EXPECT_EQ(toggles, 1);

    // The queue shrinks under the show: a cell whose index no longer exists is empty.
    const int highest = std::max(shown[0], shown[1]);
    QSet<QUuid> tail;
    for (int i = highest; i < h.queue->size(); ++i)
        tail.insert(h.queue->at(i).id());
    h.queue->remove(tail);
    const QStringList sources = p.cellSources();
    EXPECT_EQ(sources.count(QString()), 1);
    h.queue->clear();
    EXPECT_EQ(p.cellSources().count(QString()), 2);
    h.scheduler.advance(3.0); // everything "shown" of an empty queue: the end
    EXPECT_TRUE(p.hasStoppedSlideshow());
}

// Random ticks, keys and a shrinking queue over every grid size and mode: the three history lists
// keep one length of at most fifty with the index inside; in a round no picture comes twice while
// unshown ones remain, and no cell changes twice before every cell had its turn; a show stops at
// most once and leaves nothing armed.
TEST(GridViewProperties, InvariantsHoldUnderRandomTicksKeysAndShrinking)
{
    std::mt19937_64 dice(20261123);
    constexpr int shows = 400;
    constexpr int eventsPerShow = 60;
    for (int show = 0; show < shows; ++show) {
        LogCapture log;
        GridHarness h(dice());
        const int rows = 1 + int(dice() % 3);
        GridConfiguration c = grid(rows, rows == 1 ? 2 : rows, dice() % 2, dice() % 2, 0.5 + double(dice() % 30) / 10);
        c.isManualMode = dice() % 5 == 0;
        const int items = int(dice() % 41);
        GridView& p = h.start(items, c);
        SCOPED_TRACE(testing::Message() << "show " << show << ": " << items << " items, " << c.rows << "x" << c.columns
                                        << ", loop " << c.loopSlideshow << ", sync " << c.syncGridTransitions
                                        << ", manual " << c.isManualMode);
        for (int e = 0; e < eventsPerShow; ++e) {
            const QList<int> cellsBefore = p.currentIndices();
            const QSet<int> shownBefore = p.allDisplayedImages();
            const QSet<int> turnsBefore = p.updatedGridPositions();
            const int n = int(h.queue->size());
            bool drew = false;
            switch (dice() % 8) {
            case 0:
            case 1:
            case 2:
                if (h.scheduler.nextDueIn() >= 0) {
                    drew = p.isTicking() && !p.isPaused() && h.scheduler.nextDueIn() == c.delay;
                    h.scheduler.advance(h.scheduler.nextDueIn());
                }
                break;
            case 3:
                drew = p.historyIndex() == p.gridHistory().size() - 1;
                p.handleKey(Qt::Key_Right);
                break;
            case 4:
                p.handleKey(Qt::Key_Left);
                break;
            case 5:
                p.handleKey(Qt::Key_Space);
                break;
            case 6:
                if (dice() % 4 == 0 && n > 0) {
                    const QUuid gone = h.queue->at(qsizetype(dice() % quint64(n))).id();
                    h.queue->remove({gone});
                }
                break;
            default:
                if (dice() % 15 == 0)
                    p.handleKey(Qt::Key_Escape);
                break;
            }
            ASSERT_EQ(p.gridHistory().size(), p.allDisplayedImagesHistory().size());
            ASSERT_EQ(p.gridHistory().size(), p.updatedGridPositionsHistory().size());
            ASSERT_LE(p.gridHistory().size(), GridView::historyLimit);
            ASSERT_GE(p.historyIndex(), 0);
            ASSERT_LT(p.historyIndex(), p.gridHistory().size());
            ASSERT_EQ(p.cellSources().size(), c.rows * c.columns);

            // A draw within a round (nothing reset, nothing ended).
            const bool sameRound = drew && !p.hasStoppedSlideshow() && shownBefore.size() < n;
            if (sameRound && p.currentIndices() != cellsBefore) {
                QSet<int> unshown;
                for (int i = 0; i < n; ++i)
                    if (!shownBefore.contains(i))
                        unshown.insert(i);
                for (int cell = 0; cell < cellsBefore.size(); ++cell) {
                    const int now = p.currentIndices()[cell];
                    if (now != cellsBefore[cell] && !unshown.isEmpty()) {
                        ASSERT_TRUE(unshown.contains(now)) << "picture " << now << " came twice in a round";
                    }
                }
                if (!c.syncGridTransitions && turnsBefore.size() < cellsBefore.size()) {
                    ASSERT_EQ(p.updatedGridPositions().size(), turnsBefore.size() + 1) << "a cell changed twice";
                }
            }
            ASSERT_LE(count(log, LogLevel::Info, "[GridView Slideshow] stopSlideshow() method executed"), 1);
            if (p.hasStoppedSlideshow()) {
                ASSERT_FALSE(p.isTicking());
                ASSERT_FALSE(h.manager.isSlideshowRunning());
            }
        }
        if (p.hasStoppedSlideshow()) {
            h.scheduler.advance(2.0); // the indicators' last second
            EXPECT_EQ(h.scheduler.pendingCount(), 0) << "nothing armed after the stop";
            EXPECT_EQ(h.closes, 1);
        }
    }
}
