#include "media/LiveFolder.h"
#include "core/ManualScheduler.h"
#include "media/Queue.h"
#include "platform/QtFolderWatchers.h"
#include "support/LogCapture.h"
#include "support/PlaybackDoubles.h"

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

void touch(const QString& path) { QFile(path).open(QIODevice::WriteOnly); }

int inotifyInstances()
{
    int count = 0;
    for (const QFileInfo& fd : QDir(QStringLiteral("/proc/self/fd")).entryInfoList(QDir::System | QDir::NoDotAndDotDot))
        count += QFile::symLinkTarget(fd.filePath()).contains(QLatin1String("inotify"));
    return count;
}

} // namespace

// A sync that comes due while the one before still builds its items waits for it: without that,
// it would find the first one's files missing from the queue and add them a second time.
TEST(LiveFolder, ASyncWaitsForTheOneStillBuildingItsItems)
{
    QTemporaryDir dir;
    ManualScheduler scheduler;
    FakeFolderWatchers watchers;
    Queue queue;
    LogCapture log;
    QSemaphore permits; // one per item the test lets the worker build
    auto live = std::make_unique<LiveFolder>(
        queue, scheduler, watchers,
        LiveFolder::Hooks{[&](const QList<IdentifiableImage>& items) { queue.append(items); },
                          [&](const QSet<QString>&) { ADD_FAILURE() << "nothing leaves"; }},
        [&permits](const QUrl& url) {
            permits.acquire();
            return makeItem(url);
        });
    struct ReleaseAtTheEnd {
        QSemaphore& permits;
        ~ReleaseAtTheEnd() { permits.release(100); }
    } release{permits};
    const auto adding = [&log](qsizetype times) {
        return QTest::qWaitFor([&] {
            return log.messages(LogLevel::Info).count(QStringLiteral("[Live Mode] Adding 1 new images to slideshow")) ==
                   times;
        });
    };
    const auto fileArrives = [&](const char* name) {
        touch(dir.filePath(QString::fromLatin1(name)));
        watchers.change();
        scheduler.advance(LiveFolder::syncDebounceDelay);
    };

    live->startWatching(QUrl::fromLocalFile(dir.path()));
    fileArrives("a.jpg");
    ASSERT_TRUE(adding(1));
    fileArrives("b.jpg"); // due while a.jpg is still being built
    EXPECT_EQ(log.messages(LogLevel::Info).filter(QStringLiteral("[Live Mode] Checking folder")).size(), 1);
    permits.release(2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !live->isSyncing() && queue.size() >= 2; }));
    QStringList names;
    for (const IdentifiableImage& item : queue.items())
        names.append(item.filename());
    EXPECT_EQ(names, (QStringList{"a.jpg", "b.jpg"}));
    EXPECT_EQ(log.messages(LogLevel::Info).filter(QStringLiteral("[Live Mode] Checking folder")).size(), 2);

    // A stopped watch drops what a sync under way would still bring.
    fileArrives("c.jpg");
    ASSERT_TRUE(adding(3));
    live->stopWatching();
    EXPECT_FALSE(live->isSyncing());
    permits.release(1);
    live.reset(); // waits for the worker
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(queue.size(), 2);
}

TEST(LiveFolder, ListsOneLevelOfLiveModeFilesOrSaysWhyNot)
{
    QTemporaryDir dir;
    for (const char* name : {"a.JPG", ".hidden.heic", "clip.m4v", "b.jxl", "c.tif", "notes.txt", "noextension"})
        touch(dir.filePath(QString::fromLatin1(name)));
    QDir(dir.path()).mkpath(QStringLiteral("folder.jpg/inner.jpg"));
    QString error;
    const QSet<QString> files = LiveFolder::list(dir.path(), error);
    EXPECT_TRUE(error.isEmpty());
    EXPECT_EQ(files, (QSet<QString>{dir.filePath("a.JPG"), dir.filePath(".hidden.heic"), dir.filePath("clip.m4v")}));

    EXPECT_TRUE(LiveFolder::list(dir.filePath(QStringLiteral("gone")), error).isEmpty());
    EXPECT_EQ(error, QStringLiteral("No such file or directory"));
}

// The system's watch: a new file is reported, and the watch gives back its descriptor when it
// goes, however many times a show starts watching.
TEST(QtFolderWatchers, ReportsNewFilesAndReleasesTheWatch)
{
    QTemporaryDir dir;
    QtFolderWatchers watchers;
    const int before = inotifyInstances();
    for (int round = 0; round < 3; ++round) {
        int reports = 0;
        auto watch = watchers.watch(dir.path(), [&reports] { ++reports; });
        EXPECT_EQ(inotifyInstances(), before + 1);
        touch(dir.filePath(QStringLiteral("new%1.jpg").arg(round)));
        EXPECT_TRUE(QTest::qWaitFor([&] { return reports > 0; }, 10000)) << "round " << round;
    }
    EXPECT_EQ(inotifyInstances(), before);
}
