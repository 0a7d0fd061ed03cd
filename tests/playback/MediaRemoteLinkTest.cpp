#include "playback/MediaRemoteLink.h"
#include "PlayerHarness.h"

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

using Command = MediaRemote::Command;
using Status = MediaRemote::Status;

QUuid featuredId(const RecordingMediaRemote& remote) { return remote.item ? remote.item->id : QUuid(); }

QList<int> changedCells(const QList<int>& before, const QList<int>& after)
{
    QList<int> cells;
    for (int cell = 0; cell < after.size(); ++cell)
        if (before.value(cell, -1) != after[cell])
            cells.append(cell);
    return cells;
}

} // namespace

// Each button takes its key's step; the remote follows the show whoever moves it, and the end of
// the show withdraws it, once.
TEST(MediaRemoteLink, ButtonsTakeTheKeysStepsAndTheRemoteFollowsTheShow)
{
    LogCapture log;
    PlayerHarness h;
    h.audio.tracks = 1;
    SlideshowConfiguration c;
    c.slideshowDelay = 5;
    SlideshowView& p = h.start(3, c);
    RecordingMediaRemote remote;
    new MediaRemoteLink(p, remote);
    ASSERT_TRUE(remote.isOffered());
    EXPECT_EQ(remote.status, Status::playing);
    ASSERT_TRUE(remote.item);
    EXPECT_EQ(*remote.item, (MediaRemote::Item{h.queue->at(0).id(), h.queue->at(0).url(), QStringLiteral("0.jpg")}));

    remote.press(Command::pause);
    remote.press(Command::pause);
    EXPECT_TRUE(p.isPaused());
    EXPECT_EQ(remote.status, Status::paused);
    EXPECT_EQ(h.audio.calls.count(QStringLiteral("pause")), 1) << "a second Pause does nothing";
    h.scheduler.advance(10);
    EXPECT_EQ(p.currentIndex(), 0);
    remote.press(Command::play);
    remote.press(Command::play);
    EXPECT_FALSE(p.isPaused());
    EXPECT_EQ(remote.status, Status::playing);
    remote.press(Command::playPause);
    EXPECT_EQ(remote.status, Status::paused);
    p.handleKey(Qt::Key_Space);
    EXPECT_EQ(remote.status, Status::playing) << "the key is heard by the remote too";
    EXPECT_EQ(log.messages(LogLevel::Info).count(QStringLiteral("Spacebar pressed")), 1);
    EXPECT_EQ(log.messages(LogLevel::Info).count(QStringLiteral("Remote control: Play")), 2);

    remote.press(Command::next);
    EXPECT_EQ(p.currentIndex(), 1);
    EXPECT_EQ(featuredId(remote), h.queue->at(1).id());
    remote.press(Command::previous);
    EXPECT_EQ(p.currentIndex(), 0);
    EXPECT_EQ(featuredId(remote), h.queue->at(0).id());
    h.scheduler.advance(5);
    EXPECT_EQ(featuredId(remote), h.queue->at(1).id()) << "the show's own step";

    remote.press(Command::stop);
    EXPECT_TRUE(p.hasStoppedSlideshow());
    EXPECT_FALSE(h.manager.isSlideshowRunning());
    EXPECT_EQ(h.closes, 1);
    EXPECT_EQ(remote.status, Status::stopped);
    EXPECT_FALSE(remote.isOffered());
    h.player.reset();
    EXPECT_EQ(remote.withdrawals, 1);
}

TEST(MediaRemoteLink, AGridFeaturesTheCellThatChangedLastAndAnEndedShowIsNotOffered)
{
    GridHarness h;
    GridConfiguration c;
    c.rows = c.columns = 2;
    GridView& p = h.start(12, c);
    RecordingMediaRemote remote;
    new MediaRemoteLink(p, remote);
    const auto cellItem = [&](int cell) { return h.queue->at(p.currentIndices()[cell]).id(); };
    EXPECT_EQ(featuredId(remote), cellItem(0)) << "the first cell";

    for (int tick = 0; tick < 3; ++tick) {
        const QList<int> before = p.currentIndices();
        h.scheduler.advance(c.delay);
        const QList<int> changed = changedCells(before, p.currentIndices());
        ASSERT_EQ(changed.size(), 1);
        EXPECT_EQ(featuredId(remote), cellItem(changed[0]));
    }
    remote.press(Command::next);
    const QList<int> afterNext = p.currentIndices();
    remote.press(Command::previous);
    const QList<int> changed = changedCells(afterNext, p.currentIndices());
    ASSERT_FALSE(changed.isEmpty());
    EXPECT_EQ(featuredId(remote), cellItem(changed[0])) << "several changed: the first of them";
    remote.press(Command::pause);
    EXPECT_EQ(remote.status, Status::paused);

    h.queue->clear();
    EXPECT_FALSE(remote.item) << "an emptied queue features nothing";
    remote.press(Command::stop);
    EXPECT_TRUE(p.hasStoppedSlideshow());
    EXPECT_FALSE(remote.isOffered());

    // A show that has already ended is offered to nobody.
    PlayerHarness single;
    SlideshowView& ended = single.start(2, {});
    ended.stopSlideshow();
    RecordingMediaRemote unused;
    new MediaRemoteLink(ended, unused);
    EXPECT_EQ(unused.offers, 0);
    single.player.reset();
    EXPECT_EQ(unused.withdrawals, 0);
}
