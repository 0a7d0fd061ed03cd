#include "QueueTableModel.h"

#include <QLocale>

namespace tb {

QueueTableModel::QueueTableModel(QList<IdentifiableImage>& images,
                                 std::function<std::optional<QUuid>()> startingImageId, QObject* parent)
    : QAbstractTableModel(parent), images(images), startingImageId(std::move(startingImageId))
{
}

int QueueTableModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(images.size()); }

int QueueTableModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 3; }

QVariant QueueTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= images.size())
        return {};
    const IdentifiableImage& item = images[index.row()];
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case 0: {
            const bool pinned = startingImageId() == item.id();
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

void QueueTableModel::refresh()
{
    beginResetModel();
    endResetModel();
}

} // namespace tb
