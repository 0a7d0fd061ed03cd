#include "ThumbnailGenerator.h"

#include "ImageLoader.h"
#include "core/Logger.h"
#include "core/ProcessMemory.h"

#include <QFileInfo>
#include <QImageReader>

namespace tb {

QString ThumbnailGenerator::key(const QUrl& url, QSize size)
{
    return QStringLiteral("%1x%2 ").arg(size.width()).arg(size.height()) + url.toString();
}

std::optional<QImage> ThumbnailGenerator::generateThumbnail(const QUrl& url, QSize size)
{
    if (auto hit = cache.object(key(url, size)))
        return hit;

    const QString path = url.toLocalFile();
    QImageReader reader(path);
    reader.setAutoTransform(true);
    if (!reader.canRead()) {
        logError(QStringLiteral("Failed to create image source for: ") + QFileInfo(path).fileName());
        return std::nullopt;
    }
    const int maxPixelSize = 2 * std::max(size.width(), size.height());
    const QSize stored = reader.size();
    // Never larger than maxPixelSize on the longer side, and never enlarged.
    QSize target;
    if (stored.isValid() && maxPixelSize > 0 && std::max(stored.width(), stored.height()) > maxPixelSize)
        target = stored.scaled(maxPixelSize, maxPixelSize, Qt::KeepAspectRatio);
    const QImage thumbnail = readScaled(reader, target);
    if (thumbnail.isNull())
        return std::nullopt;

    cache.insert(key(url, size), thumbnail, qint64(thumbnail.width()) * thumbnail.height() * 4);
    if (++generated % 10 == 0 && memory) {
        if (const auto resident = memory->residentMiB())
            logInfo(QStringLiteral("Memory usage: %1MB").arg(QString::asprintf("%.1f", *resident)));
    }
    return thumbnail;
}

} // namespace tb
