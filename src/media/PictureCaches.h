#pragma once

#include "ImageLoader.h"
#include "PlaybackCaches.h"
#include "ThumbnailGenerator.h"
#include "VideoThumbnailGenerator.h"

#include <QThreadPool>

namespace tb {

// The program's three picture services, shared by the queue and every show.
class PictureCaches final : public PlaybackCaches {
public:
    explicit PictureCaches(QSize screenLimit = {});
    // Waits for preloads under way, which use the caches.
    ~PictureCaches() override;

    ImageLoader images;
    ThumbnailGenerator thumbnails;
    VideoThumbnailGenerator videoThumbnails;

    void clearPictures() override { images.clearCache(); }
    void clearThumbnails() override { thumbnails.clearCache(); }
    void clearVideoThumbnails() override { videoThumbnails.clearCache(); }
    // Decodes the coming items on the thread pool, so the show finds them ready.
    void preload(const QList<IdentifiableImage>& items) override;
    std::optional<QImage> picture(const QUrl& url, bool isVideo) override;
    std::optional<QImage> thumbnail(const QUrl& url, bool isVideo) override;

private:
    QThreadPool preloads;
};

} // namespace tb
