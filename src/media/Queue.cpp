#include "Queue.h"

#include <algorithm>

namespace tb {

Queue::Queue(QObject* parent) : QObject(parent) {}

qsizetype Queue::indexOf(const QUuid& id) const
{
    const auto it = std::find_if(list.begin(), list.end(), [&id](const IdentifiableImage& i) { return i.id() == id; });
    return it == list.end() ? -1 : qsizetype(it - list.begin());
}

void Queue::append(const QList<IdentifiableImage>& items) { insert(list.size(), items); }

void Queue::insert(qsizetype row, const QList<IdentifiableImage>& items)
{
    if (items.isEmpty())
        return;
    row = std::clamp<qsizetype>(row, 0, list.size());
    const int first = int(row);
    const int last = int(row + items.size() - 1);
    Q_EMIT rowsAboutToBeInserted(first, last);
    list.insert(row, items.size(), items.first()); // room, then the items in order
    std::copy(items.begin(), items.end(), list.begin() + row);
    Q_EMIT rowsInserted(first, last);
}

qsizetype Queue::removeIf(const std::function<bool(const IdentifiableImage&)>& predicate)
{
    qsizetype removed = 0;
    qsizetype end = list.size();
    while (end > 0) {
        // The last run of neighbours to go, before `end`.
        qsizetype last = end - 1;
        while (last >= 0 && !predicate(list[last]))
            --last;
        if (last < 0)
            break;
        qsizetype first = last;
        while (first > 0 && predicate(list[first - 1]))
            --first;
        Q_EMIT rowsAboutToBeRemoved(int(first), int(last));
        list.remove(first, last - first + 1);
        Q_EMIT rowsRemoved(int(first), int(last));
        removed += last - first + 1;
        end = first;
    }
    if (removed > 0)
        forgetMissing();
    return removed;
}

qsizetype Queue::remove(const QSet<QUuid>& ids)
{
    return removeIf([&ids](const IdentifiableImage& item) { return ids.contains(item.id()); });
}

void Queue::clear()
{
    replaceAll({});
    forgetMissing();
}

bool Queue::move(const QUuid& dragged, const QUuid& target)
{
    const qsizetype from = indexOf(dragged);
    const qsizetype to = indexOf(target);
    if (from < 0 || to < 0)
        return false;
    if (from == to)
        return true;
    Q_EMIT rowAboutToBeMoved(int(from), int(to));
    list.move(from, to);
    Q_EMIT rowMoved(int(from), int(to));
    return true;
}

void Queue::replaceAll(QList<IdentifiableImage> items)
{
    Q_EMIT aboutToBeReset();
    list = std::move(items);
    Q_EMIT wasReset();
    forgetMissing();
}

// The selection and the starting point speak only of items in the queue.
void Queue::forgetMissing()
{
    QSet<QUuid> present;
    present.reserve(list.size());
    for (const IdentifiableImage& item : list)
        present.insert(item.id());
    if (start && !present.contains(*start)) {
        start.reset();
        Q_EMIT startingPointChanged();
    }
    bool changed = false;
    for (auto it = selected.begin(); it != selected.end();) {
        if (present.contains(*it)) {
            ++it;
        } else {
            it = selected.erase(it);
            changed = true;
        }
    }
    if (anchor && !present.contains(*anchor)) {
        anchor.reset();
        changed = true;
    }
    if (changed)
        Q_EMIT selectionChanged();
}

void Queue::click(const QUuid& clicked, bool shift, bool control)
{
    if (shift && anchor) {
        const qsizetype from = indexOf(*anchor);
        const qsizetype at = indexOf(clicked);
        if (from < 0 || at < 0)
            return;
        for (qsizetype i = std::min(from, at); i <= std::max(from, at); ++i)
            selected.insert(list[i].id());
    } else if (control) {
        if (!selected.remove(clicked)) {
            selected.insert(clicked);
            anchor = clicked;
        }
    } else if (selected.contains(clicked)) {
        selected.clear();
        anchor.reset();
    } else {
        selected = {clicked};
        anchor = clicked;
    }
    Q_EMIT selectionChanged();
}

void Queue::setSelectedIds(const QSet<QUuid>& ids)
{
    if (ids == selected)
        return;
    selected = ids;
    Q_EMIT selectionChanged();
}

void Queue::clearSelection()
{
    if (selected.isEmpty() && !anchor)
        return;
    selected.clear();
    anchor.reset();
    Q_EMIT selectionChanged();
}

void Queue::setStartingImageId(const std::optional<QUuid>& id)
{
    if (id == start)
        return;
    start = id;
    Q_EMIT startingPointChanged();
}

void Queue::renewRefreshID()
{
    refresh = QUuid::createUuid();
    anchor.reset();
    Q_EMIT refreshIDChanged();
}

} // namespace tb
