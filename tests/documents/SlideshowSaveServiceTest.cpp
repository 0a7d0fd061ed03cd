#include "documents/SlideshowSaveService.h"

#include "audio/AudioManager.h"
#include "core/FileRevealer.h"
#include "core/RecordingAnalytics.h"
#include "core/SettingsKeys.h"
#include "core/SettingsStore.h"
#include "core/Version.h"
#include "documents/DocumentCodec.h"
#include "documents/RelativePath.h"
#include "media/Bookmark.h"
#include "playback/SlideshowManager.h"
#include "support/AudioDoubles.h"
#include "support/LogCapture.h"
#include "support/QtPrinting.h"
#include "support/ScriptedUserDialogs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace tb;
using namespace tb::test;

namespace {

TEST(RelativePathTest, ComparesCleanedComponentsAsText)
{
    const struct {
        const char* base;
        const char* file;
        const char* expected;
    } table[] = {
        {"/home/ann/Shows", "/home/ann/Shows/a.jpg", "a.jpg"},
        {"/home/ann/Shows", "/home/ann/Shows/pics/2026/a.jpg", "pics/2026/a.jpg"},
        {"/home/ann/Shows", "/home/ann/Pictures/a.jpg", "../Pictures/a.jpg"},
        {"/home/ann/Shows/deep/er", "/home/ann/a.jpg", "../../../a.jpg"},
        {"/", "/a.jpg", "a.jpg"},
        {"/home/ann/Shows", "/a.jpg", "../../../a.jpg"},
        {"/home/ann/Shows", "/home/ann/Shows", "."},
        {"/home/ann/Shows/", "/home//ann/Shows/./pics/../a.jpg", "a.jpg"},
        {"/home/ann/shows", "/home/ann/Shows/a.jpg", "../Shows/a.jpg"}, // case counts
        {"/home/ann/Show", "/home/ann/Shows/a.jpg", "../Shows/a.jpg"},  // whole components only
    };
    for (const auto& row : table)
        EXPECT_EQ(relativePath(QString::fromUtf8(row.base), QString::fromUtf8(row.file)),
                  QString::fromUtf8(row.expected))
            << row.base << " -> " << row.file;
}

struct RecordingRevealer final : FileRevealer {
    void reveal(const QString& filePath) override { revealed.append(filePath); }
    QStringList revealed;
};

struct SaveFixture : ::testing::Test {
    QTemporaryDir root;
    SettingsStore settings{root.filePath(QStringLiteral("Tallowbrook.conf"))};
    ScriptedUserDialogs dialogs;
    RecordingAnalytics analytics;
    RecordingRevealer revealer;
    FakeAudioPlayers players;
    AudioManager audio{players};
    SlideshowManager slideshowManager;
    SlideshowSaveService service{{settings, dialogs, analytics, revealer}};

    QString file(const QString& relative, const QByteArray& bytes = "bytes")
    {
        const QString path = root.filePath(relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile out(path);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size()) << path.toStdString();
        return path;
    }
    QString picture(const QString& relative, Qt::GlobalColor color)
    {
        const QString path = file(relative);
        QImage image(8, 8, QImage::Format_RGB32);
        image.fill(color);
        EXPECT_TRUE(image.save(path, "PNG"));
        return path;
    }
    static IdentifiableImage item(const QString& path, bool isGIF = false, std::optional<double> clipSeconds = {})
    {
        const QFileInfo info(path);
        return IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(path), info.fileName(), info.absolutePath(),
                                 QDateTime(QDate(2026, 1, 31), QTime(9, 15, 2), Qt::UTC), isGIF,
                                 clipSeconds.has_value(), clipSeconds);
    }

    // Saves and waits for the save's alert to be answered; true when it succeeded.
    bool save(const QList<IdentifiableImage>& images, const QString& path)
    {
        QSignalSpy finished(&service, &SlideshowSaveService::finished);
        service.saveSlideshow(images, audio.audioTracks(), audio, slideshowManager, QStringLiteral("-"), path);
        EXPECT_TRUE(finished.wait(30000)) << "the save never finished";
        return !finished.isEmpty() && finished.first().at(1).toBool();
    }

    // What a failed save over an earlier document must leave: that document as it was, nothing
    // else in its folder (folderBefore sorted as text), the error said once in the log, the event and the alert.
    void expectFailedSave(const QString& path, const QByteArray& oldBytes, const QStringList& folderBefore)
    {
        LogCapture capture;
        const auto prompts = dialogs.prompts.size();
        EXPECT_FALSE(save({item(picture(QStringLiteral("elsewhere/new.png"), Qt::red))}, path));

        QFile old(path);
        ASSERT_TRUE(old.open(QIODevice::ReadOnly));
        EXPECT_EQ(QString::fromUtf8(old.readAll()), QString::fromUtf8(oldBytes)) << "the earlier document is untouched";
        QStringList folder =
            QDir(QFileInfo(path).absolutePath()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        folder.sort();
        EXPECT_EQ(folder, folderBefore) << "no temporary file is left";

        const QStringList errors = capture.messages(LogLevel::Error);
        ASSERT_EQ(errors.size(), 1) << errors.join(u'\n').toStdString();
        const QString prefix = QStringLiteral("Failed to save slideshow: ");
        ASSERT_TRUE(errors.first().startsWith(prefix) && errors.first().size() > prefix.size())
            << errors.first().toStdString();
        EXPECT_FALSE(capture.all().join(u'\n').contains(QStringLiteral("Successfully saved")));

        const RecordingAnalytics::Event event = analytics.events().last();
        EXPECT_EQ(event.key, QStringLiteral("slideshowSaveCompleted"));
        EXPECT_EQ(event.segmentation.value(QStringLiteral("success")), QStringLiteral("false"));
        EXPECT_EQ(event.segmentation.value(QStringLiteral("error")), errors.first().mid(prefix.size()));
        EXPECT_FALSE(event.segmentation.contains(QStringLiteral("fileSizeBytes")));

        ASSERT_EQ(dialogs.prompts.size(), prompts + 1);
        const ScriptedUserDialogs::Prompt& alert = dialogs.prompts.last();
        EXPECT_EQ(alert.style, AlertStyle::Critical);
        EXPECT_EQ(alert.title, QStringLiteral("Failed to Save Slideshow"));
        EXPECT_EQ(alert.text, errors.first());
        EXPECT_EQ(alert.buttons, QStringList{QStringLiteral("OK")});
    }
};

SlideshowDocument readDocument(const QString& path)
{
    QFile in(path);
    EXPECT_TRUE(in.open(QIODevice::ReadOnly)) << path.toStdString();
    auto decoded = decodeSlideshowDocument(in.readAll());
    if (auto* error = std::get_if<QString>(&decoded))
        ADD_FAILURE() << "the saved document does not decode: " << error->toStdString();
    return std::holds_alternative<SlideshowDocument>(decoded) ? std::get<SlideshowDocument>(decoded)
                                                              : SlideshowDocument();
}

TEST_F(SaveFixture, AQueueAndPlaylistSaveThroughThePanelAndReadBack)
{
    // Cancelling the panel saves nothing; with an empty queue it opens where the dialog chooses.
    service.showSavePanel({}, audio, slideshowManager, QStringLiteral("-"));
    ASSERT_EQ(dialogs.prompts.size(), 1);
    EXPECT_TRUE(dialogs.prompts.first().save.directory.isEmpty());

    const QList<IdentifiableImage> images{
        item(picture(QStringLiteral("Shows/b.png"), Qt::red)),
        item(picture(QStringLiteral("Shows/pics/a.png"), Qt::green)),
        item(file(QStringLiteral("Other/c.gif")), true),
        item(file(QStringLiteral("Other/clip.mp4")), false, 3.5),
        item(root.filePath(QStringLiteral("Shows/gone.png"))), // removed since it was queued
    };
    audio.setAudioTracks({AudioTrack::fromFile(QUrl::fromLocalFile(file(QStringLiteral("Music/one.wav"))), 61.5),
                          AudioTrack::fromFile(QUrl::fromLocalFile(file(QStringLiteral("Music/two.wav"))), {})});
    audio.setVolume(0.4);
    audio.setLooping(false);
    audio.setCurrentTrackIndex(1);
    settings.set(Settings::displayMode, 2);
    settings.set(Settings::randomOrder, true);
    slideshowManager.setLiveModeActive(true);
    slideshowManager.setWatchedFolder(QUrl::fromLocalFile(root.filePath(QStringLiteral("Other"))));

    const QString path = root.filePath(QStringLiteral("Shows/Trip.slideshow"));
    dialogs.saveAnswers = {path};
    dialogs.questionAnswers = {{1, false, false}}; // "Show in File Manager"
    LogCapture capture;
    QSignalSpy finished(&service, &SlideshowSaveService::finished);
    const QDateTime before = QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch(), Qt::UTC);
    service.showSavePanel(images, audio, slideshowManager, QStringLiteral("Name (A-Z)"));
    ASSERT_TRUE(finished.wait(30000));
    const QDateTime after = QDateTime::currentDateTimeUtc();
    EXPECT_EQ(finished.first(), (QVariantList{path, true}));

    const ScriptedUserDialogs::Prompt& panel = dialogs.prompts.at(1);
    EXPECT_EQ(panel.kind, ScriptedUserDialogs::Kind::SavePanel);
    EXPECT_EQ(panel.title, QStringLiteral("Save Slideshow"));
    EXPECT_EQ(panel.text, QStringLiteral("Choose where to save your slideshow configuration"));
    EXPECT_EQ(panel.save.fileName, QStringLiteral("My Slideshow.slideshow"));
    EXPECT_EQ(panel.save.nameFilters, QStringList{QStringLiteral("Slideshows (*.slideshow)")});
    EXPECT_EQ(panel.save.defaultSuffix, QStringLiteral("slideshow"));
    EXPECT_EQ(panel.save.directory, root.filePath(QStringLiteral("Shows")));

    const QByteArray bytes = [&] {
        QFile in(path);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }();
    const QString size = QString::number(bytes.size());
    const auto processed = [](const char* name) {
        const QString n = QString::fromUtf8(name);
        return QStringList{QStringLiteral("Processing image: ") + n,
                           QStringLiteral("Successfully created bookmark for: ") + n};
    };
    const QStringList expectedLines =
        QStringList{QStringLiteral("Starting to save slideshow to: ") + path,
                    QStringLiteral("Saving 5 images and 2 audio tracks"),
                    QStringLiteral("Base path for relative paths: ") + root.filePath(QStringLiteral("Shows")),
                    QStringLiteral("Converting images to saved format...")} +
        processed("b.png") + processed("a.png") + processed("c.gif") + processed("clip.mp4") +
        QStringList{QStringLiteral("Processing image: gone.png"),
                    QStringLiteral("Failed to create bookmark for gone.png: No such file or directory"),
                    QStringLiteral("Converted 5 images"),
                    QStringLiteral("Successfully saved slideshow with 5 images and 2 audio tracks"),
                    QStringLiteral("Slideshow file size: ") + size + QStringLiteral(" bytes")};
    EXPECT_EQ(capture.all(), expectedLines);
    EXPECT_EQ(capture.messages(LogLevel::Error).size(), 1);

    const Segmentation expectedSegmentation{
        {QStringLiteral("imageCount"), QStringLiteral("5")},
        {QStringLiteral("audioTrackCount"), QStringLiteral("2")},
        {QStringLiteral("hasAudio"), QStringLiteral("true")},
        {QStringLiteral("selectedSortOption"), QStringLiteral("Name (A-Z)")},
        {QStringLiteral("gridMode"), QStringLiteral("2")},
        {QStringLiteral("randomOrder"), QStringLiteral("true")},
        {QStringLiteral("loopSlideshow"), QStringLiteral("false")},
        {QStringLiteral("transitionType"), QStringLiteral("none")},
        {QStringLiteral("fileSizeBytes"), size},
        {QStringLiteral("success"), QStringLiteral("true")},
    };
    EXPECT_EQ(analytics.events(),
              (QList<RecordingAnalytics::Event>{{QStringLiteral("slideshowSaveCompleted"), expectedSegmentation, 1}}));

    ASSERT_EQ(dialogs.prompts.size(), 3);
    const ScriptedUserDialogs::Prompt& alert = dialogs.prompts.at(2);
    EXPECT_EQ(alert.style, AlertStyle::Information);
    EXPECT_EQ(alert.title, QStringLiteral("Slideshow Saved Successfully"));
    EXPECT_EQ(alert.text, QStringLiteral("Your slideshow has been saved to:\n") + path);
    EXPECT_EQ(alert.buttons, (QStringList{QStringLiteral("OK"), QStringLiteral("Show in File Manager")}));
    EXPECT_EQ(revealer.revealed, QStringList{path});

    const SlideshowDocument document = readDocument(path);
    EXPECT_EQ(document.version, QStringLiteral("1.0"));
    EXPECT_EQ(document.metadata.createdBy, QStringLiteral("Tallowbrook for Linux"));
    EXPECT_EQ(document.metadata.appVersion, QString::fromUtf8(appVersion));
    EXPECT_EQ(document.metadata.totalImages, 5);
    EXPECT_EQ(document.metadata.totalAudioTracks, 2);
    EXPECT_TRUE(document.metadata.createdDate >= before && document.metadata.createdDate <= after);
    EXPECT_EQ(document.settings.selectedSortOption, QStringLiteral("Name (A-Z)"));

    const QStringList relativePaths{QStringLiteral("b.png"), QStringLiteral("pics/a.png"),
                                    QStringLiteral("../Other/c.gif"), QStringLiteral("../Other/clip.mp4"),
                                    QStringLiteral("gone.png")};
    ASSERT_EQ(document.images.size(), images.size());
    for (qsizetype i = 0; i < images.size(); ++i) {
        const SavedImageInfo& saved = document.images.at(i);
        const IdentifiableImage& original = images.at(i);
        EXPECT_EQ(saved.id, original.id().toString(QUuid::WithoutBraces).toUpper());
        EXPECT_EQ(saved.filename, original.filename());
        EXPECT_EQ(saved.originalPath, original.filePath());
        EXPECT_EQ(saved.relativePath, relativePaths.at(i));
        EXPECT_EQ(saved.isGIF, original.isGIF());
        EXPECT_EQ(saved.isVideo, original.isVideo());
        EXPECT_EQ(saved.videoDuration, original.videoDuration());
        EXPECT_EQ(saved.creationDate, original.creationDate());
        const bool gone = i == images.size() - 1;
        ASSERT_EQ(saved.bookmarkData.has_value(), !gone) << saved.filename.toStdString();
        if (!gone) {
            EXPECT_EQ(Bookmark::fromData(*saved.bookmarkData)->path, original.filePath());
        }
    }

    ASSERT_EQ(document.audioTracks.size(), 2);
    EXPECT_EQ(document.audioTracks.at(0).relativePath, QStringLiteral("../Music/one.wav"));
    EXPECT_EQ(document.audioTracks.at(0).duration, 61.5);
    EXPECT_EQ(document.audioTracks.at(1).filename, QStringLiteral("two.wav"));
    EXPECT_EQ(document.audioTracks.at(1).duration, std::nullopt);
    EXPECT_EQ(document.audioTracks.at(1).id, audio.audioTracks().at(1).id.toString(QUuid::WithoutBraces).toUpper());
    EXPECT_TRUE(document.audioTracks.at(1).bookmarkData.has_value());
    EXPECT_EQ(document.audioSettings, (SavedAudioSettings{0.4, false, 1}));
    EXPECT_EQ(document.liveModeSettings,
              (SavedLiveModeSettings{true, root.filePath(QStringLiteral("Other")), QStringLiteral("queue")}));
}

TEST_F(SaveFixture, AnEmptyQueueSavesAndEscapeRevealsNothing)
{
    settings.set(Settings::transitionType, QStringLiteral("Ken Burns"));
    settings.set(Settings::liveModeNewPhotosBehavior, QStringLiteral("replace"));
    dialogs.questionAnswers = {{1, false, true}}; // closed with Escape
    const QString path = root.filePath(QStringLiteral("Empty.slideshow"));
    ASSERT_TRUE(save({}, path));
    EXPECT_TRUE(revealer.revealed.isEmpty());

    const SlideshowDocument document = readDocument(path);
    EXPECT_TRUE(document.images.isEmpty());
    EXPECT_TRUE(document.audioTracks.isEmpty());
    EXPECT_EQ(document.liveModeSettings, (SavedLiveModeSettings{false, std::nullopt, QStringLiteral("replace")}));
    const Segmentation segmentation = analytics.events().last().segmentation;
    EXPECT_EQ(segmentation.value(QStringLiteral("hasAudio")), QStringLiteral("false"));
    EXPECT_EQ(segmentation.value(QStringLiteral("transitionType")), QStringLiteral("Ken Burns"));
}

TEST_F(SaveFixture, AFolderThatTurnedReadOnlyKeepsTheOldDocument)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root writes into read-only folders";
    const QString folder = root.filePath(QStringLiteral("Shows"));
    const QString path = QDir(folder).filePath(QStringLiteral("Trip.slideshow"));
    ASSERT_TRUE(save({item(picture(QStringLiteral("Shows/a.png"), Qt::blue))}, path));
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    const QByteArray oldBytes = old.readAll();

    ASSERT_TRUE(QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    expectFailedSave(path, oldBytes, {QStringLiteral("Trip.slideshow"), QStringLiteral("a.png")});
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    EXPECT_EQ(dialogs.prompts.last().text, QStringLiteral("Failed to save slideshow: Permission denied"));
}

// Set in the copy of this test that runs inside a private mount namespace: a folder on a small
// file system of its own, which the test may fill.
constexpr char fullDiskVariable[] = "TALLOWBROOK_SMALL_FILESYSTEM";

TEST_F(SaveFixture, AFullDiskKeepsTheOldDocument)
{
    const QString folder = qEnvironmentVariable(fullDiskVariable);
    if (folder.isEmpty()) {
        // Mounting needs a namespace of its own, and a process that is not yet threaded to make
        // one: run this test again in a child made by unshare, on a 64 KiB tmpfs.
        QProcess probe;
        probe.start(QStringLiteral("unshare"), {QStringLiteral("-rm"), QStringLiteral("true")});
        if (!probe.waitForFinished(60000) || probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0)
            GTEST_SKIP() << "no private mount namespace (unshare -rm): " << probe.readAllStandardError().toStdString()
                         << probe.errorString().toStdString();
        QTemporaryDir mountPoint;
        ASSERT_TRUE(mountPoint.isValid());
        const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(fullDiskVariable), mountPoint.path());
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(QStringLiteral("unshare"),
                    {QStringLiteral("-rm"), QStringLiteral("sh"), QStringLiteral("-c"),
                     QStringLiteral("mount -t tmpfs -o size=64k tallowbrook \"$1\" || exit 77; "
                                    "exec \"$2\" --gtest_filter=\"$3\""),
                     QStringLiteral("sh"), mountPoint.path(), QCoreApplication::applicationFilePath(),
                     QString::fromUtf8(test->test_suite_name()) + u'.' + QString::fromUtf8(test->name())});
        ASSERT_TRUE(child.waitForFinished(120000)) << "the child run did not end";
        const std::string output = child.readAll().toStdString();
        if (child.exitCode() == 77)
            GTEST_SKIP() << "cannot mount a small tmpfs: " << output;
        EXPECT_EQ(child.exitStatus(), QProcess::NormalExit) << output;
        EXPECT_EQ(child.exitCode(), 0) << output;
        EXPECT_NE(output.find("[  PASSED  ] 1 test"), std::string::npos) << output;
        return;
    }

    const QString path = QDir(folder).filePath(QStringLiteral("Trip.slideshow"));
    ASSERT_TRUE(save({item(picture(QStringLiteral("pictures/a.png"), Qt::blue))}, path));
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    const QByteArray oldBytes = old.readAll();

    // Fill every last block, so the new document's first write finds no room.
    QFile filler(QDir(folder).filePath(QStringLiteral("filler")));
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    const QByteArray block(4096, 'x');
    qint64 filled = 0;
    for (qint64 written = 0; (written = filler.write(block)) > 0;)
        filled += written;
    ASSERT_GT(filled, 0);
    ASSERT_LT(filled, 64 * 1024) << "the folder is not on the small file system";
    filler.close();

    expectFailedSave(path, oldBytes, {QStringLiteral("Trip.slideshow"), QStringLiteral("filler")});
    EXPECT_EQ(dialogs.prompts.last().text, QStringLiteral("Failed to save slideshow: No space left on device"));
}

} // namespace
