#include "ImagePreparation.h"

#include "core/Logger.h"
#include "media/ImageLoader.h"

#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <cmath>

extern "C" {
#include <libswscale/swscale.h>
}

namespace tb::ImagePreparation {

namespace {

// QImage's 32-bit formats are 0xAARRGGBB words, so their byte order follows the machine's: the
// FFmpeg pixel format that reads a QImage's bits as they lie.
constexpr AVPixelFormat qtPixelLayout = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? AV_PIX_FMT_BGRA : AV_PIX_FMT_ARGB;

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

// Lanczos resampling. The decoders' own smooth scaling averages areas, which lets fine detail and
// grain alias into the frame as noise: further from the photo, and dearer to encode.
QImage resampled(const QImage& image, QSize size)
{
    if (image.size() == size)
        return image;
    const bool opaque = !image.hasAlphaChannel();
    const QImage source = image.convertToFormat(opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
    QImage result(size, source.format());
    SwsContext* scaler =
        result.isNull() ? nullptr
                        : sws_getContext(source.width(), source.height(), qtPixelLayout, size.width(), size.height(),
                                         qtPixelLayout, SWS_LANCZOS | SWS_ACCURATE_RND, nullptr, nullptr, nullptr);
    if (!scaler)
        return source.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const uint8_t* const sourcePlanes[] = {source.constBits()};
    const int sourceStrides[] = {int(source.bytesPerLine())};
    uint8_t* const resultPlanes[] = {result.bits()};
    const int resultStrides[] = {int(result.bytesPerLine())};
    sws_scale(scaler, sourcePlanes, sourceStrides, 0, source.height(), resultPlanes, resultStrides);
    sws_freeContext(scaler);
    // Lanczos lobes overshoot at hard edges: keep alpha opaque, or colour within alpha.
    for (int y = 0; y < size.height(); ++y) {
        auto* pixel = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const QRgb p = pixel[x];
            if (opaque) {
                pixel[x] = p | 0xff000000u;
            } else {
                const int a = qAlpha(p);
                pixel[x] = qRgba(std::min(qRed(p), a), std::min(qGreen(p), a), std::min(qBlue(p), a), a);
            }
        }
    }
    return result;
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
    const QSize fitted = fit(sourceSize, frame).size();
    // Whole, at the size the header gives (or the fitted size when it gives none): the JPEG reader
    // decodes whole at full quality anyway, then averages areas.
    const QSize whole = uprightSize(reader);
    QImage image = readUpright(reader, whole.isValid() ? whole : fitted);
    if (image.isNull())
        return std::nullopt;
    // A picture three or more times the size it takes is first halved by averaging pixel pairs,
    // which is cheap: the resampling after it still sets the cut-off, well below what the
    // averaging lets through. It saves most of the resampling's time on a 24-megapixel photo.
    if (image.width() >= 3 * fitted.width() && image.height() >= 3 * fitted.height())
        image = image.scaled(image.width() / 2, image.height() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return resampled(image, fitted);
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
