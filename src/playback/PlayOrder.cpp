#include "PlayOrder.h"

#include "ViewHistory.h"
#include "core/Logger.h"
#include "core/RandomSource.h"

#include <QSet>

#include <numeric>

namespace tb {

namespace {
void logEndOfShuffle()
{
    logInfo(QStringLiteral("[SlideshowView] Reached end of shuffled images. Stopping slideshow (no loop)."));
}
void logAllViewed() { logInfo(QStringLiteral("[SlideshowView] All images viewed. Stopping slideshow (no loop).")); }
} // namespace

PlayOrder::PlayOrder(bool shuffled, RandomSource& random) : shuffled(shuffled), random(random) {}

QList<int> PlayOrder::freshShuffle(int count) const
{
    QList<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    random.shuffle(order);
    return order;
}

bool PlayOrder::isValid() const
{
    return !shuffled || (shuffledPosition >= 0 && shuffledPosition < permutation.size());
}

void PlayOrder::begin(int count, std::optional<int> startAt)
{
    if (!shuffled) {
        if (startAt)
            index = *startAt;
        return;
    }
    logInfo(QStringLiteral("[Slideshow] Initializing shuffle mode with %1 images").arg(count));
    permutation = freshShuffle(count);
    if (startAt) {
        const auto at = permutation.indexOf(*startAt);
        if (at >= 0)
            std::swap(permutation[0], permutation[at]);
    }
    shuffledPosition = 0;
    if (isValid())
        index = permutation[0];
}

bool PlayOrder::jumpTo(int target)
{
    if (shuffled) {
        const auto at = permutation.indexOf(target);
        if (at < 0)
            return false;
        shuffledPosition = int(at);
    }
    index = target;
    return true;
}

// The timer's step.

OrderStep PlayOrder::afterDelay(int count, bool loop)
{
    justReshuffled = false;
    return shuffled ? afterDelayShuffled(count, loop) : afterDelayPlain(count, loop);
}

OrderStep PlayOrder::afterDelayPlain(int count, bool loop)
{
    if (index < count - 1) {
        ++index;
        return OrderStep::moved;
    }
    if (loop) {
        index = 0;
        return OrderStep::wrapped;
    }
    logInfo(QStringLiteral("SlideshowView: Slideshow ended"));
    return OrderStep::clearRunning;
}

OrderStep PlayOrder::afterDelayShuffled(int count, bool loop)
{
    if (permutation.isEmpty())
        return OrderStep::stop; // live mode emptied the queue; isValid() says why
    const int next = (shuffledPosition + 1) % int(permutation.size());
    if (!loop && next == 0) {
        logEndOfShuffle();
        return OrderStep::stop;
    }
    shuffledPosition = next;
    const bool wrapped = shuffledPosition == 0;
    if (wrapped)
        hasCompletedLoop = true;
    if (loop && hasCompletedLoop) {
        logInfo(QStringLiteral("[Slideshow] Re-shuffling after completing full cycle of %1 images").arg(count));
        permutation = freshShuffle(count);
        hasCompletedLoop = false;
        justReshuffled = true;
    }
    if (!isValid())
        return OrderStep::stop;
    index = permutation[shuffledPosition];
    return wrapped ? OrderStep::wrapped : OrderStep::moved;
}

// The first step after a resume: the simple kind.

OrderStep PlayOrder::afterResume(int count, bool loop)
{
    if (!shuffled) {
        if (index < count - 1) {
            ++index;
            return OrderStep::moved;
        }
        if (!loop)
            return OrderStep::clearRunning; // silently, unlike the timer's step
        index = 0;
        return OrderStep::wrapped;
    }
    if (permutation.isEmpty())
        return OrderStep::stop;
    shuffledPosition = (shuffledPosition + 1) % int(permutation.size());
    index = permutation[shuffledPosition];
    return shuffledPosition == 0 ? OrderStep::wrapped : OrderStep::moved;
}

// The right arrow at the end of the history.

OrderStep PlayOrder::afterArrow(int count, bool loop, ViewHistory& history)
{
    if (!isValid())
        return OrderStep::stop;
    if (history.viewed().size() >= count) {
        if (!loop) {
            logAllViewed();
            return OrderStep::stop;
        }
        history.restartViewed(index);
    }
    const int last = shuffled ? int(permutation.size()) - 1 : count - 1;
    if (position() >= last) {
        if (!loop) {
            if (shuffled)
                logEndOfShuffle();
            else
                logInfo(QStringLiteral("[SlideshowView] Reached end of images. Stopping slideshow (no loop)."));
            return OrderStep::stop;
        }
        // No re-shuffle on this path: the same permutation starts over.
        shuffledPosition = 0;
        index = shuffled ? permutation[0] : 0;
        return OrderStep::wrapped;
    }
    if (shuffled)
        index = permutation[++shuffledPosition];
    else
        ++index;
    return OrderStep::moved;
}

// Live mode.

void PlayOrder::fitToChangedQueue(int count, const std::function<QUuid(int)>& idAt, bool insertNext)
{
    QSet<QUuid> known;
    for (int entry : permutation)
        if (entry >= 0 && entry < count)
            known.insert(idAt(entry));
    QList<int> fresh;
    for (int i = 0; i < count; ++i)
        if (!known.contains(idAt(i)))
            fresh.append(i);
    if (!fresh.isEmpty()) {
        if (insertNext) {
            const qsizetype at = std::min<qsizetype>(permutation.size(), qsizetype(shuffledPosition) + 1);
            permutation = permutation.first(at) + fresh + permutation.sliced(at);
        } else {
            random.shuffle(fresh);
            permutation.append(fresh);
        }
    }
    permutation.removeIf([count](int entry) { return entry >= count; });

    // The item at the present index keeps the screen when the order still holds that index; its
    // first place in the order becomes the position.
    if (index >= 0 && index < count) {
        if (const qsizetype at = permutation.indexOf(index); at >= 0) {
            shuffledPosition = int(at);
            return;
        }
    }
    if (shuffledPosition >= permutation.size())
        shuffledPosition = permutation.isEmpty() ? 0 : int(permutation.size()) - 1;
    if (shuffledPosition < permutation.size())
        index = permutation[shuffledPosition];
}

} // namespace tb
