#include "ExifData.h"

#include <QDateTime>

#include <cmath>

namespace tb {

namespace {

const QString notAvailable = QStringLiteral("N/A");

std::optional<QString> nonEmptyText(const std::optional<MetadataValue>& value)
{
    if (!value)
        return std::nullopt;
    const QString* text = std::get_if<QString>(&*value);
    if (!text || text->isEmpty())
        return std::nullopt;
    return *text;
}

} // namespace

ExifData ExifData::noMetadata()
{
    return ExifData{QStringLiteral("Unknown"), notAvailable, notAvailable, notAvailable, notAvailable, notAvailable};
}

std::optional<double> numericValue(const std::optional<MetadataValue>& value)
{
    if (!value)
        return std::nullopt;
    if (const double* real = std::get_if<double>(&*value))
        return *real;
    if (const auto* whole = std::get_if<std::vector<qint64>>(&*value)) {
        if (whole->size() == 1)
            return double(whole->front());
        if (whole->size() == 2 && (*whole)[1] != 0)
            return double((*whole)[0]) / double((*whole)[1]);
    }
    return std::nullopt;
}

QString formatAperture(const std::optional<MetadataValue>& value)
{
    const auto number = numericValue(value);
    return number ? QString::asprintf("f/%.1f", *number) : notAvailable;
}

QString formatExposureTime(double seconds)
{
    if (!(seconds > 0))
        return notAvailable;
    if (seconds < 1)
        return QStringLiteral("1/%1").arg(qint64(std::llround(1.0 / seconds)));
    return QString::asprintf("%.1f s", seconds);
}

QString formatExposure(const std::optional<MetadataValue>& value)
{
    const auto number = numericValue(value);
    return number ? formatExposureTime(*number) : notAvailable;
}

QString formatIso(const std::optional<MetadataValue>& value)
{
    if (value) {
        if (const auto* whole = std::get_if<std::vector<qint64>>(&*value); whole && !whole->empty())
            return QString::number(whole->front());
    }
    return notAvailable;
}

QString formatFocalLength(const std::optional<MetadataValue>& value)
{
    const auto number = numericValue(value);
    return number ? QString::asprintf("%.0f mm", *number) : notAvailable;
}

QString formatDateTimeOriginal(const std::optional<MetadataValue>& value)
{
    const auto text = nonEmptyText(value);
    if (!text)
        return notAvailable;
    const QDateTime when = QDateTime::fromString(*text, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    return when.isValid() ? when.toString(QStringLiteral("dd/MM/yyyy, HH:mm")) : notAvailable;
}

QString formatCameraModel(const std::optional<MetadataValue>& model, const std::optional<MetadataValue>& make)
{
    if (auto text = nonEmptyText(model))
        return *text;
    if (auto text = nonEmptyText(make))
        return *text;
    return QStringLiteral("Unknown");
}

} // namespace tb
