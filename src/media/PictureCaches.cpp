#include "PictureCaches.h"

#include <QtConcurrent/QtConcurrentRun>

namespace tb {

void PictureCaches::preload(const QList<IdentifiableImage>& items)
{
    // The caches are made once for the process and outlive every pool task.
    (void)QtConcurrent::run([this, items] {
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

} // namespace tb
