#include "OverlayPictureProvider.h"

namespace tb {

void OverlayPicture::set(const QImage& replacement)
{
    QMutexLocker lock(&mutex);
    image = replacement;
}

QImage OverlayPicture::get() const
{
    QMutexLocker lock(&mutex);
    return image;
}

OverlayPictureProvider::OverlayPictureProvider(std::shared_ptr<const OverlayPicture> picture)
    : QQuickImageProvider(QQuickImageProvider::Image), picture(std::move(picture))
{
}

QImage OverlayPictureProvider::requestImage(const QString&, QSize* size, const QSize& requestedSize)
{
    const QImage image = picture->get();
    if (size)
        *size = image.size();
    if (image.isNull() || requestedSize == image.size())
        return image;
    if (requestedSize.width() > 0 && requestedSize.height() > 0)
        return image.scaled(requestedSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (requestedSize.width() > 0)
        return image.scaledToWidth(requestedSize.width(), Qt::SmoothTransformation);
    if (requestedSize.height() > 0)
        return image.scaledToHeight(requestedSize.height(), Qt::SmoothTransformation);
    return image;
}

} // namespace tb
