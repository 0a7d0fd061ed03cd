#pragma once

#include "QueueRows.h"
#include "core/BoundedCache.h"
#include "media/DecodeQueue.h"
#include "media/IdentifiableImage.h"

#include <QAbstractListModel>
#include <QHash>
#include <QPixmap>
#include <QSet>

namespace tb {

class PictureCaches;

// The queue as the thumbnail grid sees it: rows follow the queue's own inserts, removals and
// moves. Thumbnails are asked for only when a cell is drawn (so only near the visible area),
// made on a decode queue of this model's own, newest first, and kept at the cell's size in a
// cache bounded in bytes, least recently drawn going first.
class QueueModel final : public QueueRows<QAbstractListModel> {
    Q_OBJECT
public:
    enum Role { ItemIdRole = Qt::UserRole + 1, IsVideoRole, IsStartRole, IsSelectedRole };

    QueueModel(Queue& queue, PictureCaches& caches, QObject* parent = nullptr);
    ~QueueModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    Queue& queue() const { return items; }
    // Forgets every thumbnail and failure: cells draw again from the files.
    void reloadThumbnails();

    int thumbnailRequests() const { return requests; }
    int thumbnailsDelivered() const { return delivered; }
    bool hasThumbnail(int row) const;

    // A cell's side in points; thumbnails are kept at that size in device pixels.
    static constexpr int cellSide = 150;
    // About 1,100 cells at 150 pixels a side: several screens even full screen on 4K.
    static constexpr qint64 keptThumbnailBytes = 96LL * 1024 * 1024;
    // Requests that this many newer ones overtook are dropped, and asked again if their cell is
    // drawn again.
    static constexpr int staleAfter = 500;

private:
    void requestThumbnail(const IdentifiableImage& item, int row) const;
    void thumbnailReady(const QUuid& id, bool overtaken, const QImage& image);

    PictureCaches& caches;
    // Mutable: drawing a cell is what asks for its thumbnail. — GUI thread only
    mutable BoundedCache<QUuid, QPixmap> thumbnails{0, keptThumbnailBytes};
    mutable QSet<QUuid> pending;
    mutable QSet<QUuid> failed; // unreadable: not asked again
    mutable QHash<QUuid, int> rowHint;
    mutable int requests = 0;
    int delivered = 0;
    // Last: it drains before what its jobs use goes.
    mutable DecodeQueue decodes;
};

} // namespace tb
