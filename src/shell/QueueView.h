#pragma once

#include <QListView>
#include <QPixmap>
#include <QPointer>
#include <QUuid>

#include <optional>

class QMenu;
class QVariantAnimation;

namespace tb {

class Queue;
class QueueModel;
class SettingsStore;

// The context menu's starting-point entry for an item, the same in the grid and the table:
// "Clear Starting Point" on the item that is the starting point, else "Start Slideshow Here".
void addStartingPointEntry(QMenu& menu, Queue& queue, const QUuid& id);

// The thumbnail grid: as many columns of at least 150 points as fit, sharing the width, laid
// out and drawn only near the visible area, with the queue's own click rules (taken on the
// click, not the press, so a drag selects nothing), the starting-point pin, the clip badge, on
// demand file names, and drag-reordering with the target cell outlined and the moved cell
// gliding to its place.
class QueueView final : public QListView {
    Q_OBJECT
public:
    QueueView(QueueModel& model, SettingsStore& settings, QWidget* parent = nullptr);

    // The cell a dragged item would land on, outlined; invalid when none.
    QModelIndex dropTarget() const { return target; }
    const std::optional<QUuid>& draggedItemId() const { return dragged; }
    // The form changed or the grid was rebuilt: a drag under way is forgotten.
    void forgetDrag();
    // A cell moving to its new place is drawn by the view, not by its row.
    bool isMoving(const QModelIndex& index) const;

    static constexpr int moveMilliseconds = 300;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void updateGrid();
    void setTarget(const QModelIndex& index);
    void glide(const QUuid& id, const QRect& from);

    QueueModel& queue;
    SettingsStore& settings;
    QPersistentModelIndex pressed;
    QPoint pressPosition;
    std::optional<QUuid> dragged;
    QPersistentModelIndex target;
    // The moved cell's picture and where it is drawn while it glides.
    QPersistentModelIndex moving;
    QPixmap movingPicture;
    QRect movingRect;
    QPointer<QVariantAnimation> motion;
};

} // namespace tb
