#include "TestPictures.h"
#include "media/ImageLoader.h"
#include "media/SrgbConversion.h"
#include "media/ThumbnailGenerator.h"
#include "support/LogCapture.h"
#include "support/ReferenceColour.h"

#include <QColorSpace>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

// Saturated colours that lie outside sRGB in each wide gamut used here, and a grey.
const QList<QColor> patchColours{{30, 200, 60}, {220, 30, 90}, {40, 60, 230}, {128, 128, 128}};

// Four patches side by side, 64 pixels each, labelled with `space` (not converted into it).
QImage patches(const QColorSpace& space)
{
    QImage picture(256, 64, QImage::Format_RGB32);
    for (int i = 0; i < patchColours.size(); ++i)
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x)
                picture.setPixelColor(i * 64 + x, y, patchColours[i]);
    picture.setColorSpace(space);
    return picture;
}

QColor patch(const QImage& image, int index)
{
    return image.pixelColor(image.width() * (2 * index + 1) / 8, image.height() / 2);
}

std::string name(QColor colour) { return colour.name().toStdString(); }

std::function<bool(const QString&)> nclx(int primaries, int transfer)
{
    return [=](const QString& path) { return writeHeif(patches({}), path, {primaries, transfer, {}}); };
}

} // namespace

// The player's pictures and the thumbnails land where Little CMS puts the file's own decoded
// colours, whatever container carried the profile.
TEST(ColourManagement, WideGamutPicturesArriveInSrgbWhereLittleCmsPutsThem)
{
    QTemporaryDir dir;
    LogCapture log;
    struct Case {
        const char* name;
        QColorSpace space;
        std::function<bool(const QString&)> write;
    };
    const QColorSpace adobe(QColorSpace::AdobeRgb), p3(QColorSpace::DisplayP3), proPhoto(QColorSpace::ProPhotoRgb);
    // A camera's own matrix profile: primaries no standard names, a plain gamma curve.
    const QColorSpace camera(QPointF(0.3127, 0.3290), QPointF(0.70, 0.29), QPointF(0.21, 0.75), QPointF(0.14, 0.05),
                             QColorSpace::TransferFunction::Gamma, 1.8f);
    auto qtWriter = [](const QColorSpace& space) {
        return [space](const QString& path) { return writePicture(patches(space), path); };
    };
    const QList<Case> cases{
        {"adobe.png", adobe, qtWriter(adobe)},
        {"p3.jpg", p3, qtWriter(p3)},
        {"prophoto.tiff", proPhoto, qtWriter(proPhoto)},
        {"adobe.webp", adobe, qtWriter(adobe)},
        {"camera.jpg", camera, qtWriter(camera)},
        {"p3-nclx.heic", p3, nclx(12, 13)},
        {"p3-nclx.avif", p3, nclx(12, 13)},
        {"prophoto-icc.avif", proPhoto, qtWriter(proPhoto)},
        {"p3.jxl", p3, qtWriter(p3)},
        {"adobe-icc.jxl", adobe, qtWriter(adobe)},
    };
    ImageLoader loader(QSize(128, 32));
    ThumbnailGenerator thumbnails;
    for (const Case& c : cases) {
        int largest = 0;
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath(QString::fromLatin1(c.name));
        ASSERT_TRUE(c.write(path));
        // The decoder's own pixels, still in the file's colours: lossy codecs move them a little.
        const QImage raw = QImageReader(path).read();
        ASSERT_FALSE(raw.isNull());
        EXPECT_EQ(raw.colorSpace(), c.space) << "the decoder reports the file's colours";
        QList<QColor> stored;
        for (int i = 0; i < patchColours.size(); ++i)
            stored.append(patch(raw, i));
        const auto expected = lcmsToSrgb(c.space.iccProfile(), stored);
        ASSERT_TRUE(expected) << "transicc (liblcms2-utils) is needed";

        const auto picture = loader.loadImage(QUrl::fromLocalFile(path));
        const auto thumbnail = thumbnails.generateThumbnail(QUrl::fromLocalFile(path), QSize(16, 16));
        ASSERT_TRUE(picture && thumbnail);
        EXPECT_EQ(picture->image.size(), QSize(128, 32)) << "converted at the scaled size";
        EXPECT_EQ(picture->image.colorSpace(), QColorSpace(QColorSpace::SRgb));
        for (int i = 0; i < patchColours.size(); ++i) {
            const int shown = channelDifference(patch(picture->image, i), (*expected)[i]);
            const int small = channelDifference(patch(*thumbnail, i), (*expected)[i]);
            EXPECT_LE(shown, 2) << i << ": " << name(patch(picture->image, i)) << " for " << name((*expected)[i]);
            EXPECT_LE(small, 2) << i << ": " << name(patch(*thumbnail, i)) << " for " << name((*expected)[i]);
            largest = std::max({largest, shown, small});
        }
        EXPECT_GT(channelDifference(patch(picture->image, 0), stored[0]), 10) << "the green moved into sRGB";
        std::printf("%s: largest difference from Little CMS %d/255\n", c.name, largest);
    }
    EXPECT_EQ(log.messages(LogLevel::Warning), QStringList());
}

// A profile that cannot be used, or none at all: the picture loads with its pixels as decoded,
// and only the unusable profile is said, once.
TEST(ColourManagement, PicturesWithoutAUsableProfileLoadAsDecoded)
{
    QTemporaryDir dir;
    const QColorSpace adobe(QColorSpace::AdobeRgb);
    struct Case {
        const char* name;
        std::function<bool(const QString&)> write;
        bool warns;
    };
    auto broken = [](const QColorSpace& space) {
        return [space](const QString& path) {
            // An ICC profile's signature is "acsp"; without it no reader takes the profile.
            const QByteArray bytes = writePicture(patches(space), path) ? readBytes(path) : QByteArray();
            EXPECT_TRUE(bytes.contains("acsp")) << path.toStdString();
            return !bytes.isEmpty() && writeBytes(path, QByteArray(bytes).replace("acsp", "xxxx")) == path;
        };
    };
    const QList<Case> cases{
        {"plain.jpg", [](const QString& path) { return writePicture(patches({}), path); }, false},
        {"plain.png", [](const QString& path) { return writePicture(patches({}), path); }, false},
        {"broken.jpg", broken(adobe), true},
        {"broken.tiff", broken(adobe), true},
        {"broken.webp", broken(adobe), true},
        {"broken.heic", broken(adobe), true},
        {"pq.heic", nclx(9, 16), true},
        {"hlg.avif", nclx(9, 18), true},
    };
    ImageLoader loader;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath(QString::fromLatin1(c.name));
        ASSERT_TRUE(c.write(path));
        const QImage raw = QImageReader(path).read();
        LogCapture log;
        const auto picture = loader.loadImage(QUrl::fromLocalFile(path));
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->image.convertToFormat(QImage::Format_RGB32), raw.convertToFormat(QImage::Format_RGB32));
        const QStringList warnings = log.messages(LogLevel::Warning);
        ASSERT_EQ(warnings.size(), c.warns ? 1 : 0) << warnings.join(u'\n').toStdString();
        if (c.warns) {
            EXPECT_TRUE(warnings[0].contains(QString::fromLatin1(c.name))) << warnings[0].toStdString();
        }
    }

    // The markers are found in each container Qt reads profiles from, and only there.
    for (const char* extension : {"jpg", "png", "tiff", "webp"}) {
        SCOPED_TRACE(extension);
        const QString with = dir.filePath(QStringLiteral("with.") + QLatin1String(extension));
        const QString without = dir.filePath(QStringLiteral("without.") + QLatin1String(extension));
        ASSERT_TRUE(writePicture(patches(adobe), with) && writePicture(patches({}), without));
        QFile withFile(with), withoutFile(without);
        ASSERT_TRUE(withFile.open(QIODevice::ReadOnly) && withoutFile.open(QIODevice::ReadOnly));
        withFile.seek(5);
        EXPECT_TRUE(SrgbConversion::embedsIccProfile(withFile));
        EXPECT_EQ(withFile.pos(), 5) << "the reader's place is given back";
        EXPECT_FALSE(SrgbConversion::embedsIccProfile(withoutFile));
    }
}
