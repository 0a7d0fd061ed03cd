#include "documents/SlideshowLoadService.h"
#include "core/RecordingAnalytics.h"
#include "documents/DocumentCodec.h"
#include "media/Bookmark.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace tb;
using namespace tb::test;

namespace {

struct LoadTest : ::testing::Test {
    QTemporaryDir dir;
    RecordingAnalytics analytics;
    SlideshowLoadService service{analytics};

    QString at(const QString& relative) const { return dir.filePath(relative); }
    QString write(const QString& relative, const QByteArray& bytes = "picture")
    {
        QDir().mkpath(QFileInfo(at(relative)).path());
        QFile file(at(relative));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return at(relative);
    }
    SavedImageInfo saved(const QString& relative, bool withBookmark = true)
    {
        SavedImageInfo image;
        image.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
        image.filename = QFileInfo(relative).fileName();
        image.originalPath = at(relative);
        image.relativePath = relative;
        if (withBookmark) {
            const auto bookmark = Bookmark::create(at(relative), nullptr);
            EXPECT_TRUE(bookmark.has_value());
            image.bookmarkData = bookmark ? bookmark->toData() : QByteArray();
        }
        return image;
    }
    QString lastEvent(const char* key) const
    {
        return analytics.events().last().segmentation.value(QLatin1String(key));
    }
};

std::optional<QString> errorOf(const std::variant<SlideshowDocument, SlideshowLoadError>& result)
{
    if (const auto* error = std::get_if<SlideshowLoadError>(&result))
        return error->description();
    return std::nullopt;
}

} // namespace

TEST_F(LoadTest, ReadingReportsEachOutcomeOnceAndChangesNothingElse)
{
    LogCapture log;
    EXPECT_EQ(errorOf(service.loadDocument(at("none.slideshow"))), QStringLiteral("Slideshow file not found"));
    EXPECT_EQ(lastEvent("success"), QStringLiteral("false"));

    write("bad.slideshow", "{\"version\": 2.7}");
    EXPECT_EQ(errorOf(service.loadDocument(at("bad.slideshow"))),
              QStringLiteral("Failed to load slideshow: version: expected a string"));
    EXPECT_TRUE(log.contains(LogLevel::Error, "Failed to load slideshow: version: expected a string"));
    EXPECT_EQ(lastEvent("error"), QStringLiteral("version: expected a string"));

    SlideshowDocument document;
    document.version = QStringLiteral("9.9");
    document.metadata = {QDateTime::currentDateTimeUtc(), QStringLiteral("0.1"), 7, 2, QStringLiteral("x")};
    document.settings.gridOptionRaw = 3;
    document.settings.transitionType = QStringLiteral("Ken Burns");
    document.liveModeSettings = SavedLiveModeSettings{true, std::nullopt, std::nullopt};
    const QString good = write("good.slideshow", encodeSlideshowDocument(document));
    ASSERT_FALSE(errorOf(service.loadDocument(good)));
    EXPECT_TRUE(log.contains(LogLevel::Warning, "Loading slideshow with version 9.9, current version is 1.0"));
    EXPECT_TRUE(log.contains(LogLevel::Info, "Successfully loaded slideshow: 7 images, 2 audio tracks"))
        << "the counts are the metadata's";
    const Segmentation expected{{"success", "true"},
                                {"imageCount", "7"},
                                {"audioTrackCount", "2"},
                                {"slideshowVersion", "9.9"},
                                {"appVersionThatCreated", "0.1"},
                                {"fileSizeBytes", QString::number(QFileInfo(good).size())},
                                {"hasAudio", "true"},
                                {"gridMode", "3"},
                                {"transitionType", "Ken Burns"},
                                {"hasLiveMode", "true"}};
    EXPECT_EQ(analytics.events().last().segmentation, expected);
}

// Each item is looked for by its bookmark, then its original path, then under the base folder by
// relative path and by name; the lines tell which way found it.
TEST_F(LoadTest, RestorationTriesEachWayInTurnAndKeepsDocumentOrder)
{
    SlideshowDocument document;
    write("shows/renamed.jpg");
    document.images.append(saved("shows/renamed.jpg"));
    ASSERT_TRUE(QFile::rename(at("shows/renamed.jpg"), at("shows/new name.jpg")));
    write("shows/deleted.jpg");
    document.images.append(saved("shows/deleted.jpg"));
    QFile::remove(at("shows/deleted.jpg"));
    write("home/pics/relative.jpg");
    SavedImageInfo relative = saved("home/pics/relative.jpg", false);
    relative.originalPath = at("gone/relative.jpg");
    relative.relativePath = QStringLiteral("pics/relative.jpg");
    document.images.append(relative);
    write("home/byname.gif");
    SavedImageInfo byName = saved("home/byname.gif", false);
    byName.originalPath = at("gone/byname.gif");
    byName.relativePath.reset();
    byName.isGIF = true;
    document.images.append(byName);
    SavedImageInfo clip = saved("shows/clip.mp4", false);
    write("shows/clip.mp4");
    clip.isVideo = true;
    clip.videoDuration = 4.0;
    document.images.append(clip);
    SavedAudioTrack track{QStringLiteral("0E7A1F4B-2C3D-4E5F-8A9B-0C1D2E3F4A5B"),
                          QStringLiteral("gone.mp3"),
                          at("gone.mp3"),
                          std::nullopt,
                          12.0,
                          std::nullopt};
    document.audioTracks = {track};

    LogCapture log;
    BookmarkResolver resolver;
    const auto images = SlideshowLoadService::restoreImages(document, at("home"), resolver);
    QStringList found;
    for (const IdentifiableImage& item : images.items)
        found.append(item.filePath());
    EXPECT_EQ(found, (QStringList{at("shows/new name.jpg"), at("home/pics/relative.jpg"), at("home/byname.gif"),
                                  at("shows/clip.mp4")}));
    EXPECT_EQ(images.missingNames(), QStringList{"deleted.jpg"});
    EXPECT_EQ(images.items[0].filename(), QStringLiteral("renamed.jpg")) << "the document's name stays";
    EXPECT_NE(images.items[0].id(), QUuid::fromString(document.images[0].id)) << "a fresh id";
    EXPECT_TRUE(images.items[2].isGIF());
    EXPECT_TRUE(images.items[3].isVideo());
    EXPECT_FALSE(images.items[1].isVideo()) << "no isVideo means a picture";
    for (const char* line :
         {"📊 Bookmark is stale: true", "✅ Successfully restored image from bookmark: renamed.jpg",
          "❌ No bookmark data available for: relative.jpg", "💀 All fallback methods failed for: deleted.jpg",
          "Restored 4/5 images", "Missing files: [\"deleted.jpg\"]"})
        EXPECT_TRUE(log.all().contains(QString::fromUtf8(line))) << line;
    EXPECT_TRUE(
        log.contains(LogLevel::Info, QStringLiteral("✅ Found file at relative path: ") + at("home/pics/relative.jpg")));
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("✅ Found file by filename: ") + at("home/byname.gif")));
    EXPECT_TRUE(log.messages(LogLevel::Error)
                    .first()
                    .startsWith(QString::fromUtf8("💥 Failed to resolve bookmark data for deleted.jpg: ")));

    const auto tracks = SlideshowLoadService::restoreAudioTracks(document, at("home"), resolver);
    EXPECT_TRUE(tracks.items.isEmpty());
    EXPECT_EQ(tracks.missingNames(), QStringList{"gone.mp3"});
    EXPECT_TRUE(
        log.contains(LogLevel::Warning, QStringLiteral("❌ Audio file not found at original path: ") + at("gone.mp3")));
    EXPECT_TRUE(log.contains(LogLevel::Warning, "Could not restore audio track: gone.mp3"));
}

// A bookmark whose file cannot be read gives way to the original path, which then decides.
TEST_F(LoadTest, AnUnreadableBookmarkedFileFallsBackToItsPath)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads every file";
    const QString path = write("locked.jpg");
    SlideshowDocument document;
    document.images.append(saved("locked.jpg"));
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0), 0);
    LogCapture log;
    BookmarkResolver resolver;
    const auto images = SlideshowLoadService::restoreImages(document, std::nullopt, resolver);
    EXPECT_TRUE(log.contains(LogLevel::Warning,
                             QStringLiteral("🔒 Failed to start accessing security-scoped resource: ") + path));
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("✅ Found file at original path: ") + path));
    EXPECT_EQ(images.items.size(), 1);
}
