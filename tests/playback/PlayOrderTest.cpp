#include "playback/PlayOrder.h"
#include "playback/PreloadPolicy.h"
#include "playback/ViewHistory.h"
#include "support/LogCapture.h"
#include "support/PlaybackDoubles.h"

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

enum class Kind { delay, resume, arrow };

struct EndRow {
    Kind kind;
    bool shuffled;
    bool loop;
    OrderStep expected;
    const char* line; // the one line logged, or nothing
};

// The order of three items standing at its last position, every item viewed.
struct AtTheEnd {
    SeededRandom random{7};
    PlayOrder order;
    ViewHistory history;

    explicit AtTheEnd(bool shuffled) : order(shuffled, random)
    {
        order.begin(3, std::nullopt);
        history.begin(order.current());
        for (int i = 0; i < 2; ++i) {
            order.afterDelay(3, false);
            history.record(order.current());
        }
    }
};

} // namespace

// Where the order ends, by who takes the step: the four variants differ on purpose.
TEST(PlayOrder, EndsOrWrapsByWhoTakesTheStep)
{
    const EndRow rows[] = {
        {Kind::delay, false, false, OrderStep::clearRunning, "SlideshowView: Slideshow ended"},
        {Kind::delay, false, true, OrderStep::wrapped, nullptr},
        {Kind::delay, true, false, OrderStep::stop,
         "[SlideshowView] Reached end of shuffled images. Stopping slideshow (no loop)."},
        {Kind::delay, true, true, OrderStep::wrapped,
         "[Slideshow] Re-shuffling after completing full cycle of 3 images"},
        {Kind::resume, false, false, OrderStep::clearRunning, nullptr},
        {Kind::resume, false, true, OrderStep::wrapped, nullptr},
        {Kind::resume, true, false, OrderStep::wrapped, nullptr},
        {Kind::resume, true, true, OrderStep::wrapped, nullptr},
        {Kind::arrow, false, false, OrderStep::stop,
         "[SlideshowView] All images viewed. Stopping slideshow (no loop)."},
        {Kind::arrow, false, true, OrderStep::wrapped, nullptr},
        {Kind::arrow, true, false, OrderStep::stop, "[SlideshowView] All images viewed. Stopping slideshow (no loop)."},
        {Kind::arrow, true, true, OrderStep::wrapped, nullptr},
    };
    for (const EndRow& row : rows) {
        SCOPED_TRACE(testing::Message() << "kind " << int(row.kind) << " shuffled " << row.shuffled << " loop "
                                        << row.loop);
        AtTheEnd at(row.shuffled);
        const QList<int> permutation = at.order.shuffledIndices();
        LogCapture log;
        OrderStep step = OrderStep::moved;
        switch (row.kind) {
        case Kind::delay:
            step = at.order.afterDelay(3, row.loop);
            break;
        case Kind::resume:
            step = at.order.afterResume(3, row.loop);
            break;
        case Kind::arrow:
            step = at.order.afterArrow(3, row.loop, at.history);
            break;
        }
        EXPECT_EQ(step, row.expected);
        EXPECT_EQ(log.messages(LogLevel::Info), row.line ? QStringList{QString::fromUtf8(row.line)} : QStringList());
        if (step == OrderStep::wrapped) {
            EXPECT_EQ(at.order.position(), 0);
            EXPECT_TRUE(at.order.isValid());
            if (row.shuffled) {
                EXPECT_EQ(at.order.current(), at.order.shuffledIndices()[0]) << "the shuffle invariant";
                EXPECT_EQ(at.order.reshuffled(), row.kind == Kind::delay);
                if (row.kind != Kind::delay) {
                    EXPECT_EQ(at.order.shuffledIndices(), permutation) << "the same permutation";
                }
            }
        }
        if (row.kind == Kind::arrow && row.loop) {
            EXPECT_EQ(at.history.viewed().size(), 1) << "the viewed set started over when full";
        }
    }
}

TEST(PlayOrder, TheStartingItemComesFirstAndHistoryJumpsKeepTheInvariant)
{
    SeededRandom random(3);
    PlayOrder order(true, random);
    order.begin(6, 4);
    EXPECT_EQ(order.current(), 4);
    EXPECT_EQ(order.shuffledIndices()[0], 4);
    EXPECT_TRUE(order.jumpTo(order.shuffledIndices()[3]));
    EXPECT_EQ(order.shuffledIndex(), 3);
    EXPECT_FALSE(order.jumpTo(17)) << "an index no longer in the order";
    EXPECT_EQ(order.shuffledIndex(), 3);

    PlayOrder empty(true, random);
    empty.begin(0, std::nullopt);
    EXPECT_FALSE(empty.isValid());
    EXPECT_EQ(empty.afterDelay(0, true), OrderStep::stop) << "live mode emptied the queue: the show ends";
    EXPECT_EQ(empty.afterResume(0, true), OrderStep::stop);
}

// Every tenth index and every wrap empties the caches and decodes the next few items.
TEST(PreloadPolicy, RefillsAtTheTenthsAndTheWraps)
{
    SeededRandom random;
    PlayOrder plain(false, random);
    plain.begin(23, 9);
    EXPECT_EQ(PreloadPolicy::afterDelay(plain, plain.afterDelay(23, true), 23), (Refill{true, {10, 11, 12, 13, 14}}));
    EXPECT_EQ(PreloadPolicy::afterDelay(plain, plain.afterDelay(23, true), 23), Refill{});
    plain.jumpTo(22);
    EXPECT_EQ(PreloadPolicy::afterDelay(plain, plain.afterDelay(23, true), 23), (Refill{true, {0, 1, 2, 3, 4}}));
    plain.jumpTo(20);
    EXPECT_EQ(PreloadPolicy::afterArrowForward(plain, 23), (Refill{true, {20, 21, 22}}));
    EXPECT_EQ(PreloadPolicy::afterArrowBack(plain, 23), (Refill{true, {18, 19, 20, 21, 22}}));
    plain.jumpTo(21);
    EXPECT_EQ(PreloadPolicy::afterArrowBack(plain, 23), Refill{});
    EXPECT_EQ(PreloadPolicy::afterDelay(plain, OrderStep::clearRunning, 23), Refill{});

    // Shuffled: the window runs along the order, and a fresh order is preloaded from its start.
    PlayOrder shuffled(true, random);
    shuffled.begin(4, std::nullopt);
    for (int i = 0; i < 3; ++i)
        shuffled.afterDelay(4, true);
    const OrderStep wrap = shuffled.afterDelay(4, true);
    ASSERT_EQ(wrap, OrderStep::wrapped);
    const Refill refill = PreloadPolicy::afterDelay(shuffled, wrap, 4);
    EXPECT_TRUE(refill.clear);
    EXPECT_EQ(refill.preload, shuffled.shuffledIndices());
}

namespace {
// Every shuffle leaves its list as it is: all ones make Fisher–Yates swap each item with itself.
struct NoShuffle final : RandomSource {
    std::uint64_t next64() override { return ~std::uint64_t(0); }
};

struct ChangedQueue {
    const char* what;
    QStringList items; // the queue after live mode changed it, by name
    bool insertNext;
    int jumpTo; // the index on screen before the change
    QList<int> order;
    int position;
    int current;
};
} // namespace

// The order [3, 1, 2, 0, 4] of the queue a0…a4, fitted to what live mode made of the queue.
TEST(PlayOrder, FitsAShuffledOrderToAChangedQueue)
{
    const QStringList names{"a0", "a1", "n0", "n1", "a2", "a3", "a4"};
    const ChangedQueue rows[] = {
        // The player put n0 and n1 right after a1. The order's indices now name other items:
        // a3 and a4 look new and come next, and n1 (index 3, taken for a2) is never played.
        {"two new ones next", {"a0", "a1", "n0", "n1", "a2", "a3", "a4"}, true, 1, {3, 1, 5, 6, 2, 0, 4}, 1, 1},
        {"two new ones at the end (no shuffle)",
         {"a0", "a1", "a2", "a3", "a4", "n0", "n1"},
         false,
         1,
         {3, 1, 2, 0, 4, 5, 6},
         1,
         1},
        {"a1 and a3 gone, a0 on screen", {"a0", "a2", "a4"}, false, 0, {1, 2, 0}, 2, 0},
        {"the item on screen gone past the end", {"a0", "a1", "a2"}, false, 4, {1, 2, 0}, 2, 0},
        {"everything gone", {}, false, 2, {}, 0, 2},
    };
    for (const ChangedQueue& row : rows) {
        NoShuffle random;
        PlayOrder order(true, random);
        order.begin(5, 3);
        ASSERT_EQ(order.shuffledIndices(), (QList<int>{3, 1, 2, 0, 4}));
        order.jumpTo(row.jumpTo);
        QHash<QString, QUuid> ids;
        for (const QString& name : names)
            ids.insert(name, QUuid::createUuid());
        order.fitToChangedQueue(
            int(row.items.size()), [&](int index) { return ids.value(row.items.at(index)); }, row.insertNext);
        // As std::vector: Qt 6.4 compares two empty lists through memcmp with a null pointer.
        const QList<int>& fitted = order.shuffledIndices();
        EXPECT_EQ(std::vector<int>(fitted.cbegin(), fitted.cend()),
                  std::vector<int>(row.order.cbegin(), row.order.cend()))
            << row.what;
        EXPECT_EQ(order.shuffledIndex(), row.position) << row.what;
        EXPECT_EQ(order.current(), row.current) << row.what;
        EXPECT_EQ(order.isValid(), !row.items.isEmpty()) << row.what;
    }
}
