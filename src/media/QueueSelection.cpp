#include "QueueSelection.h"

#include <algorithm>

namespace tb {

namespace {
qsizetype indexOf(const QList<IdentifiableImage>& queue, const QUuid& id)
{
    const auto it =
        std::find_if(queue.begin(), queue.end(), [&id](const IdentifiableImage& i) { return i.id() == id; });
    return it == queue.end() ? -1 : qsizetype(it - queue.begin());
}
} // namespace

void QueueSelection::click(const QList<IdentifiableImage>& queue, const QUuid& clicked, bool shift, bool control)
{
    if (shift && lastSelectedId) {
        const qsizetype anchor = indexOf(queue, *lastSelectedId);
        const qsizetype at = indexOf(queue, clicked);
        if (anchor < 0 || at < 0)
            return;
        for (qsizetype i = std::min(anchor, at); i <= std::max(anchor, at); ++i)
            selectedIds.insert(queue[i].id());
        return;
    }
    if (control) {
        if (selectedIds.remove(clicked))
            return;
        selectedIds.insert(clicked);
        lastSelectedId = clicked;
        return;
    }
    if (selectedIds.contains(clicked)) {
        selectedIds.clear();
        lastSelectedId.reset();
    } else {
        selectedIds = {clicked};
        lastSelectedId = clicked;
    }
}

bool moveItem(QList<IdentifiableImage>& queue, const QUuid& dragged, const QUuid& target)
{
    const qsizetype from = indexOf(queue, dragged);
    const qsizetype to = indexOf(queue, target);
    if (from < 0 || to < 0)
        return false;
    IdentifiableImage item = queue.takeAt(from);
    queue.insert(std::min(to, queue.size()), std::move(item));
    return true;
}

} // namespace tb
