#include "TestPictures.h"
#include "media/IdentifiableImage.h"
#include "media/MediaTypes.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

IdentifiableImage itemFor(const QString& path) { return makeItem(QUrl::fromLocalFile(path)); }

} // namespace

TEST(MediaTypes, ExtensionListsKeepTheirOrderAndTheNarrowerLiveList)
{
    EXPECT_EQ(supportedFileExtensions().join(QLatin1Char(' ')),
              QStringLiteral("jpg jpeg png heic gif webp avif jxl tif tiff mp4 m4v mov avi"));
    EXPECT_EQ(liveModeExtensions().join(QLatin1Char(' ')),
              QStringLiteral("jpg jpeg png heic gif webp avif mp4 m4v mov avi"));
    EXPECT_FALSE(isSupportedExtension(QString()));
}

TEST(MediaTypes, EnumsReadTheirRawValuesWithTheirFallbacks)
{
    struct Grid {
        int raw;
        GridOption option;
        const char* label;
        int rows, columns;
    };
    for (const Grid& g : {Grid{0, GridOption::none, "Single photo view", 0, 0},
                          Grid{1, GridOption::sideBySide, "Side-by-side view", 1, 2},
                          Grid{2, GridOption::twoByTwo, "2x2 Grid view", 2, 2},
                          Grid{3, GridOption::threeByThree, "3x3 Grid view", 3, 3},
                          Grid{7, GridOption::none, "Single photo view", 0, 0},
                          Grid{-1, GridOption::none, "Single photo view", 0, 0}}) {
        const GridOption option = gridOptionFromRaw(g.raw);
        EXPECT_EQ(option, g.option) << g.raw;
        EXPECT_EQ(gridOptionLabel(option), QLatin1String(g.label)) << g.raw;
        EXPECT_EQ(gridRows(option), g.rows) << g.raw;
        EXPECT_EQ(gridColumns(option), g.columns) << g.raw;
    }

    for (auto type : {TransitionType::none, TransitionType::fade, TransitionType::kenBurns})
        EXPECT_EQ(transitionTypeFromRaw(transitionTypeRaw(type)), type);
    EXPECT_EQ(transitionTypeRaw(TransitionType::none), QStringLiteral("-"));
    EXPECT_EQ(transitionTypeFromRaw(QStringLiteral("Dissolve")), TransitionType::none);

    for (auto mode : {ImageScalingMode::fit, ImageScalingMode::fill, ImageScalingMode::bestFit})
        EXPECT_EQ(imageScalingModeFromRaw(imageScalingModeRaw(mode)), mode);
    EXPECT_EQ(imageScalingModeFromRaw(QStringLiteral("Stretch")), ImageScalingMode::bestFit);
    EXPECT_EQ(imageScalingModeFromRaw(QStringLiteral("fit (maintain aspect ratio)")), ImageScalingMode::bestFit)
        << "raw values match exactly";
}

TEST(MakeItem, NamesPathsAndKindsComeFromTheLowerCasedExtension)
{
    struct Case {
        const char* path;
        const char* filename;
        const char* folder;
        bool isGIF;
        bool isVideo;
    };
    for (const Case& c : {Case{"/a/b/c.jpg", "c.jpg", "/a/b", false, false},
                          Case{"/shows/PHOTO.GIF", "PHOTO.GIF", "/shows", true, false},
                          Case{"/shows/a.gif.jpg", "a.gif.jpg", "/shows", false, false},
                          Case{"/shows/README", "README", "/shows", false, false},
                          Case{"/clips/Holiday.MOV", "Holiday.MOV", "/clips", false, true},
                          Case{"/clips/with space/x.avi", "x.avi", "/clips/with space", false, true}}) {
        const IdentifiableImage item = itemFor(QString::fromUtf8(c.path));
        EXPECT_EQ(item.filename(), QString::fromUtf8(c.filename)) << c.path;
        EXPECT_EQ(item.path(), QString::fromUtf8(c.folder)) << c.path;
        EXPECT_EQ(item.isGIF(), c.isGIF) << c.path;
        EXPECT_EQ(item.isVideo(), c.isVideo) << c.path;
        // Missing files still make items: nothing is decoded, a missing clip has length 0.
        EXPECT_EQ(item.videoDuration().has_value(), c.isVideo) << c.path;
        EXPECT_FALSE(item.creationDate().has_value()) << c.path;
        EXPECT_FALSE(item.id().isNull());
    }
    EXPECT_NE(itemFor(QStringLiteral("/a/b/c.jpg")).id(), itemFor(QStringLiteral("/a/b/c.jpg")).id())
        << "the same file twice gives two items";
}

TEST(MakeItem, ReadsBirthTimesAndClipDurations)
{
    QTemporaryDir dir;
    const QString picture = writeBytes(dir.filePath(QStringLiteral("picture.png")));
    const QDateTime before = QDateTime::currentDateTime().addSecs(-5);
    const IdentifiableImage photo = itemFor(picture);
    if (photo.creationDate()) {
        EXPECT_GE(*photo.creationDate(), before);
        EXPECT_LE(*photo.creationDate(), QDateTime::currentDateTime().addSecs(5));
    }

    const QString clip = dir.filePath(QStringLiteral("clip.mp4"));
    ASSERT_TRUE(
        makeClip(clip,
                 {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                  QStringLiteral("testsrc=size=64x48:rate=10"), QStringLiteral("-c:v"), QStringLiteral("mpeg4")},
                 2));
    const IdentifiableImage video = itemFor(clip);
    ASSERT_TRUE(video.isVideo());
    ASSERT_TRUE(video.videoDuration().has_value());
    EXPECT_NEAR(*video.videoDuration(), 2.0, 0.05);

    // Bytes that are no clip at all still make an item, with a length of 0.
    const IdentifiableImage unreadable =
        itemFor(writeBytes(dir.filePath(QStringLiteral("broken.m4v")), QByteArray(4096, '\x5a')));
    EXPECT_TRUE(unreadable.isVideo());
    EXPECT_EQ(unreadable.videoDuration(), 0.0);
}
