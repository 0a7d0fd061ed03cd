#include "playback/PlayerWindow.h"
#include "PlayerHarness.h"

#include <QImage>
#include <QProcess>
#include <QQuickItem>
#include <QTest>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

// A real player window over doubles, on a clock that moves only when told: what moves by
// itself is the window (decodes, clips).
struct PlayerWindowTest : testing::Test, PlayerHarness {
    QPointer<PlayerWindow> window;

    ~PlayerWindowTest() override { delete window; }

    QUrl picture(const QString& name, QColor colour)
    {
        const QString path = dir.filePath(name);
        QImage image(320, 240, QImage::Format_RGB32);
        image.fill(colour);
        EXPECT_TRUE(image.save(path));
        return QUrl::fromLocalFile(path);
    }

    // A clip without sound, so no audio device is ever opened.
    QUrl clip(const QString& name, const QString& colour, double seconds)
    {
        const QString path = dir.filePath(name);
        QProcess ffmpeg;
        ffmpeg.start(QStringLiteral("ffmpeg"),
                     {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"), QStringLiteral("lavfi"),
                      QStringLiteral("-i"), QStringLiteral("color=c=%1:s=160x120:r=10:d=%2").arg(colour).arg(seconds),
                      QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"), path});
        EXPECT_TRUE(ffmpeg.waitForFinished(60000) && ffmpeg.exitCode() == 0) << ffmpeg.readAllStandardError().data();
        return QUrl::fromLocalFile(path);
    }

    void open(ShowPlayer* player, int backlog = 2)
    {
        window = new PlayerWindow(player, std::make_unique<FakeCaches>(), backlog, settings, nullptr, true, false);
        player->setClosePlayer([this] {
            ++closes;
            if (window)
                window->closeLater();
        });
        window->present();
        window->resize(640, 480);
        manager.setSlideshowRunning(true);
        player->onAppear();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    }

    SlideshowView* single(const QList<QUrl>& files, SlideshowConfiguration c = {}, int start = 0)
    {
        for (const QUrl& file : files)
            queue->append({makeItem(file)});
        c.crossfadeDuration = 0.1;
        c.startingImageId = queue->at(start).id();
        auto* player = new SlideshowView(queue, c,
                                         PlayerServices{scheduler, random, manager, audio, caches, inhibitor, settings,
                                                        revealer, metadata, folderWatchers});
        open(player);
        return player;
    }

    QColor at(double x, double y) const
    {
        const QImage frame = window->grabWindow();
        return frame.isNull() ? QColor() : frame.pixelColor(int(frame.width() * x), int(frame.height() * y));
    }
    QColor centre() const { return at(0.5, 0.5); }

    QObject* media() const { return window->rootObject()->findChild<QObject*>(QStringLiteral("clip")); }
};

bool near(QColor a, QColor b)
{
    return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue()) < 60;
}

} // namespace

// Keys reach the player whatever modifier is held; T, I and R act on the single player.
TEST_F(PlayerWindowTest, KeysOfTheSinglePlayer)
{
    SlideshowConfiguration c;
    c.isManualMode = true;
    SlideshowView* p =
        single({picture(QStringLiteral("a.png"), Qt::red), picture(QStringLiteral("b.png"), Qt::blue)}, c);
    QTest::keyClick(window, Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(p->currentIndex(), 1);

    QTest::keyClick(window, Qt::Key_T);
    EXPECT_TRUE(p->showTimer());
    EXPECT_EQ(p->countdownText(), QStringLiteral("3"));
    QObject* badge = window->rootObject()->findChild<QObject*>(QStringLiteral("countdown"));
    ASSERT_TRUE(badge);
    EXPECT_EQ(badge->property("opacity").toDouble(), 1.0);

    QTest::keyClick(window, Qt::Key_I);
    ASSERT_TRUE(p->showInfobox());
    const QStringList lines = p->currentImageInfo().split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 8);
    EXPECT_EQ(lines[0], QStringLiteral("Filename: b.png"));
    EXPECT_EQ(lines[2], QStringLiteral("Camera Model: Unknown"));
    EXPECT_EQ(p->currentImageInfo().count(QStringLiteral(": N/A")), 5);
    QTest::keyClick(window, Qt::Key_Left);
    EXPECT_TRUE(p->currentImageInfo().startsWith(QStringLiteral("Filename: a.png"))) << "rebuilt on a new item";

    QTest::keyClick(window, Qt::Key_R);
    EXPECT_EQ(revealer.revealed, QStringList{queue->at(0).filePath()});
    QTest::keyClick(window, Qt::Key_Escape); // the window, and the player with it, may be gone now
    EXPECT_EQ(closes, 1);
    EXPECT_FALSE(manager.isSlideshowRunning());
}

TEST_F(PlayerWindowTest, TheGridIgnoresTheSinglePlayersLetters)
{
    for (const QString& name : {QStringLiteral("a.png"), QStringLiteral("b.png"), QStringLiteral("c.png")})
        queue->append({makeItem(picture(name, Qt::green))});
    settings.set(Settings::overlayEnabled, true);
    settings.set(Settings::overlayType, QStringLiteral("text"));
    settings.set(Settings::overlayText, QStringLiteral("Tallowbrook"));
    GridConfiguration c;
    c.isManualMode = true;
    auto* grid = new GridView(queue, c, GridServices{scheduler, random, manager, audio, caches, settings});
    open(grid, 9);
    const QList<int> cells = grid->currentIndices();
    for (Qt::Key key : {Qt::Key_T, Qt::Key_I, Qt::Key_R})
        QTest::keyClick(window, key);
    EXPECT_TRUE(revealer.revealed.isEmpty());
    EXPECT_EQ(grid->currentIndices(), cells);
    QTest::keyClick(window, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(grid->gridHistory().size(), 2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return near(at(0.25, 0.5), Qt::green) && near(at(0.75, 0.5), Qt::green); }, 5000))
        << "both cells are drawn";
    EXPECT_TRUE(near(centre(), Qt::black)) << "the gap between them shows the background";
    auto* mark = window->rootObject()->findChild<QQuickItem*>(QStringLiteral("overlayText"));
    ASSERT_TRUE(mark);
    EXPECT_TRUE(mark->isVisible()) << "the grid carries the overlay mark";
    EXPECT_GT(mark->x(), window->width() / 2.0) << "in the window's corner, not a cell's";
}

// A clip that plays to its end moves the show on as the right arrow does: as the last item of a
// show without loop, it ends the show.
TEST_F(PlayerWindowTest, AFullClipAtTheEndEndsTheShow)
{
    LogCapture log;
    SlideshowView* p = single(
        {picture(QStringLiteral("a.png"), Qt::red), clip(QStringLiteral("c.mp4"), QStringLiteral("blue"), 0.6)}, {}, 1);
    EXPECT_EQ(p->pendingAdvance(), 0u) << "a clip played in full arms no timer";
    ASSERT_TRUE(QTest::qWaitFor([&] { return closes > 0; }, 15000)); // the player goes with its window
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("[SlideshowView] Video ended, advancing to next item")));
    EXPECT_FALSE(manager.isSlideshowRunning());
    EXPECT_EQ(closes, 1);
}

// With the show's delay, a long clip is cut off when the delay ends, and a short one stands on its
// last frame until then.
TEST_F(PlayerWindowTest, WithTheDelayClipsAreCutOrStandOnTheirLastFrame)
{
    LogCapture log;
    settings.set(Settings::videoPlaybackMode, QStringLiteral("useDelay"));
    SlideshowView* p = single({clip(QStringLiteral("long.mp4"), QStringLiteral("blue"), 60),
                               clip(QStringLiteral("short.mp4"), QStringLiteral("red"), 0.5)});
    ASSERT_TRUE(QTest::qWaitFor([&] { return media() && media()->property("position").toLongLong() > 0; }, 10000));
    EXPECT_NE(p->pendingAdvance(), 0u);
    scheduler.advance(3.0);
    EXPECT_EQ(p->currentIndex(), 1);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return log.contains(LogLevel::Info, QStringLiteral("VideoPlayerView dismantled")); }, 10000));

    // The short clip ends long before the delay does, and its last frame stays.
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return media() && media()->property("mediaStatus").toInt() == 6 /* EndOfMedia */; }, 10000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return near(centre(), Qt::red); }, 5000))
        << "centre " << centre().name().toStdString();
    EXPECT_EQ(p->currentIndex(), 1);
    EXPECT_FALSE(log.contains(LogLevel::Info, QStringLiteral("[SlideshowView] Video ended, advancing to next item")));
}

// In a manual show a clip starts over at its end, and the show stays on it.
TEST_F(PlayerWindowTest, ManualShowsRepeatClipsFromTheStart)
{
    LogCapture log;
    SlideshowConfiguration c;
    c.isManualMode = true;
    SlideshowView* p = single({clip(QStringLiteral("c.mp4"), QStringLiteral("blue"), 0.6)}, c);
    qint64 furthest = 0;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            const qint64 at = media() ? media()->property("position").toLongLong() : 0;
            furthest = std::max(furthest, at);
            return furthest >= 400 && at < furthest - 200;
        },
        15000));
    EXPECT_EQ(p->currentIndex(), 0);
    EXPECT_FALSE(p->hasStoppedSlideshow());
    EXPECT_FALSE(log.contains(LogLevel::Info, QStringLiteral("[SlideshowView] Video ended, advancing to next item")));
}
