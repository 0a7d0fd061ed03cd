#include "PlayerHarness.h"
#include "media/LiveFolder.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <random>

using namespace tb;
using namespace tb::test;

namespace {

// A running show whose watched folder is a real one; the folder's changes are reported when the
// test says so, and the debounce runs on the manual clock.
struct LiveShow : PlayerHarness {
    QString folder = dir.filePath(QStringLiteral("watched"));
    LogCapture log;
    int reportedAdded = 0;
    int reportedRemoved = 0;

    explicit LiveShow(std::uint64_t seed = 1) : PlayerHarness(seed) { QDir().mkpath(folder); }

    QString pathOf(const QString& name) const { return folder + QLatin1Char('/') + name; }
    void put(const QStringList& names) const
    {
        for (const QString& name : names) {
            QFile file(pathOf(name));
            file.open(QIODevice::WriteOnly);
        }
    }
    void drop(const QStringList& names) const
    {
        for (const QString& name : names)
            QFile::remove(pathOf(name));
    }
    // Starts a show of the named files of the folder (absolute paths: files from elsewhere).
    SlideshowView& begin(const QStringList& names, SlideshowConfiguration c, const QString& startAt = {})
    {
        QList<IdentifiableImage> items;
        for (const QString& name : names) {
            const bool own = !QDir::isAbsolutePath(name);
            if (own)
                put({name});
            items.append(makeItem(QUrl::fromLocalFile(own ? pathOf(name) : name)));
        }
        manager.setLiveModeActive(true);
        manager.setWatchedFolder(QUrl::fromLocalFile(folder));
        c.onNewImagesAdded = [this](const QList<IdentifiableImage>& added) { reportedAdded += int(added.size()); };
        c.onImagesRemoved = [this](int count) { reportedRemoved += count; };
        if (!startAt.isEmpty())
            c.startingImageId = items.at(names.indexOf(startAt)).id();
        return start(std::move(items), std::move(c));
    }

    // One change of the folder and the sync it leads to, done.
    [[nodiscard]] bool sync()
    {
        folderWatchers.change();
        scheduler.advance(LiveFolder::syncDebounceDelay);
        return QTest::qWaitFor([this] { return !player->liveFolder().isSyncing(); }, 10000);
    }

    QStringList names() const
    {
        QStringList result;
        for (const IdentifiableImage& item : queue->items())
            result.append(item.filename());
        return result;
    }
    qsizetype lines(const QString& start) const
    {
        const QStringList all = log.all();
        return std::count_if(all.cbegin(), all.cend(), [&](const QString& m) { return m.startsWith(start); });
    }
};

SlideshowConfiguration longDelay(bool randomOrder = false)
{
    SlideshowConfiguration c;
    c.slideshowDelay = 1000.0;
    c.randomOrder = randomOrder;
    c.loopSlideshow = true;
    return c;
}

const QString checking = QStringLiteral("[Live Mode] Checking folder for changes: ");

} // namespace

TEST(LiveMode, ABurstMakesOneSyncAndTheFolderIsTheWholeTruth)
{
    LiveShow show;
    // An item from elsewhere, and a TIFF of the folder's own that live mode does not take.
    QFile(show.dir.filePath(QStringLiteral("elsewhere.jpg"))).open(QIODevice::WriteOnly);
    show.begin({QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("c.tif"),
                show.dir.filePath(QStringLiteral("elsewhere.jpg"))},
               longDelay());
    EXPECT_TRUE(show.log.contains(LogLevel::Info, QStringLiteral("Started watching folder: ") + show.folder));
    EXPECT_EQ(show.lines(checking), 0) << "starting a watch syncs nothing";

    show.put({QStringLiteral(".a.jpg"), QStringLiteral("notes.txt")});
    for (int i = 0; i < 50; ++i) {
        show.folderWatchers.change();
        show.scheduler.advance(0.1);
    }
    show.scheduler.advance(0.19);
    EXPECT_EQ(show.lines(checking), 0) << "0.29 s after the last change";
    show.scheduler.advance(0.01);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !show.player->liveFolder().isSyncing() && show.queue->size() == 3; }));
    EXPECT_EQ(show.lines(checking), 1);
    EXPECT_TRUE(show.log.contains(LogLevel::Info, checking + QStringLiteral("watched")));
    EXPECT_EQ(show.names(), (QStringList{"a.jpg", "b.jpg", ".a.jpg"}));
    for (const char* line :
         {"[Live Mode] Adding 1 new images to slideshow", "[Live Mode] Removing 2 deleted images from slideshow",
          "[Slideshow] Removed 2 images. Current index now: 0", "Added 1 new images to the slideshow"})
        EXPECT_TRUE(show.log.contains(LogLevel::Info, QString::fromLatin1(line))) << line;
    EXPECT_EQ(show.reportedAdded, 1);
    EXPECT_EQ(show.reportedRemoved, 2);

    // An unlisted kind of file changes nothing; a rename is one addition and one removal.
    show.put({QStringLiteral("d.tiff")});
    ASSERT_TRUE(show.sync());
    EXPECT_EQ(show.names(), (QStringList{"a.jpg", "b.jpg", ".a.jpg"}));
    QFile::rename(show.pathOf(QStringLiteral("b.jpg")), show.pathOf(QStringLiteral("e.jpg")));
    ASSERT_TRUE(show.sync());
    EXPECT_EQ(show.names(), (QStringList{"a.jpg", ".a.jpg", "e.jpg"}));
    EXPECT_EQ(show.lines(QStringLiteral("[Live Mode] Adding 1 new")), 2);
    EXPECT_EQ(show.lines(QStringLiteral("[Live Mode] Removing 1 deleted")), 1);
    EXPECT_EQ(show.lines(checking), 3);
}

TEST(LiveMode, RemovalsRepairTheIndexOrEndTheShow)
{
    {
        LiveShow show;
        SlideshowView& p = show.begin({"a.jpg", "b.jpg", "c.jpg"}, longDelay(), QStringLiteral("c.jpg"));
        QSignalSpy moved(&p, &SlideshowView::currentIndexChanged);
        show.scheduler.advance(400.0);
        show.drop({QStringLiteral("c.jpg")});
        ASSERT_TRUE(show.sync());
        EXPECT_EQ(p.currentIndex(), 1);
        EXPECT_EQ(p.currentUrl().fileName(), QStringLiteral("b.jpg"));
        EXPECT_EQ(moved.size(), 1);
        EXPECT_DOUBLE_EQ(p.remainingTime(), 1000.0) << "the countdown starts over for the new picture";
        show.scheduler.advance(599.0);
        EXPECT_EQ(p.currentIndex(), 1) << "the armed advance keeps its time";
        show.scheduler.advance(1.0);
        EXPECT_EQ(p.currentIndex(), 0);

        show.drop({QStringLiteral("a.jpg"), QStringLiteral("b.jpg")});
        ASSERT_TRUE(show.sync());
        EXPECT_FALSE(show.manager.isSlideshowRunning());
        EXPECT_EQ(show.closes, 1);
        EXPECT_FALSE(show.folderWatchers.isWatching());
    }
    {
        LiveShow show(5);
        SlideshowView& p = show.begin({"a.jpg", "b.jpg", "c.jpg"}, longDelay(true));
        show.drop({"a.jpg", "b.jpg", "c.jpg"});
        ASSERT_TRUE(show.sync());
        EXPECT_TRUE(p.shuffledIndices().isEmpty());
        EXPECT_EQ(show.closes, 0) << "a shuffled show runs on to its next step";
        show.scheduler.advance(1000.1);
        EXPECT_EQ(show.closes, 1);
        EXPECT_TRUE(show.log.contains(LogLevel::Error,
                                      QStringLiteral("[Slideshow] Ending the show: the shuffled order no longer fits "
                                                     "the queue.")));
    }
}

TEST(LiveMode, NewPhotosComeNextInNaturalOrderAndReopenAFinishedWalk)
{
    {
        LiveShow show;
        show.settings.set(Settings::liveModeNewPhotosBehavior, QStringLiteral("next"));
        SlideshowView& p =
            show.begin({"p1.jpg", "p2.jpg", "p3.jpg", "p4.jpg", "p5.jpg"}, longDelay(), QStringLiteral("p2.jpg"));
        show.put({QStringLiteral("n10.jpg"), QStringLiteral("n2.jpg"), QStringLiteral("n3.mp4")});
        ASSERT_TRUE(show.sync());
        EXPECT_EQ(show.names(),
                  (QStringList{"p1.jpg", "p2.jpg", "n2.jpg", "n3.mp4", "n10.jpg", "p3.jpg", "p4.jpg", "p5.jpg"}));
        EXPECT_TRUE(show.queue->at(3).isVideo());
        EXPECT_EQ(p.currentIndex(), 1);
        p.goForwardByArrow();
        EXPECT_EQ(p.currentUrl().fileName(), QStringLiteral("n2.jpg"));
    }
    {
        LiveShow show;
        SlideshowConfiguration c;
        c.isManualMode = true;
        SlideshowView& p = show.begin({"a.jpg", "b.jpg"}, c);
        p.goForwardByArrow();
        EXPECT_EQ(p.currentIndex(), 1) << "every item viewed, at the end of the walk";
        show.put({QStringLiteral("c.jpg")});
        ASSERT_TRUE(show.sync());
        EXPECT_EQ(p.allViewedImages(), QSet<int>{1}) << "the walk is opened again from the item on screen";
        p.goForwardByArrow();
        EXPECT_EQ(p.currentUrl().fileName(), QStringLiteral("c.jpg"));
        EXPECT_TRUE(show.manager.isSlideshowRunning());
    }
}

TEST(LiveMode, AVanishedFolderIsReportedAndTheShowGoesOn)
{
    for (bool moved : {false, true}) {
        LiveShow show;
        SlideshowView& p = show.begin({"a.jpg", "b.jpg"}, longDelay());
        if (moved)
            QDir().rename(show.folder, show.dir.filePath(QStringLiteral("elsewhere")));
        else
            QDir(show.folder).removeRecursively();
        ASSERT_TRUE(show.sync());
        EXPECT_TRUE(show.log.contains(LogLevel::Error, QStringLiteral("[Live Mode] Error syncing images with folder: "
                                                                      "No such file or directory")));
        EXPECT_EQ(show.queue->size(), 2);
        show.scheduler.advance(1000.0);
        EXPECT_EQ(p.currentIndex(), 1);
        EXPECT_TRUE(show.manager.isSlideshowRunning());
    }
}

TEST(LiveMode, TheWatchFollowsTheSwitchAndEndsWithTheShow)
{
    LiveShow show;
    SlideshowView& p = show.begin({"a.jpg"}, longDelay());
    ASSERT_EQ(show.folderWatchers.watched, show.folder);
    show.manager.setLiveModeActive(false);
    EXPECT_FALSE(show.folderWatchers.isWatching());
    EXPECT_TRUE(show.log.contains(LogLevel::Info, QStringLiteral("Stopped watching folder")));
    show.put({QStringLiteral("b.jpg")});
    show.folderWatchers.change();
    show.scheduler.advance(1.0);
    EXPECT_EQ(show.lines(checking), 0);

    show.manager.setLiveModeActive(true);
    EXPECT_EQ(show.folderWatchers.watched, show.folder);
    const QString other = show.dir.filePath(QStringLiteral("other"));
    show.manager.setWatchedFolder(QUrl::fromLocalFile(other));
    EXPECT_EQ(show.folderWatchers.watched, other) << "a new folder while live mode stays on is watched instead";
    show.manager.setWatchedFolder(std::nullopt);
    EXPECT_FALSE(show.folderWatchers.isWatching());

    show.manager.setWatchedFolder(QUrl::fromLocalFile(show.folder));
    p.handleKey(Qt::Key_Escape);
    EXPECT_FALSE(show.folderWatchers.isWatching());
    show.manager.setLiveModeActive(false);
    show.manager.setLiveModeActive(true);
    EXPECT_FALSE(show.folderWatchers.isWatching()) << "an ended show watches nothing";
}

// Random arrivals, departures and timed steps over both orders: the item on screen stays within
// the queue, and a show that loses everything ends, once.
TEST(LiveModeProperties, IndicesStayInRangeOrTheShowEndsCleanly)
{
    std::mt19937_64 dice(20261123);
    for (int run = 0; run < 6; ++run) {
        LiveShow show(dice());
        SlideshowConfiguration c = longDelay(run % 2 == 1);
        c.slideshowDelay = 2.0;
        show.settings.set(Settings::liveModeNewPhotosBehavior, QString::fromLatin1(run % 3 == 0 ? "next" : "queue"));
        QStringList present{"f0.jpg", "f1.jpg", "f2.jpg"};
        SlideshowView& p = show.begin(present, c);
        int next = 3;
        for (int step = 0; step < 40 && !p.hasStoppedSlideshow(); ++step) {
            SCOPED_TRACE(testing::Message() << "run " << run << ", step " << step);
            const auto roll = dice() % 3;
            if (roll == 0) {
                QStringList arriving;
                for (auto k = dice() % 3 + 1; k > 0; --k)
                    arriving.append(QStringLiteral("f%1.jpg").arg(next++));
                show.put(arriving);
                present += arriving;
                ASSERT_TRUE(show.sync());
            } else if (roll == 1) {
                QStringList leaving;
                for (auto k = dice() % 3 + 1; k > 0 && !present.isEmpty(); --k)
                    leaving.append(present.takeAt(qsizetype(dice() % std::uint64_t(present.size()))));
                show.drop(leaving);
                ASSERT_TRUE(show.sync());
            } else {
                show.scheduler.advance(c.slideshowDelay);
            }
            ASSERT_EQ(show.queue->size(), present.size());
            if (p.hasStoppedSlideshow())
                break;
            if (c.randomOrder && show.queue->isEmpty())
                continue; // ends at its next step
            ASSERT_GE(p.currentIndex(), 0);
            ASSERT_LT(p.currentIndex(), show.queue->size());
            if (c.randomOrder) {
                ASSERT_TRUE(show.shuffleInvariantHolds());
                for (int index : p.shuffledIndices())
                    ASSERT_LT(index, show.queue->size());
            }
        }
        EXPECT_LE(show.closes, 1);
    }
}
