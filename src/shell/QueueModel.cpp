#include "QueueModel.h"

#include "media/PlaybackCaches.h"

#include <QCoreApplication>
#include <QPointer>

namespace tb {

QueueModel::QueueModel(QList<IdentifiableImage>& images, PlaybackCaches& caches, QObject* parent)
    : QAbstractListModel(parent), images(images), caches(caches)
{
    pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount()));
}

QueueModel::~QueueModel()
{
    pool.clear();
    pool.waitForDone();
}

int QueueModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(images.size()); }

QVariant QueueModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= images.size())
        return {};
    const IdentifiableImage& item = images[index.row()];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return item.filename();
    case Qt::ToolTipRole:
        return item.filePath();
    case Qt::DecorationRole: {
        const auto it = thumbnails.constFind(item.id());
        if (it != thumbnails.constEnd())
            return *it;
        rowHint.insert(item.id(), index.row());
        requestThumbnail(item);
        return {};
    }
    case ItemIdRole:
        return item.id();
    case IsVideoRole:
        return item.isVideo();
    case IsStartRole:
        return startingImageId == item.id();
    case IsSelectedRole:
        return selection.selectedIds.contains(item.id());
    default:
        return {};
    }
}

void QueueModel::requestThumbnail(const IdentifiableImage& item) const
{
    if (pending.contains(item.id()))
        return;
    pending.insert(item.id());
    ++requests;
    QPointer<QueueModel> self(const_cast<QueueModel*>(this));
    const QUuid id = item.id();
    const QUrl url = item.url();
    const bool isVideo = item.isVideo();
    PlaybackCaches& source = caches;
    pool.start([self, id, url, isVideo, &source] {
        QImage image = source.thumbnail(url, isVideo).value_or(QImage());
        QMetaObject::invokeMethod(
            qApp,
            [self, id, image = std::move(image)] {
                if (self)
                    self->thumbnailReady(id, image);
            },
            Qt::QueuedConnection);
    });
}

void QueueModel::thumbnailReady(const QUuid& id, const QImage& image)
{
    pending.remove(id);
    if (image.isNull())
        return; // the cell keeps its placeholder
    thumbnails.insert(id, QPixmap::fromImage(image));
    thumbnailOrder.append(id);
    // Cells long scrolled away give their pictures back; they ask again when seen.
    while (thumbnailOrder.size() > keptThumbnails)
        thumbnails.remove(thumbnailOrder.takeFirst());
    // The row is usually where it was asked for; a sort meanwhile means looking it up.
    int row = rowHint.value(id, -1);
    if (row < 0 || row >= images.size() || images[row].id() != id) {
        const auto it =
            std::find_if(images.begin(), images.end(), [&id](const IdentifiableImage& i) { return i.id() == id; });
        row = it == images.end() ? -1 : int(it - images.begin());
    }
    rowHint.remove(id);
    if (row >= 0)
        Q_EMIT dataChanged(index(row), index(row), {Qt::DecorationRole});
}

void QueueModel::beginAppend(int count) { beginInsertRows({}, int(images.size()), int(images.size()) + count - 1); }

void QueueModel::endAppend() { endInsertRows(); }

bool QueueModel::moveItem(const QUuid& dragged, const QUuid& target)
{
    beginResetModel();
    const bool moved = tb::moveItem(images, dragged, target);
    endResetModel();
    return moved;
}

void QueueModel::refresh()
{
    beginResetModel();
    endResetModel();
}

} // namespace tb
