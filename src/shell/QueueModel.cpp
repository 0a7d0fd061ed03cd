#include "QueueModel.h"

#include "media/PictureCaches.h"

#include <QGuiApplication>
#include <QPointer>

#include <cmath>

namespace tb {

QueueModel::QueueModel(Queue& queue, PictureCaches& caches, QObject* parent)
    : QueueRows(queue, parent), caches(caches), decodes(std::max(1, QThread::idealThreadCount()), staleAfter)
{
    connect(&queue, &Queue::selectionChanged, this, [this] { allRowsChanged(IsSelectedRole); });
    connect(&queue, &Queue::startingPointChanged, this, [this] { allRowsChanged(IsStartRole); });
    connect(&queue, &Queue::refreshIDChanged, this, &QueueModel::reloadThumbnails);
}

QueueModel::~QueueModel() { decodes.drain(); }

int QueueModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(items.size()); }

bool QueueModel::hasThumbnail(int row) const
{
    return row >= 0 && row < items.size() && thumbnails.contains(items.at(row).id());
}

QVariant QueueModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= items.size())
        return {};
    const IdentifiableImage& item = items.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return item.filename();
    case Qt::ToolTipRole:
        return item.filePath();
    case Qt::DecorationRole: {
        if (auto pixmap = thumbnails.object(item.id()))
            return *pixmap;
        requestThumbnail(item, index.row());
        return {};
    }
    case ItemIdRole:
        return item.id();
    case IsVideoRole:
        return item.isVideo();
    case IsStartRole:
        return items.startingImageId() == item.id();
    case IsSelectedRole:
        return items.selectedIds().contains(item.id());
    default:
        return {};
    }
}

// Newest requests go first, so the cells on screen now are served before those a fast scroll
// passed; requests that many newer ones overtook are dropped, and asked again if their cell is
// drawn again.
void QueueModel::requestThumbnail(const IdentifiableImage& item, int row) const
{
    rowHint.insert(item.id(), row);
    if (pending.contains(item.id()) || failed.contains(item.id()))
        return;
    pending.insert(item.id());
    ++requests;
    QPointer<QueueModel> self(const_cast<QueueModel*>(this));
    const QUuid id = item.id();
    const QUrl url = item.url();
    const bool isVideo = item.isVideo();
    PictureCaches& source = caches;
    const qreal ratio = qGuiApp->devicePixelRatio();
    const int side = int(std::ceil(cellSide * ratio));
    // Results go through the application object: this model may be gone when they arrive.
    auto post = [self, id](bool overtaken, QImage image) {
        QMetaObject::invokeMethod(
            qApp,
            [self, id, overtaken, image = std::move(image)] {
                if (self)
                    self->thumbnailReady(id, overtaken, image);
            },
            Qt::QueuedConnection);
    };
    decodes.submit(
        [post, url, isVideo, &source, side, ratio] {
            std::optional<QImage> image = source.thumbnail(url, isVideo, QSize(cellSide, cellSide), ratio);
            // Kept at the cell's size: a quarter of the memory, and nothing to scale when drawn.
            if (image && (image->width() > side || image->height() > side))
                image = image->scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            post(false, image.value_or(QImage()));
        },
        [post] { post(true, QImage()); });
}

void QueueModel::thumbnailReady(const QUuid& id, bool overtaken, const QImage& image)
{
    pending.remove(id);
    if (!overtaken && image.isNull()) {
        failed.insert(id); // the cell keeps its placeholder, without asking again
        return;
    }
    if (!overtaken) {
        ++delivered;
        const QPixmap pixmap = QPixmap::fromImage(image);
        thumbnails.insert(id, pixmap, qint64(pixmap.width()) * pixmap.height() * 4);
    }
    // The row is usually where it was asked for; a change of the queue meanwhile means looking
    // it up.
    int row = rowHint.take(id);
    if (row < 0 || row >= items.size() || items.at(row).id() != id)
        row = int(items.indexOf(id));
    // A cell still on screen draws again: with its picture, or asking anew after an overtaken
    // request. Off screen this costs nothing.
    if (row >= 0)
        Q_EMIT dataChanged(index(row), index(row), {Qt::DecorationRole});
}

void QueueModel::reloadThumbnails()
{
    thumbnails.removeAll();
    failed.clear(); // a file mended since gets another try
    allRowsChanged(Qt::DecorationRole);
}

} // namespace tb
