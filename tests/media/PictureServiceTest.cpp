#include "media/PictureService.h"
#include "TestPictures.h"
#include "media/DecodeQueue.h"
#include "media/PictureClient.h"

#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <mutex>

using namespace tb;
using namespace tb::test;

namespace {

// One thread, held busy until released, so the jobs behind it wait in the queue.
struct HeldQueue {
    DecodeQueue queue{1, 3};
    QSemaphore started;
    QSemaphore release;
    std::mutex mutex;
    QStringList ran;
    QStringList dropped;

    HeldQueue()
    {
        queue.submit([this] {
            started.release();
            release.acquire();
        });
        started.acquire();
    }
    DecodeQueue::JobId add(const QString& name)
    {
        return queue.submit(
            [this, name] {
                std::lock_guard lock(mutex);
                ran.append(name);
            },
            [this, name] {
                std::lock_guard lock(mutex);
                dropped.append(name);
            });
    }
};

} // namespace

// A show that outruns its decoder keeps only the few newest decodes waiting.
TEST(DecodeQueue, RunsTheNewestFirstAndDropsWhatTheBacklogOverflows)
{
    HeldQueue held;
    for (const char* name : {"a", "b", "c", "d", "e"})
        held.add(QString::fromLatin1(name));
    EXPECT_EQ(held.dropped, (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    const DecodeQueue::JobId f = held.add(QStringLiteral("f"));
    EXPECT_TRUE(held.queue.withdraw(f)) << "a slide dropped before its decode started";
    EXPECT_FALSE(held.queue.withdraw(f));
    held.release.release();
    EXPECT_TRUE(QTest::qWaitFor([&] { return held.queue.waiting() == 0; }, 5000));
    held.queue.drain(); // nothing waits: this only waits for the last job to finish
    EXPECT_EQ(held.ran, (QStringList{QStringLiteral("e"), QStringLiteral("d")}));
    EXPECT_EQ(held.dropped,
              (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("f")}));
}

TEST(DecodeQueue, AClosedQueueDropsEverythingItIsGiven)
{
    HeldQueue held;
    held.add(QStringLiteral("waiting"));
    held.queue.cancelAll();
    held.release.release();
    held.queue.close();
    held.add(QStringLiteral("late"));
    EXPECT_EQ(held.queue.waiting(), 0);
    EXPECT_TRUE(held.ran.isEmpty());
    EXPECT_EQ(held.dropped, (QStringList{QStringLiteral("waiting"), QStringLiteral("late")}));
}

// One window's show ending, or its "remove all", leaves what another window uses in the caches.
TEST(PictureClient, EmptiesOnlyWhatItBroughtIn)
{
    QTemporaryDir dir;
    QList<QUrl> files;
    for (int i = 0; i < 3; ++i) {
        const QString path = dir.filePath(QStringLiteral("%1.png").arg(i));
        ASSERT_TRUE(writePicture(twoColourPicture(400, 200), path));
        files.append(QUrl::fromLocalFile(path));
    }
    PictureService service(QSize(200, 200));
    PictureClient show(service);
    PictureClient grid(service);
    const auto picture = show.picture(files[0], false);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->size(), QSize(200, 100)) << "no larger than the screens need";
    ASSERT_TRUE(service.picture(files[1]));
    ASSERT_TRUE(grid.thumbnail(files[2], false, QSize(50, 50)));
    ASSERT_TRUE(show.thumbnail(files[2], false, QSize(20, 20)));

    show.clearPictures();
    show.clearThumbnails();
    EXPECT_FALSE(service.pictures.isCached(files[0]));
    EXPECT_TRUE(service.pictures.isCached(files[1])) << "not the show's";
    EXPECT_TRUE(service.thumbnails.isCached(files[2], QSize(50, 50))) << "the grid's thumbnail stays";
    EXPECT_FALSE(service.thumbnails.isCached(files[2], QSize(20, 20)));

    show.preload({makeItem(files[1]), makeItem(files[2])});
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return show.waitingPreloads() == 0 && service.pictures.isCached(files[2]); }, 5000));
    show.clearPictures();
    EXPECT_FALSE(service.pictures.isCached(files[2])) << "preloaded pictures are the show's";
}

// A grid cell gets the picture stretched to exactly its pixels, kept with the thumbnails, so the
// grid's "empty the thumbnails" reaches it; a file that cannot be read leaves the cell empty.
TEST(PictureClient, CellPicturesAreStretchedToTheCell)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("wide.jpg"));
    ASSERT_TRUE(writePicture(twoColourPicture(800, 400), path));
    const QUrl url = QUrl::fromLocalFile(path);
    PictureService service;
    PictureClient grid(service);
    const auto cell = grid.cellPicture(url, false, QSize(90, 120));
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell->size(), QSize(90, 120));
    EXPECT_GT(qRed(cell->pixel(5, 60)), 200);
    EXPECT_GT(qBlue(cell->pixel(85, 60)), 200);
    EXPECT_TRUE(service.thumbnails.isCachedStretched(url, QSize(90, 120)));
    grid.clearThumbnails();
    EXPECT_FALSE(service.thumbnails.isCachedStretched(url, QSize(90, 120)));

    const QString broken = writeBytes(dir.filePath(QStringLiteral("broken.jpg")), "not a picture");
    EXPECT_FALSE(grid.cellPicture(QUrl::fromLocalFile(broken), false, QSize(90, 120)));
    EXPECT_FALSE(grid.cellPicture(url, false, QSize()));
}
