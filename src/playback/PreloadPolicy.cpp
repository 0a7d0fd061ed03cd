#include "PreloadPolicy.h"

#include "PlayOrder.h"

#include <algorithm>

namespace tb::PreloadPolicy {

namespace {

// Up to `length` items from a position of the order.
QList<int> fromPosition(const PlayOrder& order, int position, int length, int count)
{
    QList<int> indices;
    for (int p = position; p < position + length; ++p) {
        if (order.isShuffled()) {
            if (p >= order.shuffledIndices().size())
                break;
            indices.append(order.shuffledIndices()[p]);
        } else if (p < count) {
            indices.append(p);
        }
    }
    return indices;
}

bool atTenth(const PlayOrder& order) { return order.current() % 10 == 0; }

} // namespace

Refill afterDelay(const PlayOrder& order, OrderStep step, int count)
{
    Refill refill;
    if (step != OrderStep::moved && step != OrderStep::wrapped)
        return refill;
    if (!order.isShuffled()) {
        if (step == OrderStep::wrapped || atTenth(order))
            refill = {true, fromPosition(order, order.current(), ahead, count)};
        return refill;
    }
    refill.clear = step == OrderStep::wrapped;
    if (order.reshuffled())
        refill.preload = fromPosition(order, 0, ahead, count);
    if (atTenth(order)) {
        refill.clear = true;
        for (int index : fromPosition(order, order.shuffledIndex(), ahead, count))
            if (!refill.preload.contains(index))
                refill.preload.append(index);
    }
    return refill;
}

Refill afterArrowForward(const PlayOrder& order, int count)
{
    if (!atTenth(order))
        return {};
    const int length = std::min(ahead, count - order.current());
    return {true, fromPosition(order, order.position(), order.isShuffled() ? length : ahead, count)};
}

Refill afterArrowBack(const PlayOrder& order, int count)
{
    if (!atTenth(order))
        return {};
    const int position = order.position();
    const int first = position - std::min(position, 2);
    const int end = position + std::min(count - order.current(), 3);
    return {true, fromPosition(order, first, end - first, count)};
}

} // namespace tb::PreloadPolicy
