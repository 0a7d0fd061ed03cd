#pragma once

#include <QString>

#include <optional>
#include <variant>
#include <vector>

namespace tb {

// A photo's metadata, formatted for display ("Unknown" or "N/A" where the file does not say).
struct ExifData {
    std::optional<QString> cameraModel;
    std::optional<QString> aperture;
    std::optional<QString> exposureTime;
    std::optional<QString> iso;
    std::optional<QString> focalLength;
    std::optional<QString> dateTimeOriginal;

    // What a file without readable metadata shows.
    static ExifData noMetadata();
    bool operator==(const ExifData&) const = default;
};

// A metadata value as the file stores it: a real number, whole numbers, or text. A rational is
// the list of its numerator and denominator.
using MetadataValue = std::variant<double, std::vector<qint64>, QString>;

// The number a numeric field stands for: a real, a single whole number, or a pair of whole
// numbers with a non-zero second one (a rational). Anything else stands for nothing.
std::optional<double> numericValue(const std::optional<MetadataValue>& value);

QString formatAperture(const std::optional<MetadataValue>& value);         // "f/2.8"
QString formatExposureTime(double seconds);                                // "1/250", "2.0 s"
QString formatExposure(const std::optional<MetadataValue>& value);         // the formatter on a field
QString formatIso(const std::optional<MetadataValue>& value);              // "400"
QString formatFocalLength(const std::optional<MetadataValue>& value);      // "50 mm"
QString formatDateTimeOriginal(const std::optional<MetadataValue>& value); // "04/03/2021, 05:06"
QString formatCameraModel(const std::optional<MetadataValue>& model, const std::optional<MetadataValue>& make);

} // namespace tb
