#include "TestPictures.h"
#include "media/MediaTypes.h"

#include <QImageReader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

// Close enough for lossy codecs on flat colour.
bool near(QColor a, QColor b)
{
    return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue()) < 60;
}

} // namespace

TEST(Decoding, EveryPictureExtensionOpensThroughQImageReader)
{
    QTemporaryDir dir;
    const QImage original = twoColourPicture(64, 48);
    for (const QString& extension : supportedFileExtensions()) {
        if (isVideoExtension(extension))
            continue;
        SCOPED_TRACE(extension.toStdString());
        const QString path = dir.filePath(QStringLiteral("picture.") + extension);
        ASSERT_TRUE(writePicture(original, path)) << "no encoder for " << extension.toStdString();

        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QImage decoded = reader.read();
        ASSERT_FALSE(decoded.isNull()) << reader.errorString().toStdString();
        if (extension == QLatin1String("gif")) {
            EXPECT_EQ(decoded.size(), QSize(16, 12));
            EXPECT_EQ(reader.imageCount(), 2) << "both frames of the animation";
            continue;
        }
        EXPECT_EQ(decoded.size(), QSize(64, 48));
        EXPECT_TRUE(near(decoded.pixelColor(8, 24), Qt::red)) << decoded.pixelColor(8, 24).name().toStdString();
        EXPECT_TRUE(near(decoded.pixelColor(56, 24), Qt::blue)) << decoded.pixelColor(56, 24).name().toStdString();

        QImageReader scaled(path);
        scaled.setScaledSize(QSize(32, 24));
        EXPECT_EQ(scaled.read().size(), QSize(32, 24));
        EXPECT_EQ(QImageReader(path).size(), QSize(64, 48));
    }
}

TEST(Decoding, BadFilesGiveNoPictureAndNoCrash)
{
    QTemporaryDir dir;
    const QImage original = twoColourPicture(64, 48);
    ASSERT_TRUE(writePicture(original, dir.filePath(QStringLiteral("good.heic"))));
    ASSERT_TRUE(writePicture(original, dir.filePath(QStringLiteral("good.jxl"))));
    ASSERT_TRUE(writePicture(original, dir.filePath(QStringLiteral("good.avif"))));

    auto write = [&](const QString& name, const QByteArray& bytes) { return writeBytes(dir.filePath(name), bytes); };
    const QByteArray heic = readBytes(dir.filePath(QStringLiteral("good.heic")));
    const QByteArray jxl = readBytes(dir.filePath(QStringLiteral("good.jxl")));
    const QByteArray avif = readBytes(dir.filePath(QStringLiteral("good.avif")));
    QByteArray flipped = heic;
    for (qsizetype i = heic.size() / 2; i < heic.size(); i += 7)
        flipped[i] = char(~flipped[i]);

    const QStringList bad{
        write(QStringLiteral("empty.heic"), {}),
        write(QStringLiteral("text.heic"), "this is not a picture at all"),
        write(QStringLiteral("half.heic"), heic.left(heic.size() / 2)),
        write(QStringLiteral("header.heic"), heic.left(40)),
        write(QStringLiteral("damaged.heic"), flipped),
        write(QStringLiteral("half.avif"), avif.left(avif.size() / 2)),
        write(QStringLiteral("half.jxl"), jxl.left(jxl.size() / 2)),
        write(QStringLiteral("signature.jxl"), jxl.left(12)),
        write(QStringLiteral("noise.jxl"), QByteArray("\xff\x0a") + QByteArray(500, '\x37')),
        write(QStringLiteral("empty.jpg"), {}),
    };
    for (const QString& path : bad) {
        QImageReader reader(path);
        reader.setAutoTransform(true);
        EXPECT_TRUE(reader.read().isNull()) << path.toStdString();
    }

    // A picture with the wrong extension is recognised by its content.
    EXPECT_FALSE(QImageReader(write(QStringLiteral("really-heic.jpg"), heic)).read().isNull());
}
