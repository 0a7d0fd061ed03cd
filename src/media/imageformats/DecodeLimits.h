#pragma once

#include <QImage>
#include <QImageReader>
#include <QSize>

namespace tb {

// The largest picture a decoder may allocate: Qt's reader limit (256 MiB of pixels by default),
// so a hostile file cannot claim gigabytes with a forged size.
inline bool withinAllocationLimit(qint64 width, qint64 height)
{
    if (width <= 0 || height <= 0)
        return false;
    const qint64 limitBytes = qint64(QImageReader::allocationLimit()) * 1024 * 1024;
    return limitBytes <= 0 || width * height * 4 <= limitBytes;
}

// A scaled read: the caller asked for exactly this size.
inline QImage scaledTo(const QImage& image, const QSize& size)
{
    if (!size.isValid() || size.isEmpty() || size == image.size())
        return image;
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace tb
