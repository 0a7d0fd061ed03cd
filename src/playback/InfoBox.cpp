#include "InfoBox.h"

#include "media/ExifData.h"
#include "media/IdentifiableImage.h"

#include <QLocale>

namespace tb {

QString infoBoxText(const IdentifiableImage& item, const ExifData& exif)
{
    const auto orNA = [](const std::optional<QString>& value) { return value.value_or(QStringLiteral("N/A")); };
    const QString created = item.creationDate()
                                ? QLocale().toString(item.creationDate()->toLocalTime(), QLocale::ShortFormat)
                                : QStringLiteral("Unknown");
    return QStringLiteral("Filename: ") + item.filename() + QStringLiteral("\nCreated: ") + created +
           QStringLiteral("\nCamera Model: ") + orNA(exif.cameraModel) + QStringLiteral("\nAperture: ") +
           orNA(exif.aperture) + QStringLiteral("\nExposure Time: ") + orNA(exif.exposureTime) +
           QStringLiteral("\nISO: ") + orNA(exif.iso) + QStringLiteral("\nFocal Length: ") + orNA(exif.focalLength) +
           QStringLiteral("\nTaken: ") + orNA(exif.dateTimeOriginal);
}

} // namespace tb
