#pragma once

#include "media/IdentifiableImage.h"
#include "media/QueueSelection.h"

#include <QAbstractListModel>
#include <QHash>
#include <QPixmap>
#include <QSet>
#include <QThreadPool>

#include <atomic>
#include <memory>
#include <optional>

namespace tb {

class PlaybackCaches;

// The queue as the thumbnail grid sees it. Thumbnails are asked for only when a cell is drawn
// (so only near the visible area), made on a pool thread, and kept for a bounded number of
// cells; the selection and the starting point live here beside the queue they speak of.
class QueueModel final : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { ItemIdRole = Qt::UserRole + 1, IsVideoRole, IsStartRole, IsSelectedRole };

    QueueModel(QList<IdentifiableImage>& images, PlaybackCaches& caches, QObject* parent = nullptr);
    ~QueueModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    // Rows appended by intake (the items are already at the end when `added` is called).
    void beginAppend(int count);
    void endAppend();
    // The queue was sorted, reordered or shortened.
    void refresh();
    // Drag-reordering in the grid; false when either item is gone.
    bool moveItem(const QUuid& dragged, const QUuid& target);

    const QList<IdentifiableImage>& items() const { return images; }

    QueueSelection selection;
    std::optional<QUuid> startingImageId;
    int thumbnailRequests() const { return requests; }
    int thumbnailsDelivered() const { return delivered; }
    bool hasThumbnail(int row) const
    {
        return row >= 0 && row < images.size() && thumbnails.contains(images[row].id());
    }

    // A cell's side in points; thumbnails are kept at that size in device pixels.
    static constexpr int cellSide = 150;
    static constexpr int keptThumbnails = 600;
    // A request that this many newer ones overtook is dropped when its turn comes.
    static constexpr qint64 staleAfter = 500;

private:
    void requestThumbnail(const IdentifiableImage& item) const;
    void thumbnailReady(const QUuid& id, bool overtaken, const QImage& image);

    QList<IdentifiableImage>& images;
    PlaybackCaches& caches;
    // Mutable: drawing a cell is what asks for its thumbnail. — GUI thread only
    mutable QHash<QUuid, QPixmap> thumbnails;
    mutable QList<QUuid> thumbnailOrder; // oldest first, for dropping
    mutable QSet<QUuid> pending;
    mutable QSet<QUuid> failed; // unreadable: not asked again
    mutable QHash<QUuid, int> rowHint;
    mutable int requests = 0;
    int delivered = 0;
    std::shared_ptr<std::atomic<qint64>> latestRequest = std::make_shared<std::atomic<qint64>>(0);
    mutable QThreadPool pool;
};

} // namespace tb
