#include "ThumbnailGenerator.h"

#include "ImageLoader.h"
#include "SharedThumbnails.h"
#include "core/Logger.h"
#include "core/ProcessMemory.h"

#include <QFileInfo>
#include <QImageReader>

#include <cmath>

namespace tb {

QString ThumbnailGenerator::key(const QUrl& url, QSize size)
{
    return QStringLiteral("%1x%2 ").arg(size.width()).arg(size.height()) + url.toString();
}

std::optional<QImage> ThumbnailGenerator::generateThumbnail(const QUrl& url, QSize size, qreal pixelRatio)
{
    if (auto hit = cache.object(key(url, size)))
        return hit;

    const QString path = url.toLocalFile();
    const int maxPixelSize = 2 * std::max(size.width(), size.height());
    const bool useShared = shared && sharing.load();
    if (useShared) {
        const int needed = int(std::ceil(std::max(size.width(), size.height()) * pixelRatio));
        if (std::optional<QImage> found = shared->find(path, needed)) {
            if (std::max(found->width(), found->height()) > maxPixelSize)
                *found = found->scaled(maxPixelSize, maxPixelSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            cache.insert(key(url, size), *found, qint64(found->width()) * found->height() * 4);
            return found;
        }
    }
    QImageReader reader(path);
    reader.setAutoTransform(true);
    if (!reader.canRead()) {
        logError(QStringLiteral("Failed to create image source for: ") + QFileInfo(path).fileName());
        return std::nullopt;
    }
    const QSize stored = reader.size();
    // Never larger than maxPixelSize on the longer side, and never enlarged.
    QSize target;
    if (stored.isValid() && maxPixelSize > 0 && std::max(stored.width(), stored.height()) > maxPixelSize)
        target = stored.scaled(maxPixelSize, maxPixelSize, Qt::KeepAspectRatio);
    const QImage thumbnail = readScaled(reader, target);
    if (thumbnail.isNull())
        return std::nullopt;

    cache.insert(key(url, size), thumbnail, qint64(thumbnail.width()) * thumbnail.height() * 4);
    if (useShared)
        shared->store(path, thumbnail);
    if (++generated % 10 == 0 && memory) {
        if (const auto resident = memory->residentMiB())
            logInfo(QStringLiteral("Memory usage: %1MB").arg(QString::asprintf("%.1f", *resident)));
    }
    return thumbnail;
}

std::optional<QImage> ThumbnailGenerator::generateStretched(const QUrl& url, QSize size)
{
    if (size.isEmpty())
        return std::nullopt;
    if (auto hit = cache.object(stretchedKey(url, size)))
        return hit;
    QImageReader reader(url.toLocalFile());
    reader.setAutoTransform(true);
    if (!reader.canRead())
        return std::nullopt;
    // The reader scales in the file's stored orientation and turns the picture upright after.
    QSize stored = size;
    if (reader.transformation().testFlag(QImageIOHandler::TransformationRotate90))
        stored.transpose();
    QImage image = readScaled(reader, stored);
    if (image.isNull())
        return std::nullopt;
    if (image.size() != size)
        image = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    cache.insert(stretchedKey(url, size), image, qint64(image.width()) * image.height() * 4);
    return image;
}

} // namespace tb
