#pragma once

#include "QueueRows.h"

#include <QAbstractTableModel>

namespace tb {

// The queue as a plain table (file name, created, folder): no thumbnails and no file access,
// so it stays fast with any number of items. It replaces the grid above 2000 items. Rows follow
// the queue's own inserts, removals and moves.
class QueueTableModel final : public QueueRows<QAbstractTableModel> {
    Q_OBJECT
public:
    explicit QueueTableModel(Queue& queue, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
};

} // namespace tb
