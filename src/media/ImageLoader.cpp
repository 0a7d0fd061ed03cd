#include "ImageLoader.h"

#include "SrgbConversion.h"
#include "core/FileSystems.h"
#include "core/Logger.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

namespace tb {

namespace {

// The size with width and height swapped when the file says the picture lies on its side.
QSize turnedSideways(const QImageReader& reader, QSize size)
{
    if (reader.transformation().testFlag(QImageIOHandler::TransformationRotate90))
        size.transpose();
    return size;
}

} // namespace

QSize uprightSize(const QImageReader& reader)
{
    const QSize stored = reader.size();
    return stored.isValid() ? turnedSideways(reader, stored) : stored;
}

QImage readUpright(QImageReader& reader, const QSize& upright)
{
    reader.setAutoTransform(true);
    return readScaled(reader, turnedSideways(reader, upright));
}

ImageLoader::ImageLoader(QSize maximumSize, const FileSystems* fileSystems)
    : maximumSize(maximumSize), fileSystems(fileSystems)
{
}

std::optional<Picture> ImageLoader::loadImage(const QUrl& url)
{
    const QString key = url.toString();
    if (auto hit = cache.object(key))
        return hit;

    QElapsedTimer clock;
    clock.start();
    const QString path = url.toLocalFile();
    const QFileInfo info(path);
    if (!info.exists()) {
        logError(QStringLiteral("Image file does not exist: ") + path);
        return std::nullopt;
    }
    if (!info.isReadable()) {
        logError(QStringLiteral("Image file exists but is not readable (permission denied): ") + path);
        return std::nullopt;
    }

    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize original = uprightSize(reader);
    // Decode no larger than the screen can show; the reader scales in the stored orientation.
    QSize scaledTarget;
    if (original.isValid() && maximumSize.isValid() &&
        (original.width() > maximumSize.width() || original.height() > maximumSize.height()))
        scaledTarget = turnedSideways(reader, original.scaled(maximumSize, Qt::KeepAspectRatio));
    QImage image = readScaled(reader, scaledTarget);
    if (image.isNull()) {
        logError(QStringLiteral("Failed to load image (took %1s): %2")
                     .arg(QString::asprintf("%.2f", double(clock.elapsed()) / 1000.0), info.fileName()));
        if (fileSystems && fileSystems->isNetworkPath(path))
            logWarning(QStringLiteral("Image is on network volume - may require folder access permission"));
        return std::nullopt;
    }
    const QSize ownSize = original.isValid() ? original : image.size();
    Picture picture{std::move(image), ownSize};
    // The cost is what the decoded pixels take, whatever the picture's own size.
    const qint64 cost = qint64(picture.image.width()) * picture.image.height() * 4;
    cache.insert(key, picture, cost);
    return picture;
}

QImage readScaled(QImageReader& reader, const QSize& size)
{
    static const QList<QByteArray> scalingDecoders{"jpeg", "jpg", "heic", "heif", "avif", "jxl"};
    if (!size.isValid() || scalingDecoders.contains(reader.format().toLower())) {
        if (size.isValid())
            reader.setScaledSize(size);
        return SrgbConversion::toSrgb(reader.read(), reader);
    }
    // Without a scaling decoder the reader turns the picture upright after reading: scale to
    // the upright box.
    QImage image = reader.read();
    if (image.isNull())
        return image;
    const QSize upright = turnedSideways(reader, size);
    if (image.depth() < 32)
        image = image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    return SrgbConversion::toSrgb(image.scaled(upright, Qt::IgnoreAspectRatio, Qt::SmoothTransformation), reader);
}

} // namespace tb
