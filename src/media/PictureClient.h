#pragma once

#include "DecodeQueue.h"
#include "PictureCaches.h"

#include <QMultiHash>
#include <QMutex>
#include <QSet>
#include <QUrl>

namespace tb {

class PictureService;

// One owner's share of the picture service: it remembers what it brought into the shared
// caches and empties only that, and decodes ahead on its own queue, which it drains before it
// goes. One per show, and one per main window for its grid.
class PictureClient final : public PictureCaches {
public:
    explicit PictureClient(PictureService& service, int preloadThreads = 1, int preloadBacklog = defaultPreloadBacklog);
    ~PictureClient() override;

    void clearPictures() override;
    void clearThumbnails() override;
    void clearVideoThumbnails() override;
    void preload(const QList<IdentifiableImage>& items) override;
    void cancelPreloads() override { preloads.cancelAll(); }
    std::optional<QImage> picture(const QUrl& url, bool isVideo) override;
    std::optional<QImage> thumbnail(const QUrl& url, bool isVideo, QSize displaySize, qreal pixelRatio = 1.0) override;

    std::optional<QImage> cellPicture(const QUrl& url, bool isVideo, QSize pixelSize) override;

    int waitingPreloads() const { return preloads.waiting(); }

    static constexpr int defaultPreloadBacklog = 5;

private:
    PictureService& service;
    mutable QMutex mutex;
    QSet<QUrl> pictureUrls; // — guarded by mutex, as are the two below
    QSet<QUrl> posterUrls;
    QMultiHash<QUrl, QSize> thumbnailKeys;
    QMultiHash<QUrl, QSize> cellKeys;
    DecodeQueue preloads;
};

} // namespace tb
