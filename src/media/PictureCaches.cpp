#include "PictureCaches.h"

namespace tb {

// One preload at a time: it runs ahead of the show, which needs only the next few pictures.
PictureCaches::PictureCaches(QSize screenLimit) : images(screenLimit) { preloads.setMaxThreadCount(1); }

PictureCaches::~PictureCaches()
{
    preloads.clear();
    preloads.waitForDone();
}

void PictureCaches::preload(const QList<IdentifiableImage>& items)
{
    preloads.start([this, items] {
        for (const IdentifiableImage& item : items) {
            if (item.isVideo())
                videoThumbnails.thumbnail(item.url());
            else
                images.loadImage(item.url());
        }
    });
}

std::optional<QImage> PictureCaches::picture(const QUrl& url, bool isVideo)
{
    if (isVideo)
        return videoThumbnails.thumbnail(url);
    if (auto loaded = images.loadImage(url))
        return loaded->image;
    return std::nullopt;
}

std::optional<QImage> PictureCaches::thumbnail(const QUrl& url, bool isVideo)
{
    return isVideo ? videoThumbnails.thumbnail(url) : thumbnails.generateThumbnail(url, QSize(150, 150));
}

} // namespace tb
