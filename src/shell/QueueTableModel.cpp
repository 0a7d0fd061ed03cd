#include "QueueTableModel.h"

#include <QLocale>

namespace tb {

QueueTableModel::QueueTableModel(Queue& queue, QObject* parent) : QueueRows(queue, parent)
{
    // The pin is drawn in the name column.
    connect(&queue, &Queue::startingPointChanged, this, [this] { allRowsChanged(Qt::DisplayRole); });
}

int QueueTableModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(items.size()); }

int QueueTableModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 3; }

QVariant QueueTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= items.size())
        return {};
    const IdentifiableImage& item = items.at(index.row());
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case 0: {
            const bool pinned = items.startingImageId() == item.id();
            return pinned ? QStringLiteral("📌 ") + item.filename() : item.filename();
        }
        case 1:
            return item.creationDate() ? QLocale().toString(*item.creationDate(), QLocale::ShortFormat)
                                       : QStringLiteral("-");
        default:
            return item.path();
        }
    }
    if (role == Qt::UserRole)
        return item.id();
    return {};
}

QVariant QueueTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case 0:
        return QStringLiteral("Filename");
    case 1:
        return QStringLiteral("Created");
    default:
        return QStringLiteral("Path");
    }
}

} // namespace tb
