#include "media/FileIntake.h"
#include "TestPictures.h"
#include "core/SettingsStore.h"
#include "media/Queue.h"
#include "support/LogCapture.h"
#include "support/ScriptedUserDialogs.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

struct IntakeFixture : ::testing::Test {
    QTemporaryDir dir;
    SettingsStore settings{dir.filePath(QStringLiteral("settings.conf"))};
    ScriptedUserDialogs dialogs;
    Queue queue;
    FileIntake intake{queue, settings, dialogs};

    QString touch(const QString& relative) { return writeBytes(dir.filePath(relative)); }
    bool waitForRun()
    {
        return QTest::qWaitFor([this] { return !intake.isLoading(); }, 10000);
    }
    QStringList queuedNames() const
    {
        QStringList names;
        for (const auto& item : queue.items())
            names.append(item.filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

} // namespace

TEST_F(IntakeFixture, AFolderArrivesInBatchesOfFiftyWithItsCountsAndToast)
{
    LogCapture log;
    for (int i = 0; i < 51; ++i)
        touch(QStringLiteral("shots/%1.JPG").arg(i, 3, 10, QLatin1Char('0')));
    touch(QStringLiteral("shots/notes.txt"));
    QSignalSpy batches(&intake, &FileIntake::itemsAdded);
    QSignalSpy toasts(&intake, &FileIntake::toast);
    dialogs.openAnswers = {{dir.filePath(QStringLiteral("shots"))}};

    intake.selectFiles();
    EXPECT_TRUE(intake.isLoading()) << "the spinner shows while the folder is looked into";
    ASSERT_TRUE(waitForRun());
    EXPECT_EQ(intake.totalPhotosToBeAdded(), 51);
    EXPECT_EQ(intake.selectedFolderURL(), QUrl::fromLocalFile(dir.filePath(QStringLiteral("shots"))));

    ASSERT_EQ(batches.size(), 2);
    EXPECT_EQ(batches[0][0].toInt(), 50);
    EXPECT_EQ(batches[1][0].toInt(), 1);
    EXPECT_EQ(queue.size(), 51);
    EXPECT_EQ(intake.totalPhotosAdded(), 51);
    EXPECT_EQ(toasts.size(), 1);
    EXPECT_EQ(toasts[0][0].toString(), QStringLiteral("51 files added"));
    const QStringList info = log.messages(LogLevel::Info);
    EXPECT_TRUE(info.contains(QStringLiteral("Directory: shots, Image file count: 51")));
    EXPECT_TRUE(info.contains(QStringLiteral("Processing directory: shots (51 image files detected)")));
    EXPECT_TRUE(info.contains(QStringLiteral("Total photos added: 50")));
    EXPECT_TRUE(info.contains(QStringLiteral("Total photos added: 51")));
    EXPECT_TRUE(dialogs.prompts.size() == 1 && dialogs.prompts[0].open.canChooseDirectories)
        << "no question without subfolders";
}

TEST_F(IntakeFixture, TheSubfolderQuestionItsRememberedAnswerAndClosingIt)
{
    touch(QStringLiteral("trip/top.jpg"));
    touch(QStringLiteral("trip/day2/deep.jpg"));
    touch(QStringLiteral("album/a.jpg"));
    touch(QStringLiteral("album/inner/c.jpg"));
    const QList<QUrl> trip{QUrl::fromLocalFile(dir.filePath(QStringLiteral("trip")))};

    // Closed with Escape: nothing added, nothing remembered.
    dialogs.questionAnswers = {QuestionAnswer{1, true, true}};
    intake.handleDrop(trip);
    ASSERT_TRUE(waitForRun());
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_FALSE(settings.value(Settings::rememberFolderRecursion));

    dialogs.questionAnswers = {QuestionAnswer{1, true}}; // "This Folder Only", remembered
    intake.handleDrop(trip + QList<QUrl>{QUrl::fromLocalFile(dir.filePath(QStringLiteral("album"))),
                                         QUrl::fromLocalFile(touch(QStringLiteral("loose.png"))),
                                         QUrl(QStringLiteral("https://example.invalid/remote.jpg"))});
    ASSERT_TRUE(waitForRun());
    EXPECT_EQ(queuedNames(),
              (QStringList{QStringLiteral("a.jpg"), QStringLiteral("loose.png"), QStringLiteral("top.jpg")}))
        << "one answer for both folders";
    EXPECT_EQ(intake.totalPhotosToBeAdded(), 0) << "a drop counts nothing ahead";
    ASSERT_EQ(dialogs.prompts.size(), 2);
    EXPECT_EQ(dialogs.prompts[1].title, QStringLiteral("Include Subfolders?"));
    EXPECT_EQ(dialogs.prompts[1].buttons,
              (QStringList{QStringLiteral("All Subfolders"), QStringLiteral("This Folder Only")}));
    EXPECT_EQ(dialogs.prompts[1].checkBoxText, QStringLiteral("Remember my choice"));
    EXPECT_TRUE(settings.value(Settings::rememberFolderRecursion));
    EXPECT_EQ(settings.value(Settings::folderRecursionDepth), 0);

    intake.handleDrop(trip);
    ASSERT_TRUE(waitForRun());
    EXPECT_EQ(dialogs.prompts.size(), 2) << "remembered: no second question";

    settings.set(Settings::rememberFolderRecursion, false);
    EXPECT_EQ(intake.decideRecursion(false), true) << "a folder without subfolders is taken whole, unasked";
}

// Links to folders are not walked (two links to the parent would multiply the walk without
// end); links to files are taken as files. Hidden files in a folder are skipped, but one chosen
// by itself is kept.
TEST_F(IntakeFixture, LinkedFoldersAreNotWalkedAndLinkedFilesAreTaken)
{
    const QString photo = touch(QStringLiteral("a/photo.jpg"));
    const QString hidden = touch(QStringLiteral("a/.secret.png"));
    ASSERT_TRUE(QFile::link(QStringLiteral(".."), dir.filePath(QStringLiteral("a/up"))));
    ASSERT_TRUE(QFile::link(QStringLiteral(".."), dir.filePath(QStringLiteral("a/up2"))));
    ASSERT_TRUE(QFile::link(photo, dir.filePath(QStringLiteral("a/again.jpg"))));
    touch(QStringLiteral("a/inner/deep.png"));
    settings.set(Settings::rememberFolderRecursion, true);
    settings.set(Settings::folderRecursionDepth, -1); // all subfolders
    intake.handleDrop({QUrl::fromLocalFile(dir.filePath(QStringLiteral("a"))), QUrl::fromLocalFile(hidden)});
    ASSERT_TRUE(waitForRun());
    EXPECT_EQ(queuedNames(), (QStringList{QStringLiteral(".secret.png"), QStringLiteral("again.jpg"),
                                          QStringLiteral("deep.png"), QStringLiteral("photo.jpg")}));
}

TEST_F(IntakeFixture, AboveTwoThousandThumbnailsGoOffWithOneAlert)
{
    intake.setTotalPhotosAdded(2000);
    intake.thumbnailCheck();
    QCoreApplication::processEvents();
    EXPECT_TRUE(dialogs.prompts.isEmpty());
    EXPECT_TRUE(intake.displayThumbnails());

    intake.setTotalPhotosAdded(2001);
    dialogs.questionAnswers = {QuestionAnswer{0, true}};
    intake.thumbnailCheck();
    intake.thumbnailCheck();
    EXPECT_FALSE(intake.displayThumbnails());
    ASSERT_TRUE(QTest::qWaitFor([this] { return !dialogs.prompts.isEmpty(); }, 5000));
    QCoreApplication::processEvents();
    ASSERT_EQ(dialogs.prompts.size(), 1) << "once";
    EXPECT_EQ(dialogs.prompts[0].title, QStringLiteral("Info"));
    EXPECT_EQ(dialogs.prompts[0].text, QStringLiteral("Total number of added photos is more than 2000 - thumbnails "
                                                      "will not be displayed (better performance)."));
    EXPECT_TRUE(settings.value(Settings::dontShowThumbnailAlert)) << "the box's state is kept";

    // With the message turned off, a large queue brings no alert and leaves the wish on.
    FileIntake quiet{queue, settings, dialogs};
    quiet.setTotalPhotosAdded(3000);
    quiet.thumbnailCheck();
    QCoreApplication::processEvents();
    EXPECT_EQ(dialogs.prompts.size(), 1);
    EXPECT_TRUE(quiet.displayThumbnails());
}

TEST_F(IntakeFixture, AnUnreadableFolderLogsAndAddsNothing)
{
    LogCapture log;
    QList<QUrl> found;
    FileIntake::processDirectory(dir.filePath(QStringLiteral("gone")), found, true);
    EXPECT_TRUE(found.isEmpty());
    ASSERT_EQ(log.messages(LogLevel::Error).size(), 1);
    EXPECT_TRUE(log.messages(LogLevel::Error)[0].startsWith(QStringLiteral("Error reading contents of directory: ")));
}

// A second run starts at once beside the first: both end on their own, and every item of each
// arrives, each run's items in their own order.
TEST_F(IntakeFixture, TwoRunsAtOnceBothComplete)
{
    QList<QUrl> first;
    for (int i = 0; i < 120; ++i)
        first.append(QUrl::fromLocalFile(touch(QStringLiteral("a/%1.jpg").arg(i, 3, 10, QLatin1Char('0')))));
    const QList<QUrl> second{QUrl::fromLocalFile(touch(QStringLiteral("b/only.png")))};
    QSignalSpy loading(&intake, &FileIntake::loadingChanged);
    QSignalSpy toasts(&intake, &FileIntake::toast);
    intake.loadFiles(first);
    intake.loadFiles(second);
    ASSERT_TRUE(QTest::qWaitFor([&] { return toasts.size() == 2; }, 10000));
    EXPECT_EQ(loading.count(), 2) << "the spinner stays until the last run ends";
    EXPECT_FALSE(intake.isLoading());
    QStringList messages{toasts[0][0].toString(), toasts[1][0].toString()};
    messages.sort();
    EXPECT_EQ(messages, (QStringList{QStringLiteral("1 files added"), QStringLiteral("120 files added")}))
        << "each run counts its own files";
    ASSERT_EQ(queue.size(), 121);
    QStringList fromFirst;
    for (const auto& item : queue.items())
        if (item.filename() != QStringLiteral("only.png"))
            fromFirst.append(item.url().toString());
    QStringList expected;
    for (const QUrl& url : first)
        expected.append(url.toString());
    EXPECT_EQ(fromFirst, expected);
    EXPECT_EQ(intake.totalPhotosAdded(), 121);
}
