#include "QueueModel.h"

#include "media/PlaybackCaches.h"

#include <QGuiApplication>
#include <QPointer>

#include <cmath>
#include <limits>

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

// Newest requests go first, so the cells on screen now are served before those a fast scroll
// passed; requests that many newer ones overtook are dropped when their turn comes, and asked
// again if their cell is drawn again.
void QueueModel::requestThumbnail(const IdentifiableImage& item) const
{
    if (pending.contains(item.id()) || failed.contains(item.id()))
        return;
    pending.insert(item.id());
    ++requests;
    const qint64 serial = latestRequest->fetch_add(1) + 1;
    QPointer<QueueModel> self(const_cast<QueueModel*>(this));
    const QUuid id = item.id();
    const QUrl url = item.url();
    const bool isVideo = item.isVideo();
    PlaybackCaches& source = caches;
    auto latest = latestRequest;
    const int side = int(std::ceil(cellSide * qGuiApp->devicePixelRatio()));
    pool.start(
        [self, id, url, isVideo, &source, serial, latest, side] {
            const bool overtaken = latest->load() - serial > staleAfter;
            std::optional<QImage> image = overtaken ? std::nullopt : source.thumbnail(url, isVideo);
            // Kept at the cell's size: a quarter of the memory, and nothing to scale when drawn.
            if (image && (image->width() > side || image->height() > side))
                image = image->scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            QMetaObject::invokeMethod(
                qApp,
                [self, id, overtaken, image = std::move(image)] {
                    if (self)
                        self->thumbnailReady(id, overtaken, image.value_or(QImage()));
                },
                Qt::QueuedConnection);
        },
        int(serial % std::numeric_limits<int>::max()));
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
        thumbnails.insert(id, QPixmap::fromImage(image));
        thumbnailOrder.append(id);
        // Cells long scrolled away give their pictures back; they ask again when seen.
        while (thumbnailOrder.size() > keptThumbnails)
            thumbnails.remove(thumbnailOrder.takeFirst());
    }
    // The row is usually where it was asked for; a sort meanwhile means looking it up.
    int row = rowHint.value(id, -1);
    if (row < 0 || row >= images.size() || images[row].id() != id) {
        const auto it =
            std::find_if(images.begin(), images.end(), [&id](const IdentifiableImage& i) { return i.id() == id; });
        row = it == images.end() ? -1 : int(it - images.begin());
    }
    rowHint.remove(id);
    // A cell still on screen draws again: with its picture, or asking anew after an overtaken
    // request. Off screen this costs nothing.
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
    failed.clear(); // a file mended since gets another try
    beginResetModel();
    endResetModel();
}

} // namespace tb
