#include "TestPictures.h"
#include "core/FileSystems.h"
#include "media/ImageLoader.h"
#include "media/SharedThumbnails.h"
#include "media/ThumbnailGenerator.h"
#include "media/VideoThumbnailGenerator.h"
#include "platform/LinuxFileSystems.h"
#include "platform/LinuxProcessMemory.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

QUrl fileUrl(const QString& path) { return QUrl::fromLocalFile(path); }

struct FakeFileSystems final : FileSystems {
    explicit FakeFileSystems(bool network) : network(network) {}
    bool isNetworkPath(const QString&) const override { return network; }
    bool network;
};

QString writePng(const QTemporaryDir& dir, const QString& name, QSize size)
{
    const QString path = dir.filePath(name);
    EXPECT_TRUE(writePicture(twoColourPicture(size.width(), size.height()), path));
    return path;
}

} // namespace

TEST(ImageLoader, CachesFiftyPicturesByTheCostOfTheirScreenSizedPixels)
{
    QTemporaryDir dir;
    ImageLoader loader(QSize(1000, 800));
    const QString first = writePng(dir, QStringLiteral("0.png"), QSize(100, 100));
    const auto small = loader.loadImage(fileUrl(first));
    ASSERT_TRUE(small);
    EXPECT_EQ(small->image.size(), QSize(100, 100)) << "never enlarged";
    EXPECT_EQ(loader.cachedCost(), 40000);

    // A cached picture is served even after its file is gone.
    QFile::remove(first);
    EXPECT_TRUE(loader.loadImage(fileUrl(first)));

    for (int i = 1; i <= 50; ++i)
        ASSERT_TRUE(loader.loadImage(fileUrl(writePng(dir, QStringLiteral("%1.png").arg(i), QSize(10, 10)))));
    EXPECT_EQ(loader.cachedCount(), 50);
    EXPECT_FALSE(loader.isCached(fileUrl(first))) << "the 51st picture pushed out the oldest";
    loader.clearCache();
    EXPECT_EQ(loader.cachedCount(), 0);

    const auto wide = loader.loadImage(fileUrl(writePng(dir, QStringLiteral("wide.png"), QSize(4000, 1000))));
    ASSERT_TRUE(wide);
    EXPECT_EQ(wide->image.size(), QSize(1000, 250));
    EXPECT_EQ(wide->originalSize, QSize(4000, 1000));
    EXPECT_EQ(loader.cachedCost(), 1000 * 250 * 4);
}

TEST(ImageLoader, FailuresAreLoggedAndNetworkFilesWarned)
{
    QTemporaryDir dir;
    LogCapture log;
    const QString broken = writeBytes(dir.filePath(QStringLiteral("broken.jpg")), "no jpeg here");

    const FakeFileSystems here{false};
    ImageLoader local(QSize(), &here);
    EXPECT_FALSE(local.loadImage(fileUrl(dir.filePath(QStringLiteral("missing.png")))));
    EXPECT_FALSE(local.loadImage(fileUrl(broken)));
    EXPECT_FALSE(local.loadImage(fileUrl(broken))) << "a failure is not remembered: it is tried again";
    const QStringList errors = log.messages(LogLevel::Error);
    ASSERT_EQ(errors.size(), 3);
    EXPECT_EQ(errors[0], QStringLiteral("Image file does not exist: ") + dir.filePath(QStringLiteral("missing.png")));
    EXPECT_TRUE(QRegularExpression(QStringLiteral(R"(^Failed to load image \(took \d+\.\d\ds\): broken\.jpg$)"))
                    .match(errors[1])
                    .hasMatch())
        << errors[1].toStdString();
    EXPECT_TRUE(log.messages(LogLevel::Warning).isEmpty());

    const FakeFileSystems there{true};
    ImageLoader remote(QSize(), &there);
    EXPECT_FALSE(remote.loadImage(fileUrl(broken)));
    EXPECT_EQ(log.messages(LogLevel::Warning),
              QStringList{QStringLiteral("Image is on network volume - may require folder access permission")});

    const LinuxFileSystems linux;
    EXPECT_TRUE(linux.isNetworkPath(QStringLiteral("/run/user/1000/gvfs/smb-share:server=nas,share=photos/a.jpg")));
    EXPECT_FALSE(linux.isNetworkPath(dir.path()));
}

TEST(ThumbnailGenerator, AtMostTwiceTheDisplaySizeAndAMemoryLineEveryTenth)
{
    QTemporaryDir dir;
    LogCapture log;
    LinuxProcessMemory process;
    ThumbnailGenerator thumbnails(&process);
    const QString big = writePng(dir, QStringLiteral("big.png"), QSize(1000, 500));
    const auto thumbnail = thumbnails.generateThumbnail(fileUrl(big), QSize(150, 100));
    ASSERT_TRUE(thumbnail);
    EXPECT_EQ(thumbnail->size(), QSize(300, 150));
    EXPECT_EQ(thumbnails.generateThumbnail(fileUrl(big), QSize(10, 10))->size(), QSize(20, 10))
        << "each size has its own thumbnail";
    EXPECT_EQ(
        thumbnails.generateThumbnail(fileUrl(writePng(dir, QStringLiteral("s.png"), QSize(60, 30))), QSize(150, 150))
            ->size(),
        QSize(60, 30));

    for (int i = 0; i < 28; ++i)
        thumbnails.generateThumbnail(fileUrl(writePng(dir, QStringLiteral("t%1.png").arg(i), QSize(20, 20))),
                                     QSize(150, 150));
    const QStringList memory = log.messages(LogLevel::Info).filter(QStringLiteral("Memory usage: "));
    EXPECT_EQ(memory.size(), 3) << "after the 10th, 20th and 30th";
    EXPECT_TRUE(QRegularExpression(QStringLiteral(R"(^Memory usage: \d+\.\dMB$)")).match(memory.value(0)).hasMatch());

    const QString text = writeBytes(dir.filePath(QStringLiteral("notes.jpg")), "plain words");
    EXPECT_FALSE(thumbnails.generateThumbnail(fileUrl(text), QSize(150, 150)));
    EXPECT_EQ(log.messages(LogLevel::Error),
              QStringList{QStringLiteral("Failed to create image source for: notes.jpg")});
}

TEST(VideoThumbnailGenerator, PosterFramesFitInFourHundredAndClipsWithoutVideoFail)
{
    QTemporaryDir dir;
    LogCapture log;
    const QString clip = dir.filePath(QStringLiteral("clip.mp4"));
    ASSERT_TRUE(makeClip(clip, {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                                QStringLiteral("color=c=red:s=640x360:r=10"), QStringLiteral("-c:v"),
                                QStringLiteral("mpeg4")}));
    VideoThumbnailGenerator posters;
    const auto poster = posters.thumbnail(fileUrl(clip));
    ASSERT_TRUE(poster);
    EXPECT_EQ(poster->size(), QSize(400, 225));
    const QColor middle = poster->pixelColor(200, 112);
    EXPECT_GT(middle.red(), 200);
    EXPECT_LT(middle.green(), 60);

    const QString sound = dir.filePath(QStringLiteral("sound.mp4"));
    ASSERT_TRUE(makeClip(sound, {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                                 QStringLiteral("sine=frequency=440"), QStringLiteral("-c:a"), QStringLiteral("aac")}));
    EXPECT_FALSE(posters.thumbnail(fileUrl(sound)));
    EXPECT_EQ(
        log.messages(LogLevel::Error),
        QStringList{QStringLiteral("Failed to generate video thumbnail for sound.mp4: The file has no video track.")});

    posters.clearCache();
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("VideoThumbnailGenerator cache cleared")));
}

TEST(ThumbnailGenerator, OneBitPalettePicturesKeepTheirColours)
{
    // Qt's own scaled read turns these into noise; the loaders scale them after decoding.
    QTemporaryDir dir;
    QImage palette(640, 480, QImage::Format_Mono);
    palette.setColorTable({qRgb(255, 0, 0), qRgb(0, 0, 255)});
    palette.fill(0);
    const QString path = dir.filePath(QStringLiteral("palette.png"));
    ASSERT_TRUE(palette.save(path));

    ThumbnailGenerator thumbnails;
    const auto thumbnail = thumbnails.generateThumbnail(fileUrl(path), QSize(150, 150));
    ASSERT_TRUE(thumbnail);
    EXPECT_EQ(thumbnail->size(), QSize(300, 225));
    EXPECT_EQ(thumbnail->pixelColor(150, 112), QColor(Qt::red));

    ImageLoader loader(QSize(320, 240));
    const auto picture = loader.loadImage(fileUrl(path));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->image.size(), QSize(320, 240));
    EXPECT_EQ(picture->image.pixelColor(160, 120), QColor(Qt::red));
}

// A thumbnail another program already shared stands in for decoding; what is decoded is shared.
TEST(ThumbnailGenerator, UsesTheDesktopsSharedThumbnailsBothWays)
{
    QTemporaryDir dir;
    SharedThumbnails shared(dir.filePath(QStringLiteral("cache")));
    ThumbnailGenerator thumbnails(nullptr, &shared);
    const QString decoded = writePng(dir, QStringLiteral("decoded.png"), QSize(1000, 500));
    ASSERT_TRUE(thumbnails.generateThumbnail(fileUrl(decoded), QSize(150, 150)));
    EXPECT_TRUE(shared.find(decoded, 300)) << "written back for the other programs";

    const QString known = writePng(dir, QStringLiteral("known.png"), QSize(1000, 500));
    QImage theirs(256, 128, QImage::Format_RGB32);
    theirs.fill(Qt::magenta);
    shared.store(known, theirs);
    const auto taken = thumbnails.generateThumbnail(fileUrl(known), QSize(150, 150));
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->pixelColor(10, 10), QColor(Qt::magenta)) << "the shared one, not a decode";
    EXPECT_EQ(thumbnails.generateThumbnail(fileUrl(known), QSize(200, 200))->pixelColor(10, 10),
              QColor(Qt::magenta).toRgb())
        << "256 pixels cover a 200-point display at one pixel a point";

    ThumbnailGenerator unshared(nullptr, &shared);
    unshared.setSharing(false);
    EXPECT_NE(unshared.generateThumbnail(fileUrl(known), QSize(150, 150))->pixelColor(10, 10),
              QColor(Qt::magenta).toRgb())
        << "with the setting off the file is decoded";
}
