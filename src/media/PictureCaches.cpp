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

} // namespace tb
