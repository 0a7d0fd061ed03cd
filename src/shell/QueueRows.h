#pragma once

#include "media/Queue.h"

#include <QAbstractItemModel>

namespace tb {

// An item model whose rows are the queue's items: it turns the queue's announcements into the
// model's own, so views keep their scroll position and selection through every change.
template <class Model> class QueueRows : public Model {
protected:
    explicit QueueRows(Queue& queue, QObject* parent) : Model(parent), items(queue)
    {
        QObject::connect(&queue, &Queue::rowsAboutToBeInserted, this,
                         [this](int first, int last) { this->beginInsertRows({}, first, last); });
        QObject::connect(&queue, &Queue::rowsInserted, this, [this] { this->endInsertRows(); });
        QObject::connect(&queue, &Queue::rowsAboutToBeRemoved, this,
                         [this](int first, int last) { this->beginRemoveRows({}, first, last); });
        QObject::connect(&queue, &Queue::rowsRemoved, this, [this] { this->endRemoveRows(); });
        // Item models name the row the item goes before, counted before the move.
        QObject::connect(&queue, &Queue::rowAboutToBeMoved, this, [this](int from, int to) {
            this->beginMoveRows({}, from, from, {}, to > from ? to + 1 : to);
        });
        QObject::connect(&queue, &Queue::rowMoved, this, [this] { this->endMoveRows(); });
        QObject::connect(&queue, &Queue::aboutToBeReset, this, [this] { this->beginResetModel(); });
        QObject::connect(&queue, &Queue::wasReset, this, [this] { this->endResetModel(); });
    }

    // Every row changed in these roles, from this column to the last.
    void allRowsChanged(int role, int lastColumn = 0)
    {
        if (!items.isEmpty())
            Q_EMIT this->dataChanged(this->index(0, 0), this->index(int(items.size()) - 1, lastColumn), {role});
    }

    Queue& items;
};

} // namespace tb
