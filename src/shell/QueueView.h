#pragma once

#include <QListView>

namespace tb {

class QueueModel;
class SettingsStore;

// The thumbnail grid: cells of 150 points in as many columns as fit, laid out and drawn only
// near the visible area, with the queue's own click rules, the starting-point pin, the clip
// badge and, on demand, file names.
class QueueView final : public QListView {
    Q_OBJECT
public:
    QueueView(QueueModel& model, SettingsStore& settings, QWidget* parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void updateGrid();

    QueueModel& queue;
    SettingsStore& settings;
    QPersistentModelIndex pressed;
    QPoint pressPosition;
};

} // namespace tb
