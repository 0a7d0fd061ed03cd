#pragma once

#include <QList>
#include <QSet>

#include <optional>

namespace tb {

// What a show has put on screen, for the arrows: the last 100 indices, oldest first, the
// position of what is on screen now, and the indices viewed since the viewed set last started
// over. Always indices into the queue, never positions in a shuffled order.
class ViewHistory {
public:
    // The first item of a show.
    void begin(int index);
    // A forward step: what came after the present position is dropped first.
    void record(int index);
    // One entry on or back, or nothing at either end (there is no wrap).
    std::optional<int> forward();
    std::optional<int> back();
    bool atEnd() const { return positionValue >= entriesValue.size() - 1; }
    // The viewed set starts over from this index.
    void restartViewed(int index) { viewedValue = {index}; }

    const QList<int>& entries() const { return entriesValue; }
    int position() const { return positionValue; }
    const QSet<int>& viewed() const { return viewedValue; }

    static constexpr int limit = 100;

private:
    QList<int> entriesValue;
    int positionValue = -1;
    QSet<int> viewedValue;
};

} // namespace tb
