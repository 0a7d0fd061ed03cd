#include "MetadataService.h"

#include "IdentifiableImage.h"
#include "core/Logger.h"

#include <cstdio>
#include <mutex>

// Exiv2 0.27 hands images around in std::auto_ptr; the deprecation is theirs, not ours.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>

namespace tb {

namespace {

std::optional<MetadataValue> valueOf(const Exiv2::ExifData& exif, const char* key)
{
    const auto it = exif.findKey(Exiv2::ExifKey(key));
    if (it == exif.end() || it->count() == 0)
        return std::nullopt;
    const Exiv2::Value& value = it->value();
    switch (value.typeId()) {
    case Exiv2::unsignedRational:
    case Exiv2::signedRational: {
        if (value.count() != 1)
            return std::nullopt;
        const Exiv2::Rational r = value.toRational(0);
        return MetadataValue(std::vector<qint64>{r.first, r.second});
    }
    case Exiv2::unsignedByte:
    case Exiv2::unsignedShort:
    case Exiv2::unsignedLong:
    case Exiv2::signedByte:
    case Exiv2::signedShort:
    case Exiv2::signedLong: {
        std::vector<qint64> whole;
        for (long i = 0; i < value.count(); ++i)
            whole.push_back(qint64(value.toLong(i)));
        return MetadataValue(std::move(whole));
    }
    case Exiv2::tiffFloat:
    case Exiv2::tiffDouble:
        if (value.count() != 1)
            return std::nullopt;
        return MetadataValue(double(value.toFloat(0)));
    case Exiv2::asciiString:
    case Exiv2::string: {
        // Cameras pad their strings with NULs and blanks.
        QString text = QString::fromStdString(value.toString()).trimmed();
        while (text.endsWith(QChar(0)))
            text.chop(1);
        return MetadataValue(text.trimmed());
    }
    default:
        return std::nullopt;
    }
}

void initialiseExiv2()
{
    static std::once_flag once;
    std::call_once(once, [] {
        // XMP's toolkit must be initialised once before threads use it; HEIC and AVIF live in
        // ISO base media files, which Exiv2 reads only when asked to.
        Exiv2::XmpParser::initialize();
        Exiv2::enableBMFF(true);
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    });
}

} // namespace

MetadataService::MetadataService() { initialiseExiv2(); }

ExifData MetadataService::exifData(const IdentifiableImage& item) { return exifData(item.filePath()); }

ExifData MetadataService::exifData(const QString& filePath)
{
    if (auto cached = cache.object(filePath))
        return *cached;

    ExifData result = ExifData::noMetadata();
    bool haveProperties = false;
    Exiv2::Image::AutoPtr image;
    try {
        image = Exiv2::ImageFactory::open(filePath.toStdString());
    } catch (const std::exception&) {
        std::puts("Failed to create image source.");
    }
    if (image.get()) {
        try {
            image->readMetadata();
            haveProperties = true;
        } catch (const std::exception&) {
            std::puts("Failed to copy image properties.");
        }
    }

    if (haveProperties) {
        const Exiv2::ExifData& exif = image->exifData();
        result.cameraModel = formatCameraModel(valueOf(exif, "Exif.Image.Model"), valueOf(exif, "Exif.Image.Make"));
        result.aperture = formatAperture(valueOf(exif, "Exif.Photo.FNumber"));
        result.exposureTime = formatExposure(valueOf(exif, "Exif.Photo.ExposureTime"));
        result.iso = formatIso(valueOf(exif, "Exif.Photo.ISOSpeedRatings"));
        result.focalLength = formatFocalLength(valueOf(exif, "Exif.Photo.FocalLength"));
        result.dateTimeOriginal = formatDateTimeOriginal(valueOf(exif, "Exif.Photo.DateTimeOriginal"));
    } else {
        logWarning(QStringLiteral("No metadata found for: ") + filePath);
    }
    cache.insert(filePath, result);
    return result;
}

} // namespace tb

#pragma GCC diagnostic pop
