#include "IdentifiableImage.h"

#include "ClipProbe.h"
#include "MediaTypes.h"

#include <QFileInfo>

namespace tb {

IdentifiableImage::IdentifiableImage(QUuid id, QUrl url, QString filename, QString path,
                                     std::optional<QDateTime> creationDate, bool isGIF, bool isVideo,
                                     std::optional<double> videoDuration)
    : idValue(id),
      urlValue(std::move(url)),
      filenameValue(std::move(filename)),
      pathValue(std::move(path)),
      creationDateValue(std::move(creationDate)),
      isGIFValue(isGIF),
      isVideoValue(isVideo),
      videoDurationValue(videoDuration)
{
}

std::optional<QDateTime> fileCreationDate(const QString& filePath)
{
    const QDateTime born = QFileInfo(filePath).birthTime();
    return born.isValid() ? std::optional<QDateTime>(born) : std::nullopt;
}

IdentifiableImage makeItem(const QUrl& url)
{
    const QString filePath = url.toLocalFile();
    const QFileInfo info(filePath);
    QString folder = info.path();

    // QFileInfo::suffix() is the text after the last dot: "a.gif.jpg" is a JPEG.
    const QString extension = info.suffix().toLower();
    const bool isGIF = extension == QLatin1String("gif");
    const bool isVideo = isVideoExtension(extension);

    std::optional<double> duration;
    if (isVideo)
        duration = clipDuration(filePath).value_or(0.0); // an unreadable clip still becomes an item

    auto created = fileCreationDate(filePath);
    return IdentifiableImage(QUuid::createUuid(), url, info.fileName(), std::move(folder), std::move(created), isGIF,
                             isVideo, duration);
}

} // namespace tb
