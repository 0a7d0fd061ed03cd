#include "media/FileIntake.h"
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

    QString touch(const QString& relative)
    {
        const QString path = dir.filePath(relative);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return path;
    }
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
    EXPECT_TRUE(intake.isLoading());
    EXPECT_EQ(intake.totalPhotosToBeAdded(), 51);
    EXPECT_EQ(intake.selectedFolderURL(), QUrl::fromLocalFile(dir.filePath(QStringLiteral("shots"))));
    ASSERT_TRUE(waitForRun());

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

TEST_F(IntakeFixture, HiddenFilesInAFolderAreSkippedButAChosenOneIsKept)
{
    touch(QStringLiteral("album/a.png"));
    const QString hidden = touch(QStringLiteral("album/.secret.png"));
    intake.processURLs({QUrl::fromLocalFile(dir.filePath(QStringLiteral("album"))), QUrl::fromLocalFile(hidden)}, true);
    ASSERT_TRUE(waitForRun());
    EXPECT_EQ(queuedNames(), (QStringList{QStringLiteral(".secret.png"), QStringLiteral("a.png")}));
}

TEST_F(IntakeFixture, TheSubfolderQuestionAndItsRememberedAnswer)
{
    touch(QStringLiteral("trip/top.jpg"));
    touch(QStringLiteral("trip/day2/deep.jpg"));
    const QList<QUrl> trip{QUrl::fromLocalFile(dir.filePath(QStringLiteral("trip")))};
    dialogs.questionAnswers = {QuestionAnswer{1, true}}; // "This Folder Only", remembered
    EXPECT_FALSE(intake.decideRecursion(trip));
    ASSERT_EQ(dialogs.prompts.size(), 1);
    EXPECT_EQ(dialogs.prompts[0].title, QStringLiteral("Include Subfolders?"));
    EXPECT_EQ(dialogs.prompts[0].buttons,
              (QStringList{QStringLiteral("All Subfolders"), QStringLiteral("This Folder Only")}));
    EXPECT_EQ(dialogs.prompts[0].checkBoxText, QStringLiteral("Remember my choice"));
    EXPECT_TRUE(settings.value(Settings::rememberFolderRecursion));
    EXPECT_EQ(settings.value(Settings::folderRecursionDepth), 0);

    EXPECT_FALSE(intake.decideRecursion(trip)) << "remembered: no second question";
    EXPECT_EQ(dialogs.prompts.size(), 1);
    intake.processURLs(trip, false);
    ASSERT_TRUE(waitForRun());
    EXPECT_EQ(queuedNames(), QStringList{QStringLiteral("top.jpg")});

    settings.set(Settings::rememberFolderRecursion, false);
    EXPECT_TRUE(intake.decideRecursion({QUrl::fromLocalFile(dir.filePath(QStringLiteral("trip/day2")))}))
        << "a folder without subfolders is taken whole, unasked";
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
    EXPECT_EQ(loading.count(), 4) << "each run sets and clears the flag itself";
    EXPECT_FALSE(intake.isLoading());
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
