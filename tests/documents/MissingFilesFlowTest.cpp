#include "documents/MissingFilesFlow.h"
#include "support/LogCapture.h"
#include "support/ScriptedUserDialogs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

using Next = MissingFilesFlow::Next;

QuestionAnswer press(int button) { return QuestionAnswer{button, false, false}; }

struct MissingFilesTest : ::testing::Test {
    QTemporaryDir dir;
    ScriptedUserDialogs dialogs;
    MissingFilesFlow flow{dialogs};
    SlideshowDocument document;
    LogCapture log;

    QString write(const QString& relative)
    {
        const QString path = dir.filePath(relative);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("data") == 4);
        return path;
    }
    template <typename Saved> static Saved missing(const QString& name)
    {
        Saved saved;
        saved.filename = name;
        saved.originalPath = "/gone/" + name;
        return saved;
    }
    static SavedImageInfo image(const QString& name) { return missing<SavedImageInfo>(name); }
    static SavedAudioTrack track(const QString& name) { return missing<SavedAudioTrack>(name); }
    IdentifiableImage restored(const QString& name) const
    {
        return IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(dir.filePath(name)), name, dir.path(),
                                 std::nullopt, false, false, std::nullopt);
    }
    QStringList names(const QList<IdentifiableImage>& items) const
    {
        QStringList result;
        for (const IdentifiableImage& item : items)
            result.append(item.filename());
        return result;
    }
};

} // namespace

TEST_F(MissingFilesTest, TheAlertTellsWhatIsMissingAndCancelChangesNothing)
{
    OpeningFiles allMissing{{}, {}, {image("a.jpg")}, {track("song.mp3")}};
    dialogs.questionAnswers = {press(1)};
    EXPECT_EQ(flow.run(document, allMissing), Next::cancel);
    ASSERT_EQ(dialogs.prompts.size(), 1);
    const auto& first = dialogs.prompts[0];
    EXPECT_EQ(first.style, AlertStyle::Warning);
    EXPECT_EQ(first.title, QStringLiteral("Some Files Could Not Be Found"));
    EXPECT_EQ(first.text, QStringLiteral("All files are missing from their original locations. This might be due "
                                         "to:\n\n• Files were moved or renamed\n• External drives were "
                                         "disconnected\n• Sandboxing restrictions\n\nYou can try to locate the "
                                         "files manually."));
    EXPECT_EQ(first.buttons, (QStringList{"Try to Locate Files", "Cancel"}));
    EXPECT_TRUE(log.contains(LogLevel::Info, "User cancelled loading slideshow due to missing files"));

    // Round one names three of four (pictures before sound); one is located, so round two names
    // the three left with no tail and counts the located file as available.
    write(QStringLiteral("moved/b.jpg"));
    OpeningFiles some{{restored("kept.jpg")}, {}, {image("a.jpg"), image("b.jpg")}, {track("x.mp3"), track("y.mp3")}};
    dialogs.prompts.clear();
    dialogs.questionAnswers = {press(1), press(2)};
    dialogs.openAnswers = {{dir.filePath(QStringLiteral("moved"))}};
    EXPECT_EQ(flow.run(document, some), Next::cancel);
    ASSERT_EQ(dialogs.prompts.size(), 3);
    EXPECT_EQ(dialogs.prompts[0].text,
              QStringLiteral("4 files could not be found from their original locations.\n1 files are available and "
                             "can be loaded.\n\nYou can continue loading the slideshow with the available "
                             "files.\n\nMissing files:\n• a.jpg\n• b.jpg\n• x.mp3\n• ... and 1 more"));
    EXPECT_EQ(dialogs.prompts[0].buttons,
              (QStringList{"Continue with Available Files", "Try to Locate Missing Files", "Cancel"}));
    EXPECT_TRUE(dialogs.prompts[2].text.startsWith(QStringLiteral("3 files could not be found from their original "
                                                                  "locations.\n2 files are available")));
    EXPECT_TRUE(dialogs.prompts[2].text.endsWith(QStringLiteral("Missing files:\n• a.jpg\n• x.mp3\n• y.mp3\n")));
    EXPECT_TRUE(log.contains(LogLevel::Info, "User cancelled after partial relocation"));
}

// Matching is by exact name among what was chosen: a chosen folder's direct entries (hidden ones
// too) and chosen files, the first of a name winning.
TEST_F(MissingFilesTest, LocatedFilesComeBehindTheRestoredOnesAsFoundOnDisk)
{
    const QString moved = dir.filePath(QStringLiteral("moved"));
    write(QStringLiteral("moved/clip.mov"));
    write(QStringLiteral("moved/.hidden.png"));
    write(QStringLiteral("moved/A.jpg"));
    write(QStringLiteral("moved/deeper/a.jpg"));
    const QString otherClip = write(QStringLiteral("other/clip.mov"));
    const QString song = write(QStringLiteral("music/song.mp3"));
    SavedImageInfo savedClip = image("clip.mov");
    savedClip.isVideo = true;
    savedClip.videoDuration = 9.0;
    OpeningFiles files{{restored("kept.jpg")},
                       {},
                       {savedClip, image("a.jpg"), image(".hidden.png"), image("clip.mov")},
                       {track("song.mp3")}};

    dialogs.questionAnswers = {press(1), press(0)};
    dialogs.openAnswers = {{moved, otherClip, song}};
    EXPECT_EQ(flow.run(document, files), Next::apply) << "continuing after a partial round skips folder access";

    const auto& panel = dialogs.prompts[1];
    EXPECT_EQ(panel.title, QStringLiteral("Locate Missing Files"));
    EXPECT_EQ(panel.text, QStringLiteral("Please select the missing files or a folder containing them"));
    EXPECT_TRUE(panel.open.canChooseFiles && panel.open.canChooseDirectories && panel.open.allowsMultipleSelection);
    ASSERT_EQ(panel.open.nameFilters.size(), 1);
    const QStringList patterns = panel.open.nameFilters[0].section('(', 1).chopped(1).split(' ');
    for (const char* allowed : {"*.jpg", "*.heic", "*.tiff", "*.avi", "*.mp3", "*.m4a", "*.flac"})
        EXPECT_TRUE(patterns.contains(QLatin1String(allowed))) << allowed;
    for (const char* left : {"*.mp4", "*.mov", "*.m4v"})
        EXPECT_FALSE(patterns.contains(QLatin1String(left))) << left;

    EXPECT_EQ(names(files.images), (QStringList{"kept.jpg", "clip.mov", ".hidden.png", "clip.mov"}));
    const IdentifiableImage& clip = files.images[1];
    EXPECT_EQ(clip.filePath(), QDir(moved).filePath(QStringLiteral("clip.mov"))) << "the folder was chosen first";
    EXPECT_TRUE(!clip.isVideo() && !clip.videoDuration()) << "a relocated clip comes in as a still";
    EXPECT_EQ(files.images[3].url(), clip.url()) << "two entries of one name share the file";
    ASSERT_EQ(files.tracks.size(), 1);
    EXPECT_EQ(files.tracks[0].url, QUrl::fromLocalFile(song));
    EXPECT_EQ(files.missingImages, QList<SavedImageInfo>{image("a.jpg")}) << "neither A.jpg nor a deeper a.jpg";
    EXPECT_TRUE(log.contains(LogLevel::Info, "Relocated image: .hidden.png"));
    EXPECT_TRUE(log.contains(LogLevel::Info, "Relocated audio: song.mp3"));
}

TEST_F(MissingFilesTest, APanelCancelStartsOverAndFindingAllAppliesAtOnce)
{
    const OpeningFiles original{{restored("kept.jpg")}, {}, {image("a.jpg"), image("b.gif")}, {}};
    const QString a = write(QStringLiteral("found/a.jpg"));
    const QString b = write(QStringLiteral("found/b.gif"));

    OpeningFiles files = original;
    dialogs.questionAnswers = {press(1), press(1)};
    dialogs.openAnswers = {{a}}; // round two's panel is cancelled
    EXPECT_EQ(flow.run(document, files), Next::restartRestoration);
    EXPECT_EQ(names(files.images), QStringList{"kept.jpg"}) << "what was located is forgotten";
    EXPECT_EQ(files.missingImages, original.missingImages);

    dialogs.prompts.clear();
    dialogs.questionAnswers = {press(1)};
    dialogs.openAnswers = {{a, b}};
    EXPECT_EQ(flow.run(document, files), Next::applyAllFound);
    EXPECT_EQ(dialogs.prompts.size(), 2) << "no alert after everything was found";
    EXPECT_EQ(names(files.images), (QStringList{"kept.jpg", "a.jpg", "b.gif"}));
    EXPECT_TRUE(files.images[2].isGIF());
    flow.showAllFound();
    const auto& success = dialogs.prompts.last();
    EXPECT_EQ(success.style, AlertStyle::Information);
    EXPECT_EQ(success.title + '|' + success.text,
              QStringLiteral("Files Successfully Located|All missing files have been found and the slideshow has "
                             "been loaded."));

    files = original;
    dialogs.questionAnswers = {press(0)};
    EXPECT_EQ(flow.run(document, files), Next::folderAccessThenApply);
    OpeningFiles complete{{restored("kept.jpg")}, {}, {}, {}};
    dialogs.prompts.clear();
    EXPECT_EQ(flow.run(document, complete), Next::folderAccessThenApply);
    EXPECT_TRUE(dialogs.prompts.isEmpty()) << "nothing is asked when nothing is missing";
}
