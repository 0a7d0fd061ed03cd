#include "media/ExifData.h"
#include "TestPictures.h"
#include "media/MetadataService.h"
#include "support/LogCapture.h"

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations" // Exiv2 0.27 uses std::auto_ptr
#include <exiv2/exiv2.hpp>

using namespace tb;

namespace {

using Whole = std::vector<qint64>;

std::optional<MetadataValue> real(double v) { return MetadataValue(v); }
std::optional<MetadataValue> whole(Whole v) { return MetadataValue(std::move(v)); }
std::optional<MetadataValue> text(const char* v) { return MetadataValue(QString::fromUtf8(v)); }

// A small picture with camera metadata written by Exiv2, as a camera would store it.
void writePhoto(const QString& path, const char* format)
{
    QImage image(32, 24, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    ASSERT_TRUE(image.save(path, format));
    auto file = Exiv2::ImageFactory::open(path.toStdString());
    file->readMetadata();
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = "Tallowcam";
    exif["Exif.Image.Model"] = "TB-1 Mark II";
    exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10);
    exif["Exif.Photo.ExposureTime"] = Exiv2::URational(1, 250);
    exif["Exif.Photo.ISOSpeedRatings"] = uint16_t(400);
    exif["Exif.Photo.FocalLength"] = Exiv2::URational(50, 1);
    exif["Exif.Photo.DateTimeOriginal"] = "2021:03:04 05:06:07";
    file->setExifData(exif);
    file->writeMetadata();
}

} // namespace

TEST(ExifFormatting, NumbersDatesAndCameraNamesOrNA)
{
    EXPECT_EQ(formatAperture(whole({28, 10})), QStringLiteral("f/2.8"));
    EXPECT_EQ(formatAperture(whole({28, 0})), QStringLiteral("N/A"));
    EXPECT_EQ(formatAperture(whole({4})), QStringLiteral("f/4.0"));
    EXPECT_EQ(formatAperture(real(1.8)), QStringLiteral("f/1.8"));
    EXPECT_EQ(formatAperture(whole({1, 2, 3})), QStringLiteral("N/A"));
    EXPECT_EQ(formatAperture(text("2.8")), QStringLiteral("N/A"));
    EXPECT_EQ(formatAperture(std::nullopt), QStringLiteral("N/A"));

    EXPECT_EQ(formatExposure(real(0.004)), QStringLiteral("1/250"));
    EXPECT_EQ(formatExposure(whole({1, 3})), QStringLiteral("1/3"));
    EXPECT_EQ(formatExposure(whole({2})), QStringLiteral("2.0 s"));
    EXPECT_EQ(formatExposure(real(0)), QStringLiteral("N/A"));
    EXPECT_EQ(formatExposure(real(-1)), QStringLiteral("N/A"));
    EXPECT_EQ(formatExposureTime(1.0), QStringLiteral("1.0 s"));
    EXPECT_EQ(formatExposureTime(0.3), QStringLiteral("1/3"));

    EXPECT_EQ(formatFocalLength(whole({35, 1})), QStringLiteral("35 mm"));
    EXPECT_EQ(formatFocalLength(real(85.4)), QStringLiteral("85 mm"));
    EXPECT_EQ(formatFocalLength(text("50")), QStringLiteral("N/A"));

    EXPECT_EQ(formatIso(whole({400})), QStringLiteral("400"));
    EXPECT_EQ(formatIso(whole({200, 400})), QStringLiteral("200"));
    EXPECT_EQ(formatIso(whole({})), QStringLiteral("N/A"));
    EXPECT_EQ(formatIso(real(400)), QStringLiteral("N/A"));

    EXPECT_EQ(formatDateTimeOriginal(text("2021:03:04 05:06:07")), QStringLiteral("04/03/2021, 05:06"));
    EXPECT_EQ(formatDateTimeOriginal(text("2021-03-04 05:06:07")), QStringLiteral("N/A"));
    EXPECT_EQ(formatDateTimeOriginal(text("2021:13:04 05:06:07")), QStringLiteral("N/A"));
    EXPECT_EQ(formatDateTimeOriginal(text("")), QStringLiteral("N/A"));
    EXPECT_EQ(formatDateTimeOriginal(whole({2021})), QStringLiteral("N/A"));

    EXPECT_EQ(formatCameraModel(text("Z 6"), text("Nikon")), QStringLiteral("Z 6"));
    EXPECT_EQ(formatCameraModel(text(""), text("X")), QStringLiteral("X"));
    EXPECT_EQ(formatCameraModel(std::nullopt, whole({1})), QStringLiteral("Unknown"));
}

TEST(MetadataService, ReadsCameraMetadataFromJpegAndPng)
{
    QTemporaryDir dir;
    MetadataService service;
    const ExifData expected{QStringLiteral("TB-1 Mark II"), QStringLiteral("f/2.8"),
                            QStringLiteral("1/250"),        QStringLiteral("400"),
                            QStringLiteral("50 mm"),        QStringLiteral("04/03/2021, 05:06")};
    for (const char* format : {"JPG", "PNG"}) {
        const QString path = dir.filePath(QStringLiteral("photo.") + QString::fromLatin1(format).toLower());
        writePhoto(path, format);
        EXPECT_EQ(service.exifData(path), expected) << format;
    }
}

TEST(MetadataService, FilesWithoutMetadataAreRememberedToo)
{
    QTemporaryDir dir;
    MetadataService service;
    test::LogCapture capture;

    // A picture with no camera data has properties, just none of ours: no warning.
    const QString plain = dir.filePath(QStringLiteral("plain.png"));
    ASSERT_TRUE(QImage(8, 8, QImage::Format_RGB32).save(plain));
    EXPECT_EQ(service.exifData(plain), ExifData::noMetadata());
    EXPECT_TRUE(capture.messages(LogLevel::Warning).isEmpty());

    // Text posing as a photo, and a file that is not there: "no metadata", once each.
    const QString fake = test::writeBytes(dir.filePath(QStringLiteral("fake.jpg")), "not a picture");
    const QString missing = dir.filePath(QStringLiteral("missing.heic"));
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(service.exifData(fake), ExifData::noMetadata());
        EXPECT_EQ(service.exifData(missing), ExifData::noMetadata());
    }
    EXPECT_EQ(capture.messages(LogLevel::Warning), (QStringList{QStringLiteral("No metadata found for: ") + fake,
                                                                QStringLiteral("No metadata found for: ") + missing}));
}

#pragma GCC diagnostic pop
