#pragma once

#include <QList>

namespace tb {

class PlayOrder;
enum class OrderStep;

// What to do with the picture caches after a step: empty them first or not, and which queue
// indices to decode ahead. Memory, not speed, is the point: every tenth index and at every wrap
// the caches are emptied and refilled with the next few items, so a long show stays bounded.
struct Refill {
    bool clear = false;
    QList<int> preload;

    bool operator==(const Refill&) const = default;
};

namespace PreloadPolicy {

constexpr int ahead = 5;

// After the timer's step (`step` is what the order said).
Refill afterDelay(const PlayOrder& order, OrderStep step, int count);
// After the right arrow moved past the end of the history. The window's length comes from the
// item's index even when shuffled, as it always has.
Refill afterArrowForward(const PlayOrder& order, int count);
// After the left arrow: a window around the item, two back and two on.
Refill afterArrowBack(const PlayOrder& order, int count);

} // namespace PreloadPolicy

} // namespace tb
