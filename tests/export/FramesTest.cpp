#include "export/FrameKernels.h"
#include "export/ImagePreparation.h"
#include "export/KenBurns.h"
#include "support/LogCapture.h"
#include "support/PlaybackDoubles.h"
#include "support/ReferenceColour.h"

#include <QColorSpace>
#include <QPainter>
#include <QTemporaryDir>

#include <array>
#include <cmath>
#include <random>

#include <exiv2/exiv2.hpp>
#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

QImage filled(QSize size, QColor colour)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return image;
}

IdentifiableImage itemFor(const QString& path) { return makeItem(QUrl::fromLocalFile(path)); }

} // namespace

TEST(FrameKernels, ABlendIsExactAtItsEndsAndMixesBetween)
{
    const QImage red = filled({64, 36}, Qt::red);
    const QImage blue = filled({64, 36}, Qt::blue);
    QImage out(red.size(), red.format());
    FrameKernels::blend(red, blue, 0.0, out);
    EXPECT_EQ(out, red);
    FrameKernels::blend(red, blue, 1.0, out);
    EXPECT_EQ(out, blue);
    FrameKernels::blend(red, blue, 0.5, out);
    const QColor middle = out.pixelColor(10, 10);
    EXPECT_EQ(middle.red(), 127);
    EXPECT_EQ(middle.blue(), 127);
    EXPECT_EQ(middle.alpha(), 255);
    QImage inPlace = red;
    FrameKernels::blend(inPlace, blue, 0.25, inPlace);
    EXPECT_EQ(inPlace.pixelColor(0, 0), QColor(191, 0, 63));
}

TEST(FrameKernels, AZoomKeepsTheCentreAndAMoveUpIsUp)
{
    // Grey, with a white 4x4 mark in the middle and a black column at the left edge.
    QImage picture = filled({200, 100}, Qt::gray);
    QPainter(&picture).fillRect(98, 48, 4, 4, Qt::white);
    QPainter(&picture).fillRect(0, 0, 2, 100, Qt::black);
    QImage out(picture.size(), picture.format());

    FrameKernels::zoomAndShift(picture, 1.0, {}, out);
    EXPECT_EQ(out, picture) << "no zoom and no move is a copy";

    FrameKernels::zoomAndShift(picture, 1.1, {}, out);
    EXPECT_EQ(out.pixelColor(99, 49), QColor(Qt::white)) << "the centre stays put";
    EXPECT_EQ(out.pixelColor(100, 50), QColor(Qt::white));
    EXPECT_EQ(out.pixelColor(0, 50), QColor(Qt::gray)) << "the edge moved out of the frame";

    FrameKernels::zoomAndShift(picture, 1.0, {0.0, 10.0}, out);
    EXPECT_EQ(out.pixelColor(99, 39), QColor(Qt::white)) << "positive y moves the picture up";
    EXPECT_EQ(out.pixelColor(99, 49), QColor(Qt::gray));

    // Far beyond the picture: the edge repeats, and nothing is read outside it.
    FrameKernels::zoomAndShift(picture, 1.0, {-5000.0, 5000.0}, out);
    EXPECT_EQ(out.pixelColor(0, 0), QColor(Qt::gray));
}

TEST(FrameKernels, NoiseIsSampledAsBilinearFilteringSays)
{
    // Odd sizes, so that the vector loops leave tails; noise, so that a swapped lane or weight shows.
    QImage picture({37, 23}, QImage::Format_ARGB32_Premultiplied);
    std::mt19937 random(7);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, qRgb(int(random() % 256), int(random() % 256), int(random() % 256)));
    const auto channels = [](QRgb c) {
        return std::array<double, 4>{double(qRed(c)), double(qGreen(c)), double(qBlue(c)), double(qAlpha(c))};
    };
    QImage out(picture.size(), picture.format());

    const QImage other = picture.mirrored(true, true);
    FrameKernels::blend(picture, other, 0.3, out);
    const double scale = 1.07;
    const QPointF shift(3.3, -2.6);
    QImage zoomed(picture.size(), picture.format());
    FrameKernels::zoomAndShift(picture, scale, shift, zoomed);

    double worstBlend = 0.0;
    double worstZoom = 0.0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const auto a = channels(picture.pixel(x, y));
            const auto b = channels(other.pixel(x, y));
            const auto mixed = channels(out.pixel(x, y));
            for (int c = 0; c < 4; ++c)
                worstBlend = std::max(worstBlend, std::abs(mixed[c] - (a[c] * 0.7 + b[c] * 0.3)));

            const auto at = [&](double centre, double position, double move, int size) {
                return std::clamp((position + 0.5 - centre) / scale + centre - move - 0.5, 0.0, size - 1.0);
            };
            const double u = at(picture.width() / 2.0, x, shift.x(), picture.width());
            const double v = at(picture.height() / 2.0, y, -shift.y(), picture.height());
            const int x0 = int(u);
            const int y0 = int(v);
            const int x1 = std::min(x0 + 1, picture.width() - 1);
            const int y1 = std::min(y0 + 1, picture.height() - 1);
            const auto p00 = channels(picture.pixel(x0, y0));
            const auto p10 = channels(picture.pixel(x1, y0));
            const auto p01 = channels(picture.pixel(x0, y1));
            const auto p11 = channels(picture.pixel(x1, y1));
            const auto sampled = channels(zoomed.pixel(x, y));
            for (int c = 0; c < 4; ++c) {
                const double top = p00[c] + (p10[c] - p00[c]) * (u - x0);
                const double bottom = p01[c] + (p11[c] - p01[c]) * (u - x0);
                worstZoom = std::max(worstZoom, std::abs(sampled[c] - (top + (bottom - top) * (v - y0))));
            }
        }
    }
    // 8-bit weights and truncation cost at most a level or two, never more.
    EXPECT_LE(worstBlend, 1.5);
    EXPECT_LE(worstZoom, 2.5);
}

TEST(FrameKernels, PicturesBecomeVideoRangeBt709)
{
    // 21 × 7: the vector loop takes columns 0–15 and the plain loop the rest, the last column and
    // row alone. Columns 16–20 repeat columns 0–4, so both loops must give the same bytes there.
    QImage picture({21, 7}, QImage::Format_ARGB32);
    std::mt19937 random(11);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < 16; ++x)
            picture.setPixel(x, y, qRgb(int(random() % 256), int(random() % 256), int(random() % 256)));
    picture.setPixel(0, 0, qRgb(255, 0, 0));
    picture.setPixel(1, 0, qRgb(255, 0, 0));
    picture.setPixel(0, 1, qRgb(255, 0, 0));
    picture.setPixel(1, 1, qRgb(255, 0, 0));
    picture.setPixel(2, 2, qRgb(255, 255, 255));
    picture.setPixel(3, 2, qRgb(0, 0, 0));
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 16; x < 21; ++x)
            picture.setPixel(x, y, picture.pixel(x - 16, y));
    const int chromaWidth = 11;
    std::vector<std::uint8_t> luma(21 * 7, 0), blue(11 * 4, 0), red(11 * 4, 0);
    std::uint8_t* const planes[3] = {luma.data(), blue.data(), red.data()};
    const int strides[3] = {21, chromaWidth, chromaWidth};
    FrameKernels::toYuv420(picture, planes, strides);

    EXPECT_EQ(blue[0], 102) << "red's blue difference";
    EXPECT_EQ(red[0], 240) << "red's red difference";
    EXPECT_EQ(luma[0], 63) << "red's luma";
    EXPECT_EQ(luma[2 * 21 + 2], 235) << "white";
    EXPECT_EQ(luma[2 * 21 + 3], 16) << "black";
    double worst = 0.0;
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 21; ++x) {
            const QRgb c = picture.pixel(x, y);
            const double expected = 16 + 219 * (0.2126 * qRed(c) + 0.7152 * qGreen(c) + 0.0722 * qBlue(c)) / 255;
            worst = std::max(worst, std::abs(luma[size_t(y * 21 + x)] - expected));
        }
    for (int cy = 0; cy < 4; ++cy)
        for (int cx = 0; cx < chromaWidth; ++cx) {
            double r = 0, g = 0, b = 0;
            for (const int y : {2 * cy, std::min(2 * cy + 1, 6)})
                for (const int x : {2 * cx, std::min(2 * cx + 1, 20)}) {
                    const QRgb c = picture.pixel(x, y);
                    r += qRed(c) / 4.0, g += qGreen(c) / 4.0, b += qBlue(c) / 4.0;
                }
            const double cb = 128 + 224 * (-0.1146 * r - 0.3854 * g + 0.5 * b) / 255;
            const double cr = 128 + 224 * (0.5 * r - 0.4542 * g - 0.0458 * b) / 255;
            worst = std::max({worst, std::abs(blue[size_t(cy * chromaWidth + cx)] - cb),
                              std::abs(red[size_t(cy * chromaWidth + cx)] - cr)});
        }
    EXPECT_LE(worst, 0.51) << "every level the nearest one";
    for (int y = 0; y < 7; ++y)
        for (int x = 16; x < 20; ++x)
            ASSERT_EQ(luma[size_t(y * 21 + x)], luma[size_t(y * 21 + x - 16)]) << x << "," << y;
    for (int cy = 0; cy < 4; ++cy)
        for (int cx = 8; cx < 10; ++cx) {
            ASSERT_EQ(blue[size_t(cy * chromaWidth + cx)], blue[size_t(cy * chromaWidth + cx - 8)]);
            ASSERT_EQ(red[size_t(cy * chromaWidth + cx)], red[size_t(cy * chromaWidth + cx - 8)]);
        }
}

TEST(KenBurnsMotion, ProgressThroughAPicturesLife)
{
    EXPECT_DOUBLE_EQ(Motion::ease(0.0), 0.0);
    EXPECT_DOUBLE_EQ(Motion::ease(0.5), 0.5);
    EXPECT_DOUBLE_EQ(Motion::ease(std::nextafter(0.5, 0.0)), 0.5) << "both branches meet";
    EXPECT_DOUBLE_EQ(Motion::ease(1.0), 1.0);
    EXPECT_DOUBLE_EQ(Motion::ease(0.25), 0.0625);
    EXPECT_DOUBLE_EQ(Motion::transitionTime(0, 24), 0.0);
    EXPECT_DOUBLE_EQ(Motion::transitionTime(23, 24), 1.0);
    EXPECT_DOUBLE_EQ(Motion::transitionTime(0, 1), 1.0);

    // Delay 1 s with a 0.8 s transition: the second picture's solo runs 0.8 to 1, its way out
    // 1 to 1.8; a picture alone only reaches solo / delay.
    const double solo = std::max(1.0 - 0.8, 0.1);
    const double start = Motion::startProgressAfterTransition(0.8, 1.0);
    EXPECT_DOUBLE_EQ(start, 0.8);
    EXPECT_DOUBLE_EQ(Motion::soloProgress(start, 0.0, solo, 1.0), 0.8);
    EXPECT_DOUBLE_EQ(Motion::soloProgress(start, 1.0, solo, 1.0), 1.0);
    EXPECT_NEAR(Motion::outgoingProgress(start, 0.0, 0.8, 1.0), 1.0, 1e-12);
    EXPECT_NEAR(Motion::outgoingProgress(start, 1.0, 0.8, 1.0), 1.8, 1e-12);
    EXPECT_DOUBLE_EQ(Motion::incomingProgress(1.0, 0.8, 1.0), 0.8);
    EXPECT_NEAR(Motion::soloProgress(0.0, 1.0, solo, 1.0), 0.2, 1e-12);
    EXPECT_LT(Motion::outgoingProgress(0.0, 0.0, 0.8, 0.5), 0.0) << "a short delay starts the way out behind";

    const Motion::Zoom zoom = Motion::at({1.1, 20.0, -10.0}, 0.5);
    EXPECT_DOUBLE_EQ(zoom.scale, 1.05);
    EXPECT_EQ(zoom.shift, QPointF(10.0, -5.0));

    SeededRandom random(9);
    for (const KenBurnsTargetState& target : makeKenBurnsTargets(200, random)) {
        EXPECT_GE(target.targetScale, 1.05);
        EXPECT_LE(target.targetScale, 1.10);
        EXPECT_LE(std::abs(target.targetOffsetX), 20.0);
        EXPECT_LE(std::abs(target.targetOffsetY), 20.0);
    }
}

TEST(ImagePreparation, PicturesAreFittedUprightOnTheBackground)
{
    QTemporaryDir dir;
    LogCapture log;
    const QColor green(0, 128, 0);

    // A 4:3 photo in a 16:9 frame: bars of 240 px on both sides.
    const QString wide = dir.filePath(QStringLiteral("wide.png"));
    filled({400, 300}, Qt::red).save(wide);
    const QSizeF wideSize = ImagePreparation::imageSize(itemFor(wide));
    EXPECT_EQ(wideSize, QSizeF(400, 300));
    const auto decoded = ImagePreparation::decodeFitted(itemFor(wide), wideSize, {1920, 1080});
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->size(), QSize(1440, 1080));
    const QImage frame = ImagePreparation::scaledImage(*decoded, wideSize, {1920, 1080}, green);
    EXPECT_EQ(frame.size(), QSize(1920, 1080));
    EXPECT_EQ(frame.pixelColor(239, 540), green);
    EXPECT_EQ(frame.pixelColor(240, 0), QColor(Qt::red));
    EXPECT_EQ(frame.pixelColor(1679, 1079), QColor(Qt::red));
    EXPECT_EQ(frame.pixelColor(1680, 540), green);

    // A small picture is scaled up; transparency shows the background.
    QImage clear = filled({100, 100}, Qt::transparent);
    QPainter(&clear).fillRect(0, 0, 50, 100, Qt::blue);
    const QImage up = ImagePreparation::scaledImage(clear, clear.size(), {1280, 720}, green);
    EXPECT_EQ(up.pixelColor(280 + 10, 360), QColor(Qt::blue));
    EXPECT_EQ(up.pixelColor(280 + 710, 360), green) << "through the transparent half";

    // Stored 40x30 and turned by its EXIF orientation 6: it counts, and is decoded, as 30x40.
    const QString turned = dir.filePath(QStringLiteral("turned.jpg"));
    filled({40, 30}, Qt::blue).save(turned);
    auto file = Exiv2::ImageFactory::open(turned.toStdString());
    file->readMetadata();
    file->exifData()["Exif.Image.Orientation"] = std::uint16_t(6);
    file->writeMetadata();
    const QSizeF upright = ImagePreparation::imageSize(itemFor(turned));
    EXPECT_EQ(upright, QSizeF(30, 40));
    EXPECT_EQ(ImagePreparation::decodeFitted(itemFor(turned), upright, {1920, 1080})->size(), QSize(810, 1080));

    // An Adobe RGB photo reaches the frame in sRGB, where Little CMS puts its colour.
    const QString adobe = dir.filePath(QStringLiteral("adobe.png"));
    const QColor saturated(30, 200, 60);
    QImage wideGamut = filled({400, 300}, saturated);
    wideGamut.setColorSpace(QColorSpace::AdobeRgb);
    wideGamut.save(adobe);
    const auto expected = lcmsToSrgb(QColorSpace(QColorSpace::AdobeRgb).iccProfile(), {saturated});
    ASSERT_TRUE(expected) << "transicc (liblcms2-utils) is needed";
    const auto fitted = ImagePreparation::decodeFitted(itemFor(adobe), {400, 300}, {1920, 1080});
    ASSERT_TRUE(fitted);
    const QColor framed = ImagePreparation::scaledImage(*fitted, {400, 300}, {1920, 1080}, green).pixelColor(960, 540);
    EXPECT_LE(channelDifference(framed, expected->first()), 2)
        << framed.name().toStdString() << " for " << expected->first().name().toStdString();
    std::printf("exported frame: difference from Little CMS %d/255\n", channelDifference(framed, expected->first()));

    // Detail finer than the frame can hold is filtered out, not folded back as a coarser pattern:
    // stripes 2.4 px apart, halved, come out as even grey (averaging pairs of pixels leaves
    // beats of about 19 levels).
    QImage stripes({2000, 1000}, QImage::Format_RGB32);
    for (int x = 0; x < stripes.width(); ++x) {
        const int level = int(std::lround(128 + 100 * std::sin(2 * M_PI * x / 2.4)));
        for (int y = 0; y < stripes.height(); ++y)
            stripes.setPixel(x, y, qRgb(level, level, level));
    }
    for (const char* name : {"stripes.png", "stripes.jpg"}) {
        const QString path = dir.filePath(QLatin1String(name));
        stripes.save(path, nullptr, 100);
        const auto halved = ImagePreparation::decodeFitted(itemFor(path), {2000, 1000}, {1000, 500});
        ASSERT_TRUE(halved);
        ASSERT_EQ(halved->size(), QSize(1000, 500));
        int worst = 0;
        for (int x = 10; x < 990; ++x)
            worst = std::max(worst, std::abs(qGray(halved->pixel(x, 250)) - 128));
        EXPECT_LE(worst, 6) << name;
    }

    // An unreadable file: the size falls back with its two lines, and nothing decodes.
    const QString broken = dir.filePath(QStringLiteral("broken.jpg"));
    QFile(broken).open(QIODevice::WriteOnly);
    EXPECT_EQ(ImagePreparation::imageSize(itemFor(broken)), QSizeF(1920, 1080));
    EXPECT_TRUE(log.contains(LogLevel::Warning,
                             QStringLiteral("Could not read image metadata for broken.jpg, trying NSImage fallback")));
    EXPECT_TRUE(log.contains(LogLevel::Error, QStringLiteral("All image size detection methods failed for broken.jpg, "
                                                             "using default 1920x1080")));
    EXPECT_FALSE(ImagePreparation::decodeFitted(itemFor(broken), {1920, 1080}, {1920, 1080}));
}
