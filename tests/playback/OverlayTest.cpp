#include "core/SettingsStore.h"
#include "playback/OverlayView.h"
#include "support/LogCapture.h"
#include "support/ReferenceColour.h"

#include <QColorSpace>
#include <QDir>
#include <QFile>
#include <QImageWriter>
#include <QQmlEngine>
#include <QQuickImageProvider>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace tb;
using namespace tb::test;

namespace {

struct OverlayTest : testing::Test {
    QTemporaryDir dir;
    SettingsStore settings{dir.filePath(QStringLiteral("settings.conf"))};

    // In a folder of its own: a search for a moved picture starts at its folder's parent.
    QString picture(const QString& name, QSize size, QColor colour,
                    QImageIOHandler::Transformations turn = QImageIOHandler::TransformationNone)
    {
        QDir(dir.path()).mkdir(QStringLiteral("pictures"));
        const QString path = dir.filePath(QStringLiteral("pictures/") + name);
        QImage image(size, QImage::Format_RGB32);
        image.fill(colour);
        QImageWriter writer(path);
        writer.setTransformation(turn);
        EXPECT_TRUE(writer.write(image));
        return path;
    }

    void choose(const QString& path)
    {
        ASSERT_TRUE(OverlayView::saveOverlayImage(settings, path));
        settings.set(Settings::overlayEnabled, true);
    }

    std::optional<QImage> load(int maxWidth = 0) { return OverlayView::loadOverlayImage(settings, maxWidth); }
};

QStringList allLines(const LogCapture& log)
{
    return log.messages(LogLevel::Info) + log.messages(LogLevel::Warning) + log.messages(LogLevel::Error);
}

} // namespace

TEST_F(OverlayTest, APictureIsRememberedAndReadBackNoWiderThanAsked)
{
    LogCapture log;
    EXPECT_FALSE(load());
    EXPECT_TRUE(allLines(log).isEmpty()) << "nothing chosen is nothing to say";
    EXPECT_FALSE(OverlayView::saveOverlayImage(settings, dir.filePath(QStringLiteral("missing.png"))));
    EXPECT_EQ(allLines(log),
              QStringList{QStringLiteral("[Overlay] Failed to create bookmark: No such file or directory")});
    EXPECT_FALSE(settings.contains(QLatin1String(Settings::overlayImageBookmark.name)));

    ASSERT_TRUE(OverlayView::saveOverlayImage(settings, picture(QStringLiteral("logo.png"), {200, 100}, Qt::red)));
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("[Overlay] Saved security-scoped bookmark for: logo.png")));
    EXPECT_EQ(load(1000)->size(), QSize(200, 100));
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("[Overlay] Successfully loaded image: logo.png")));
    EXPECT_EQ(load(50)->size(), QSize(50, 25));
    // Stored lying on its side: the width that counts is the upright one.
    ASSERT_TRUE(OverlayView::saveOverlayImage(settings, picture(QStringLiteral("turned.jpg"), {200, 100}, Qt::blue,
                                                                QImageIOHandler::TransformationRotate90)));
    EXPECT_EQ(load(50)->size(), QSize(50, 100));

    // A Display P3 mark shows in sRGB, where Little CMS puts its colour.
    const QColor saturated(30, 200, 60);
    QImage wideGamut(40, 20, QImage::Format_RGB32);
    wideGamut.fill(saturated);
    wideGamut.setColorSpace(QColorSpace::DisplayP3);
    const QString wide = dir.filePath(QStringLiteral("pictures/wide.png"));
    ASSERT_TRUE(wideGamut.save(wide));
    ASSERT_TRUE(OverlayView::saveOverlayImage(settings, wide));
    const auto expected = lcmsToSrgb(QColorSpace(QColorSpace::DisplayP3).iccProfile(), {saturated});
    ASSERT_TRUE(expected) << "transicc (liblcms2-utils) is needed";
    const QColor shown = load(20)->pixelColor(10, 5);
    EXPECT_LE(channelDifference(shown, expected->first()), 2)
        << shown.name().toStdString() << " for " << expected->first().name().toStdString();
}

TEST_F(OverlayTest, EachProblemGivesNoPictureAndItsLine)
{
    const QString path = picture(QStringLiteral("logo.png"), {20, 10}, Qt::red);
    ASSERT_TRUE(OverlayView::saveOverlayImage(settings, path));
    const QByteArray bookmark = *settings.value(Settings::overlayImageBookmark);
    // Another picture under the same name is shown, with a warning.
    ASSERT_TRUE(QFile::rename(path, dir.filePath(QStringLiteral("pictures/old.png"))));
    picture(QStringLiteral("logo.png"), {20, 10}, Qt::green);
    auto log = std::make_unique<LogCapture>();
    ASSERT_TRUE(load());
    EXPECT_EQ(load()->pixelColor(5, 5), QColor(Qt::green));
    EXPECT_TRUE(
        log->contains(LogLevel::Warning, QStringLiteral("[Overlay] Bookmark is stale, image may not be accessible")));
    EXPECT_EQ(*settings.value(Settings::overlayImageBookmark), bookmark) << "not renewed";

    QFile broken(path);
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly | QIODevice::Truncate) && broken.write("\x89PNG garbage") > 0);
    broken.close();
    log = std::make_unique<LogCapture>();
    EXPECT_FALSE(load());
    EXPECT_EQ(log->messages(LogLevel::Error), QStringList{QStringLiteral("[Overlay] Failed to load image from URL")});

    ASSERT_TRUE(QFile::remove(path) && QFile::remove(dir.filePath(QStringLiteral("pictures/old.png"))));
    for (const QByteArray& data : {bookmark, QByteArrayLiteral("\x01\x02 garbage")}) {
        settings.set(Settings::overlayImageBookmark, data);
        log = std::make_unique<LogCapture>();
        EXPECT_FALSE(load());
        const QStringList errors = log->messages(LogLevel::Error);
        ASSERT_EQ(errors.size(), 1);
        EXPECT_TRUE(errors[0].startsWith(QStringLiteral("[Overlay] Failed to resolve bookmark: The ")))
            << errors[0].toStdString();
        EXPECT_EQ(errors[0].contains(QStringLiteral("logo.png")), data == bookmark);
    }
}

TEST_F(OverlayTest, AnUnreadablePictureIsNotRead)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root reads every file";
    const QString path = picture(QStringLiteral("logo.png"), {20, 10}, Qt::red);
    ASSERT_TRUE(OverlayView::saveOverlayImage(settings, path));
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0), 0);
    LogCapture log;
    EXPECT_FALSE(load());
    EXPECT_EQ(log.messages(LogLevel::Error),
              QStringList{QStringLiteral("[Overlay] Failed to access security-scoped resource")});
}

// Live settings apply at once; the picture and the colour wait for the next appearance or for
// the overlay to be switched on again.
TEST_F(OverlayTest, TheViewFollowsItsSettings)
{
    choose(picture(QStringLiteral("logo.png"), {200, 100}, Qt::red));
    auto view = std::make_unique<OverlayView>(settings, 1000);
    EXPECT_FALSE(view->shown()) << "no picture before it appears";
    view->onAppear();
    EXPECT_TRUE(view->shown());
    EXPECT_EQ(view->pictureAspect(), 2.0);
    const QString firstSource = view->pictureSource();
    EXPECT_FALSE(firstSource.isEmpty());
    for (const auto& [name, alignment] : {std::pair{"topLeft", Qt::AlignTop | Qt::AlignLeft},
                                          {"topRight", Qt::AlignTop | Qt::AlignRight},
                                          {"bottomLeft", Qt::AlignBottom | Qt::AlignLeft},
                                          {"middle", Qt::AlignBottom | Qt::AlignRight}}) {
        settings.set(Settings::overlayPosition, QLatin1String(name));
        EXPECT_EQ(view->alignment(), int(alignment)) << name;
    }
    for (const auto& [name, factor] : {std::pair{"small", 0.05}, {"large", 0.15}, {"huge", 0.1}}) {
        settings.set(Settings::overlaySize, QLatin1String(name));
        EXPECT_EQ(view->widthFactor(), factor) << name;
    }
    settings.set(Settings::overlayType, QStringLiteral("text"));
    EXPECT_FALSE(view->shown()) << "no text to show";
    settings.set(Settings::overlayText, QStringLiteral("Tallowbrook"));
    EXPECT_TRUE(view->shown());
    settings.set(Settings::overlayType, QStringLiteral("logo"));
    EXPECT_FALSE(view->isText()) << "anything but text is a picture";

    settings.saveColor(Settings::overlayFontColorData, Qt::red);
    ASSERT_TRUE(OverlayView::saveOverlayImage(settings, picture(QStringLiteral("tall.png"), {50, 100}, Qt::blue)));
    EXPECT_EQ(std::pair(view->fontColor(), view->pictureSource()), std::pair(QColor(Qt::white), firstSource));
    settings.set(Settings::overlayEnabled, false);
    EXPECT_FALSE(view->shown());
    settings.set(Settings::overlayEnabled, true);
    EXPECT_EQ(view->fontColor(), QColor(Qt::red));
    EXPECT_EQ(view->pictureAspect(), 0.5);
    EXPECT_NE(view->pictureSource(), firstSource);

    // The engine may let its provider go after the view.
    std::unique_ptr<QQuickImageProvider> provider(view->makeImageProvider());
    view.reset();
    QSize size;
    const QImage served = provider->requestImage(QStringLiteral("2"), &size, QSize(10, 20));
    EXPECT_EQ(std::pair(size, served.size()), std::pair(QSize(50, 100), QSize(10, 20)));
    EXPECT_EQ(served.pixelColor(5, 10), QColor(Qt::blue));
}

namespace {

// Overlay.qml alone in a 1920x1080 window with a black background.
struct OverlayScene {
    QQuickView window;

    explicit OverlayScene(OverlayView& overlay)
    {
        window.setColor(Qt::black);
        window.setResizeMode(QQuickView::SizeRootObjectToView);
        window.engine()->addImageProvider(QStringLiteral("overlay"), overlay.makeImageProvider());
        window.setInitialProperties({{QStringLiteral("overlay"), QVariant::fromValue<QObject*>(&overlay)}});
        window.setSource(QUrl(QStringLiteral("qrc:/tallowbrook/playback/qml/Overlay.qml")));
        EXPECT_TRUE(window.errors().isEmpty()) << window.errors().value(0).toString().toStdString();
        window.resize(1920, 1080);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    // The smallest rectangle holding every pixel that is not black, and the brightest pixel.
    QRect drawn(QColor* brightest = nullptr)
    {
        const QImage frame = window.grabWindow().convertToFormat(QImage::Format_RGB32);
        EXPECT_EQ(frame.size(), QSize(1920, 1080));
        QRect box;
        int best = 0;
        for (int y = 0; y < frame.height(); ++y) {
            const auto* line = reinterpret_cast<const QRgb*>(frame.constScanLine(y));
            for (int x = 0; x < frame.width(); ++x) {
                const int sum = qRed(line[x]) + qGreen(line[x]) + qBlue(line[x]);
                box |= sum > 24 ? QRect(x, y, 1, 1) : QRect();
                if (brightest && sum > best) {
                    *brightest = QColor::fromRgb(line[x]);
                    best = sum;
                }
            }
        }
        return box;
    }
};

// Smooth scaling may soften the outermost pixels.
void expectNear(const QRect& actual, const QRect& expected)
{
    for (const auto& [a, e] : {std::pair{actual.left(), expected.left()},
                               {actual.top(), expected.top()},
                               {actual.right(), expected.right()},
                               {actual.bottom(), expected.bottom()}})
        EXPECT_LE(std::abs(a - e), 1) << a << " vs " << e;
}

} // namespace

TEST_F(OverlayTest, ThePictureSitsInItsCornerAtItsShareOfTheWidth)
{
    choose(picture(QStringLiteral("logo.png"), {200, 100}, Qt::red));
    OverlayView view(settings, 1920);
    view.onAppear();
    OverlayScene scene(view);
    QColor colour;
    expectNear(scene.drawn(&colour), QRect(1920 - 20 - 192, 1080 - 20 - 96, 192, 96));
    EXPECT_NEAR(colour.red(), 204, 2) << "red at 0.8";
    settings.set(Settings::overlayMargin, 0.0);
    expectNear(scene.drawn(), QRect(1920 - 192, 1080 - 96, 192, 96));
    settings.set(Settings::overlayMargin, 20.0);
    settings.set(Settings::overlayPosition, QStringLiteral("topLeft"));
    settings.set(Settings::overlaySize, QStringLiteral("large"));
    expectNear(scene.drawn(), QRect(20, 20, 288, 144));
}

TEST_F(OverlayTest, TextDrawsInItsColourAndEmptyTextDrawsNothing)
{
    settings.set(Settings::overlayEnabled, true);
    settings.set(Settings::overlayType, QStringLiteral("text"));
    settings.saveColor(Settings::overlayFontColorData, Qt::red);
    OverlayView view(settings, 1920);
    view.onAppear();
    OverlayScene scene(view);
    EXPECT_TRUE(scene.drawn().isEmpty());
    settings.set(Settings::overlayText, QStringLiteral("Tallowbrook"));
    QColor colour;
    const QRect box = scene.drawn(&colour);
    EXPECT_TRUE(QRect(960, 1000, 940, 60).contains(box)) << "in the corner, inside the margin";
    EXPECT_GT(colour.red(), 150);
    EXPECT_LT(colour.green(), 40);
}
