#pragma once

#include "IdentifiableImage.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QUuid>

#include <functional>
#include <optional>

namespace tb {

// The items of one main window, with the selection, the starting point and the grid's
// refresh token. It is the one owner of this state: the grid, the table, intake and a running
// player observe it through its signals and change it through its operations only. A player
// holds it through a shared pointer, so a show can outlive the window that started it.
// GUI thread only.
class Queue final : public QObject {
    Q_OBJECT
public:
    explicit Queue(QObject* parent = nullptr);

    const QList<IdentifiableImage>& items() const { return list; }
    qsizetype size() const { return list.size(); }
    bool isEmpty() const { return list.isEmpty(); }
    const IdentifiableImage& at(qsizetype row) const { return list.at(row); }
    // -1 when no item has this id.
    qsizetype indexOf(const QUuid& id) const;

    void append(const QList<IdentifiableImage>& items);
    // Live mode puts new files right after the item on screen.
    void insert(qsizetype row, const QList<IdentifiableImage>& items);
    // Removes the items the predicate names, announcing each run of neighbours at once (last
    // run first, so the rows of earlier runs stay valid). Removed items leave the selection,
    // and the starting point goes with its item. Returns how many went.
    qsizetype removeIf(const std::function<bool(const IdentifiableImage&)>& predicate);
    qsizetype remove(const QSet<QUuid>& ids);
    // Empties the queue, the selection and the starting point.
    void clear();
    // Puts the dragged item on the target's place: taken out, then put at the target's index of
    // the shortened queue, so a forward drag lands just after the target and a backward one just
    // before it. False when either is not in the queue.
    bool move(const QUuid& dragged, const QUuid& target);
    // Reorders everything at once (sorting, a loaded document).
    void replaceAll(QList<IdentifiableImage> items);

    // The selection: the grid's click rules are deliberately not the usual list-view rules.
    const QSet<QUuid>& selectedIds() const { return selected; }
    const std::optional<QUuid>& lastSelectedId() const { return anchor; }
    // Shift with an anchor adds the whole span and keeps the anchor; Ctrl toggles one item
    // (anchoring on an added one); a plain click on a selected item clears everything, on an
    // unselected one selects it alone.
    void click(const QUuid& clicked, bool shift, bool control);
    // The table's own selection, taken as it is; the anchor stays.
    void setSelectedIds(const QSet<QUuid>& ids);
    void clearSelection();
    // The next shift-click spans from nowhere; the selection stays. The grid's form changing
    // or the grid being rebuilt does this.
    void forgetAnchor() { anchor.reset(); }

    const std::optional<QUuid>& startingImageId() const { return start; }
    void setStartingImageId(const std::optional<QUuid>& id);

    // A new token makes the grid rebuild and reload every thumbnail, and forgets the anchor.
    const QUuid& refreshID() const { return refresh; }
    void renewRefreshID();

Q_SIGNALS:
    // Rows are inclusive ranges, as item models count them.
    void rowsAboutToBeInserted(int first, int last);
    void rowsInserted(int first, int last);
    void rowsAboutToBeRemoved(int first, int last);
    void rowsRemoved(int first, int last);
    // `to` is the row the item has once moved.
    void rowAboutToBeMoved(int from, int to);
    void rowMoved(int from, int to);
    void aboutToBeReset();
    void wasReset();
    void selectionChanged();
    void startingPointChanged();
    void refreshIDChanged();

private:
    void forgetMissing();

    QList<IdentifiableImage> list;
    QSet<QUuid> selected;
    std::optional<QUuid> anchor;
    std::optional<QUuid> start;
    QUuid refresh = QUuid::createUuid();
};

} // namespace tb
