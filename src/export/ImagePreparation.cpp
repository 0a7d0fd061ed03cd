#include "ImagePreparation.h"

#include "core/Logger.h"
#include "media/ImageLoader.h"

#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tb::ImagePreparation {

namespace {

// Where the picture stands in the frame: on whole pixels, so a picture decoded at its fitted
// size is copied as it is and stays sharp.
QRect fit(QSizeF source, QSize target)
{
    const double factor = std::min(target.width() / source.width(), target.height() / source.height());
    const double width = factor * source.width();
    const double height = factor * source.height();
    const QPointF corner((target.width() - width) * 0.5, (target.height() - height) * 0.5);
    return {int(std::lround(corner.x())), int(std::lround(corner.y())), int(std::lround(width)),
            int(std::lround(height))};
}

} // namespace

QSizeF imageSize(const IdentifiableImage& item)
{
    QImageReader reader(item.filePath());
    if (const QSize upright = uprightSize(reader); upright.isValid())
        return upright;
    logWarning(QStringLiteral("Could not read image metadata for %1, trying NSImage fallback").arg(item.filename()));
    QImageReader decoder(item.filePath());
    decoder.setAutoTransform(true);
    if (const QImage whole = decoder.read(); !whole.isNull())
        return whole.size();
    logError(
        QStringLiteral("All image size detection methods failed for %1, using default 1920x1080").arg(item.filename()));
    return {1920, 1080};
}

std::optional<QImage> decodeFitted(const IdentifiableImage& item, QSizeF sourceSize, QSize frame)
{
    QImageReader reader(item.filePath());
    QImage image = readUpright(reader, fit(sourceSize, frame).size());
    if (image.isNull())
        return std::nullopt;
    return image;
}

QImage scaledImage(const QImage& source, QSizeF sourceSize, QSize target, const QColor& background)
{
    const QRect area = fit(sourceSize, target);
    QImage frame(target, QImage::Format_ARGB32_Premultiplied);
    if (frame.isNull()) {
        logError(QStringLiteral("Failed to create CGContext for scaling image."));
        logInfo(QStringLiteral("Using Core Image fallback for image scaling"));
    } else {
        frame.fill(background.rgb());
        QPainter painter(&frame);
        if (painter.isActive()) {
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(area, source);
            painter.end();
            return frame;
        }
        logError(QStringLiteral("Failed to make image from CGContext after scaling."));
        logInfo(QStringLiteral("CGImage creation failed, attempting Core Image fallback"));
    }
    // Painting is the one way here: when it fails there is no other to fall back on.
    logError(QStringLiteral("Core Image fallback failed, returning original image"));
    return source;
}

} // namespace tb::ImagePreparation
