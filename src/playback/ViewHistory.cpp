#include "ViewHistory.h"

namespace tb {

void ViewHistory::begin(int index)
{
    entriesValue = {index};
    positionValue = 0;
    viewedValue = {index};
}

void ViewHistory::record(int index)
{
    if (positionValue < entriesValue.size() - 1)
        entriesValue.resize(positionValue + 1);
    entriesValue.append(index);
    positionValue = int(entriesValue.size()) - 1;
    viewedValue.insert(index);
    if (entriesValue.size() > limit) {
        const auto excess = entriesValue.size() - limit;
        entriesValue.remove(0, excess);
        positionValue -= int(excess);
    }
}

std::optional<int> ViewHistory::forward()
{
    if (atEnd())
        return std::nullopt;
    return entriesValue[++positionValue];
}

std::optional<int> ViewHistory::back()
{
    if (positionValue < 1)
        return std::nullopt;
    return entriesValue[--positionValue];
}

} // namespace tb
