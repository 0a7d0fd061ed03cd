#include "PictureClient.h"

#include "PictureService.h"

namespace tb {

PictureClient::PictureClient(PictureService& service, int preloadThreads, int preloadBacklog)
    : service(service), preloads(preloadThreads, preloadBacklog)
{
}

// What a decode finished after the owner's last clear brought in goes too: nobody will show it.
PictureClient::~PictureClient()
{
    preloads.drain();
    clearPictures();
    clearThumbnails();
    clearVideoThumbnails();
    service.releaseFreeMemory();
}

void PictureClient::clearPictures()
{
    QMutexLocker lock(&mutex);
    for (const QUrl& url : std::as_const(pictureUrls))
        service.pictures.forget(url);
    pictureUrls.clear();
}

void PictureClient::clearThumbnails()
{
    QMutexLocker lock(&mutex);
    for (auto it = thumbnailKeys.cbegin(); it != thumbnailKeys.cend(); ++it)
        service.thumbnails.forget(it.key(), it.value());
    thumbnailKeys.clear();
    for (auto it = cellKeys.cbegin(); it != cellKeys.cend(); ++it)
        service.thumbnails.forgetStretched(it.key(), it.value());
    cellKeys.clear();
}

void PictureClient::clearVideoThumbnails()
{
    QMutexLocker lock(&mutex);
    for (const QUrl& url : std::as_const(posterUrls))
        service.posters.forget(url);
    posterUrls.clear();
}

void PictureClient::preload(const QList<IdentifiableImage>& items)
{
    for (const IdentifiableImage& item : items) {
        const QUrl url = item.url();
        const bool isVideo = item.isVideo();
        preloads.submit([this, url, isVideo] { picture(url, isVideo); });
    }
}

std::optional<QImage> PictureClient::picture(const QUrl& url, bool isVideo)
{
    std::optional<QImage> image;
    if (isVideo) {
        image = service.posterFrame(url);
    } else if (auto loaded = service.picture(url)) {
        image = std::move(loaded->image);
    }
    if (image) {
        QMutexLocker lock(&mutex);
        (isVideo ? posterUrls : pictureUrls).insert(url);
    }
    return image;
}

std::optional<QImage> PictureClient::thumbnail(const QUrl& url, bool isVideo, QSize displaySize, qreal pixelRatio)
{
    if (isVideo) {
        auto poster = service.posterFrame(url);
        if (poster) {
            QMutexLocker lock(&mutex);
            posterUrls.insert(url);
        }
        return poster;
    }
    auto small = service.thumbnail(url, displaySize, pixelRatio);
    if (small) {
        QMutexLocker lock(&mutex);
        if (!thumbnailKeys.contains(url, displaySize))
            thumbnailKeys.insert(url, displaySize);
    }
    return small;
}

std::optional<QImage> PictureClient::cellPicture(const QUrl& url, bool isVideo, QSize pixelSize)
{
    if (isVideo) {
        std::optional<QImage> poster = service.posterFrame(url);
        if (!poster)
            return poster;
        {
            QMutexLocker lock(&mutex);
            posterUrls.insert(url);
        }
        return pixelSize.isEmpty() ? *poster
                                   : poster->scaled(pixelSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    auto image = service.thumbnails.generateStretched(url, pixelSize);
    if (image) {
        QMutexLocker lock(&mutex);
        if (!cellKeys.contains(url, pixelSize))
            cellKeys.insert(url, pixelSize);
    }
    return image;
}

} // namespace tb
