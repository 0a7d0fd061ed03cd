#pragma once

#include <QList>
#include <QUuid>

#include <functional>
#include <optional>

namespace tb {

class RandomSource;
class ViewHistory;

// How a step of the order ended.
enum class OrderStep {
    moved,   // to the next item
    wrapped, // round to the start of the order
    // The show ends: `stop` through the player's stop path at once, `clearRunning` by clearing
    // the running flag, whose observer then stops the show.
    stop,
    clearRunning,
};

// The order a show plays the queue in: plain or shuffled positions, where a step goes, and where
// the order ends. The four kinds of step end the order in slightly different ways, on purpose:
// they stand side by side below, each named after where it applies. Indices are into the queue;
// a shuffled order is a permutation of them.
class PlayOrder {
public:
    PlayOrder(bool shuffled, RandomSource& random);

    // The first item: the starting point when given (first in a shuffled order too), else the
    // first of the order.
    void begin(int count, std::optional<int> startAt);

    // The timer's step. Plain: past the last item the show ends by the running flag, or wraps.
    // Shuffled: at the wrap point the show stops, or, looping, the order is shuffled afresh
    // (the item just shown may come first again).
    OrderStep afterDelay(int count, bool loop);
    // The first step after a resume: plain ends silently by the running flag or wraps; shuffled
    // always wraps, in the same permutation.
    OrderStep afterResume(int count, bool loop);
    // The right arrow past the end of the history: the show also ends (or, looping, the viewed
    // set starts over) once every item was viewed; shuffled wraps in the same permutation.
    OrderStep afterArrow(int count, bool loop, ViewHistory& history);
    // Takes an index the history names. Shuffled: false, and nothing moves, when the index is
    // not in the order.
    bool jumpTo(int index);

    // Live mode changed the queue under a plain order: the index is set as it is.
    void setCurrent(int value) { index = value; }
    // Live mode changed the queue under a shuffled order (`idAt` names the item at an index of
    // the changed queue): the indices of items the order does not know yet join it, right after
    // the present position (`insertNext`) or shuffled at its end; entries past the queue go; and
    // the item on screen keeps its place when it is still in the order. Only the range is
    // repaired: after removals an entry may name another item than before, and some items may
    // stand twice while others are missing, until the next re-shuffle.
    void fitToChangedQueue(int count, const std::function<QUuid(int)>& idAt, bool insertNext);

    bool isShuffled() const { return shuffled; }
    int current() const { return index; }
    // Where the current item stands in the order: the shuffled position, or the index itself.
    int position() const { return shuffled ? shuffledPosition : index; }
    const QList<int>& shuffledIndices() const { return permutation; }
    int shuffledIndex() const { return shuffledPosition; }
    // Whether the last timed step shuffled the order afresh.
    bool reshuffled() const { return justReshuffled; }
    // False when a shuffled order has nothing at its position: live mode emptied the queue.
    bool isValid() const;

private:
    OrderStep afterDelayPlain(int count, bool loop);
    OrderStep afterDelayShuffled(int count, bool loop);
    QList<int> freshShuffle(int count) const;

    bool shuffled;
    RandomSource& random;
    int index = 0;
    QList<int> permutation;
    int shuffledPosition = 0;
    bool hasCompletedLoop = false;
    bool justReshuffled = false;
};

} // namespace tb
