#include "ShellFixture.h"

#include "audio/AudioManager.h"
#include "documents/DocumentCodec.h"
#include "documents/SlideshowOpening.h"
#include "media/Queue.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace tb;
using namespace tb::test;

namespace {

struct DocumentOpeningTest : ShellFixture {
    QString picture(const char* name) { return savePicture(QLatin1String(name), Qt::red, {8, 8}); }
    // Pictures named in an order no sort option gives: z, a, m.
    SlideshowDocument document()
    {
        SlideshowDocument d;
        d.version = QStringLiteral("1.0");
        d.metadata.createdDate = QDateTime::currentDateTimeUtc();
        d.settings.slideshowDelay = 7.0;
        d.settings.gridOptionRaw = 2;
        d.settings.transitionType = QStringLiteral("Ken Burns");
        d.settings.imageScalingMode = QStringLiteral("Fit (maintain aspect ratio)");
        d.settings.selectedSortOption = QStringLiteral("Filename Ascending ↑");
        for (const char* name : {"z.png", "a.png", "m.png"}) {
            SavedImageInfo image;
            image.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
            image.filename = QLatin1String(name);
            image.originalPath = picture(name);
            d.images.append(image);
        }
        d.audioTracks = {{QStringLiteral("0E7A1F4B-2C3D-4E5F-8A9B-0C1D2E3F4A5B"), QStringLiteral("s.mp3"),
                          picture("s.mp3"), std::nullopt, 30.0, std::nullopt}};
        d.audioSettings = {0.25, false, 0};
        return d;
    }
    void openAndWait(ContentView& window, const SlideshowDocument& d)
    {
        window.documentOpening().open(d);
        QTRY_VERIFY(!window.documentOpening().isOpening());
    }
    static QStringList names(const Queue& queue)
    {
        QStringList result;
        for (const IdentifiableImage& item : queue.items())
            result.append(item.filename());
        return result;
    }
};

} // namespace

// The document replaces queue, playlist and settings at once: its order stands (the sort label is
// shown, not applied), the playlist gets its tracks and settings, and live mode follows the record.
TEST_F(DocumentOpeningTest, ADocumentReplacesTheWindowsQueuePlaylistAndSettings)
{
    ContentView& window = openWindow();
    window.queue().append({makeItem(QUrl::fromLocalFile(picture("old.png")))});
    const QUuid refresh = window.queue().refreshID();
    slideshowManager.setWatchedFolder(QUrl::fromLocalFile(dir.path()));
    slideshowManager.setLiveModeActive(true);
    LogCapture log;

    SlideshowDocument d = document();
    openAndWait(window, d);
    EXPECT_EQ(names(window.queue()), (QStringList{"z.png", "a.png", "m.png"}));
    EXPECT_NE(window.queue().refreshID(), refresh);
    EXPECT_EQ(window.selectedSortOption(), QStringLiteral("Filename Ascending ↑"));
    EXPECT_EQ(settings.value(Settings::displayMode), 2);
    EXPECT_EQ(settings.value(Settings::slideshowDelay), 7.0);
    EXPECT_EQ(window.audio().trackCount(), 1);
    EXPECT_DOUBLE_EQ(window.audio().volume(), 0.25);
    EXPECT_FALSE(window.audio().isLooping());
    EXPECT_TRUE(window.audio().hasPlayer()) << "the first track is loaded";
    EXPECT_TRUE(slideshowManager.isLiveModeActive()) << "no live-mode record leaves live mode alone";
    EXPECT_TRUE(log.contains(LogLevel::Info, "Slideshow loaded: 3 images, 1 audio tracks"));
    EXPECT_EQ(window.toastText(), QStringLiteral("Slideshow loaded: 3 images, 1 audio tracks"));

    d.liveModeSettings = SavedLiveModeSettings{true, std::nullopt, QStringLiteral("next")};
    openAndWait(window, d);
    EXPECT_FALSE(slideshowManager.isLiveModeActive()) << "on without a folder turns it off";
    EXPECT_FALSE(slideshowManager.watchedFolder());
    EXPECT_EQ(settings.value(Settings::liveModeNewPhotosBehavior), QStringLiteral("next"));
    d.liveModeSettings = SavedLiveModeSettings{true, dir.path(), std::nullopt};
    openAndWait(window, d);
    EXPECT_TRUE(slideshowManager.isLiveModeActive());
    EXPECT_EQ(slideshowManager.watchedFolder(), QUrl::fromLocalFile(dir.path()));
    EXPECT_EQ(settings.value(Settings::liveModeNewPhotosBehavior), QStringLiteral("queue"));

    // A document asked for while another is opened follows it; an empty one empties the queue.
    d = document();
    d.images.clear();
    d.audioTracks.clear();
    window.documentOpening().open(document());
    openAndWait(window, d);
    EXPECT_TRUE(window.queue().isEmpty());
    EXPECT_FALSE(window.audio().hasPlayer());
}

// A bad document, picked in the open panel, changes nothing and says why.
TEST_F(DocumentOpeningTest, ABadDocumentLeavesEverythingAsItWas)
{
    ContentView& window = openWindow();
    window.queue().append({makeItem(QUrl::fromLocalFile(picture("kept.png")))});
    settings.set(Settings::slideshowDelay, 4.0);
    const QString bad = dir.filePath(QStringLiteral("bad.slideshow"));
    QFile file(bad);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(encodeSlideshowDocument(document()).replace("\"isGIF\": false", "\"isGIF\": \"no\""));
    file.close();
    dialogs.openAnswers.append({bad});
    commands.post(Command::loadSlideshow);
    ASSERT_EQ(dialogs.prompts.size(), 2);
    EXPECT_EQ(dialogs.prompts[0].open.title, QStringLiteral("Open Slideshow"));
    EXPECT_EQ(dialogs.prompts[1].title, QStringLiteral("Failed to Open Slideshow"));
    EXPECT_EQ(dialogs.prompts[1].text,
              QStringLiteral("Failed to load slideshow: images[0].isGIF: expected true or false"));
    EXPECT_FALSE(window.documentOpening().isOpening());
    EXPECT_EQ(names(window.queue()), QStringList{"kept.png"});
    EXPECT_EQ(settings.value(Settings::slideshowDelay), 4.0);
}
