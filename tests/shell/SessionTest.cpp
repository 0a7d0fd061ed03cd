#include "ShellFixture.h"

#include "media/FileIntake.h"
#include "media/Queue.h"
#include "playback/PlayerWindow.h"
#include "playback/SessionControl.h"
#include "shell/ScreenPlayerPresenter.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QTest>

using namespace tb;
using namespace tb::test;

namespace {

class RecordingPresenter final : public PlayerPresenter {
public:
    explicit RecordingPresenter(FakeAudio& audio) : audio(audio) {}
    void present(const ShowRequest& request, std::shared_ptr<Queue>) override
    {
        requests.append(request);
        audioCallsAtPresent = audio.calls;
    }
    FakeAudio& audio;
    QList<ShowRequest> requests;
    QStringList audioCallsAtPresent;
};

struct SessionTest : ShellFixture {
    FakeAudio audio;
    std::shared_ptr<Queue> queue = std::make_shared<Queue>();
    RecordingPresenter presenter{audio};
    SessionControl session{queue, {settings, slideshowManager, audio, analytics, random, dialogs, presenter}};
};

} // namespace

TEST_F(SessionTest, NothingStartsWithoutFilesAndTheScreenSaverNeverAsks)
{
    session.startCommand();
    EXPECT_EQ(promptTitles(), QStringList{QStringLiteral("No files added")});
    session.screensaverStart();
    EXPECT_EQ(dialogs.prompts.size(), 1) << "the idle path is silent";
    EXPECT_TRUE(presenter.requests.isEmpty());
    EXPECT_FALSE(slideshowManager.isSlideshowRunning());

    queue->replaceAll(makeQueue(3));
    slideshowManager.setSlideshowRunning(true);
    session.screensaverStart();
    EXPECT_TRUE(presenter.requests.isEmpty()) << "no screen-saver show over a running one";

    // The screen saver starts where Start would: at the queue's starting point.
    slideshowManager.setSlideshowRunning(false);
    queue->setStartingImageId(queue->at(2).id());
    session.screensaverStart();
    ASSERT_EQ(presenter.requests.size(), 1);
    EXPECT_TRUE(presenter.requests[0].screensaverMode);
    EXPECT_EQ(presenter.requests[0].single.startingImageId, queue->at(2).id());
    EXPECT_EQ(queue->at(session.shuffledIndices()[0]).id(), queue->at(2).id());
}

TEST_F(SessionTest, StartReadsTheSettingsAndReportsTheShow)
{
    queue->replaceAll(makeQueue(4));
    settings.set(Settings::displayMode, 2);
    settings.set(Settings::imageScalingMode, QStringLiteral("Stretch to fill"));
    settings.set(Settings::startInWindowedMode, true);
    session.startCommand();
    ASSERT_EQ(presenter.requests.size(), 1);
    const ShowRequest& request = presenter.requests[0];
    EXPECT_TRUE(slideshowManager.isSlideshowRunning());
    EXPECT_EQ(request.grid, GridOption::twoByTwo);
    EXPECT_EQ(request.single.imageScalingMode, ImageScalingMode::bestFit) << "an unknown string plays best fit";
    EXPECT_EQ(request.single.slideshowDelay, 3.0);
    EXPECT_EQ(request.single.crossfadeDuration, 2.0) << "the main window's own default";
    EXPECT_TRUE(request.startInWindowedMode);

    ASSERT_EQ(analytics.events().size(), 1);
    const RecordingAnalytics::Event event = analytics.events()[0]; // a copy: events() is one itself
    EXPECT_EQ(event.key, QStringLiteral("slideshowStarted"));
    EXPECT_EQ(event.count, 1);
    EXPECT_EQ(event.segmentation, (Segmentation{{QStringLiteral("slideshowSize"), QStringLiteral("4")},
                                                {QStringLiteral("slideshowDelay"), QStringLiteral("3.0")},
                                                {QStringLiteral("loopEnabled"), QStringLiteral("false")},
                                                {QStringLiteral("shuffleEnabled"), QStringLiteral("false")},
                                                {QStringLiteral("transitionType"), QStringLiteral("-")},
                                                {QStringLiteral("crossfadeDuration"), QStringLiteral("2.0")},
                                                {QStringLiteral("displayMode"), QStringLiteral("2x2 Grid view")},
                                                {QStringLiteral("liveMode"), QStringLiteral("false")},
                                                {QStringLiteral("audioEnabled"), QStringLiteral("false")},
                                                {QStringLiteral("audioTracksCount"), QStringLiteral("0")},
                                                {QStringLiteral("overlayEnabled"), QStringLiteral("false")}}));
    EXPECT_TRUE(audio.calls.isEmpty()) << "no tracks: neither prepared nor played";

    // displayMode 7 plays and reports as a single photo.
    slideshowManager.setSlideshowRunning(false);
    settings.set(Settings::displayMode, 7);
    settings.set(Settings::slideshowDelay, 2.5);
    audio.tracks = 2;
    session.startCommand();
    EXPECT_EQ(presenter.requests.last().grid, GridOption::none);
    const Segmentation second = analytics.events().last().segmentation;
    EXPECT_EQ(second.value(QStringLiteral("displayMode")), QStringLiteral("Single photo view"));
    EXPECT_EQ(second.value(QStringLiteral("slideshowDelay")), QStringLiteral("2.5"));
    EXPECT_EQ(second.value(QStringLiteral("audioTracksCount")), QStringLiteral("2"));
    EXPECT_EQ(presenter.audioCallsAtPresent, QStringList{QStringLiteral("prepare")});
    EXPECT_EQ(audio.calls, (QStringList{QStringLiteral("prepare"), QStringLiteral("play")}));
}

TEST_F(SessionTest, TheMainWindowShuffleOrderPutsTheStartingItemFirstAndIsKept)
{
    queue->replaceAll(makeQueue(12));
    settings.set(Settings::randomOrder, true);
    queue->setStartingImageId(queue->at(7).id());
    session.startCommand();
    const QList<int> order = session.shuffledIndices();
    ASSERT_EQ(order.size(), 12);
    EXPECT_EQ(order[0], 7);
    slideshowManager.setSlideshowRunning(false);
    queue->setStartingImageId(queue->at(3).id());
    session.startCommand();
    EXPECT_EQ(session.shuffledIndices(), order) << "a second start does not rebuild it";
}

TEST(PlayerWindow, AWindowedShowTakesThreeQuartersCentred)
{
    EXPECT_EQ(PlayerWindow::windowedGeometry(QRect(0, 0, 2000, 1000)), QRect(250, 125, 1500, 750));
    EXPECT_EQ(PlayerWindow::windowedGeometry(QRect(1920, 0, 1280, 1024)), QRect(2080, 128, 960, 768));
}

TEST(DisplayManager, ListsTheDefaultEntryThenEveryScreenByAStableId)
{
    DisplayManager displays;
    const auto& list = displays.availableScreens();
    ASSERT_EQ(list.size(), QGuiApplication::screens().size() + 1);
    EXPECT_EQ(list[0], (ScreenInfo{0, QStringLiteral("Default (App Window's Screen)")}));
    QScreen* first = QGuiApplication::screens().first();
    EXPECT_EQ(list[1].name, QStringLiteral("Display 1: ") + DisplayManager::screenName(first));
    EXPECT_GT(list[1].id, 0);
    EXPECT_EQ(list[1].id, DisplayManager::screenId(first)) << "the same id every time";
    EXPECT_EQ(displays.screen(list[1].id), first);
    EXPECT_EQ(displays.screen(12345), nullptr);
}

// The whole path on real windows: the Start button, the player window, Escape, and back.
TEST_F(ShellFixture, StartOpensThePlayerAndEscapeBringsTheMainWindowBack)
{
    LogCapture log;
    ContentView& window = openWindow();
    for (QColor colour : {QColor(Qt::red), QColor(Qt::green), QColor(Qt::blue)})
        window.queue().append({makeItem(QUrl::fromLocalFile(savePicture(colour.name().mid(1) + ".png", colour)))});
    auto* start = named<QPushButton>(window, QStringLiteral("Start"));
    ASSERT_NE(start, nullptr);
    start->click();

    EXPECT_TRUE(slideshowManager.isSlideshowRunning());
    EXPECT_FALSE(start->isEnabled());
    PlayerWindow* player = window.presenter().currentWindow();
    ASSERT_NE(player, nullptr);
    EXPECT_TRUE(player->isVisible());
    EXPECT_EQ(player->color(), QColor(Qt::black));
    ASSERT_NE(player->rootObject(), nullptr) << "the player's QML loaded";
    // The first picture fills the middle of the screen (aspect fit on black).
    const auto middle = [player] {
        const QImage frame = player->grabWindow();
        return frame.isNull() ? QColor() : frame.pixelColor(frame.width() / 2, frame.height() / 2);
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return middle() == QColor(Qt::red); }, 5000)) << middle().name().toStdString();
    QTest::keyClick(player, Qt::Key_Right);
    EXPECT_TRUE(QTest::qWaitFor([&] { return middle() == QColor(Qt::green); }, 5000)) << middle().name().toStdString();
    EXPECT_TRUE(
        log.contains(LogLevel::Info, QStringLiteral("Slideshow starting on default screen (same as app window).")));
    EXPECT_EQ(inhibitor.lastCookie, 41u) << "the display is held awake";

    QTest::keyClick(player, Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.presenter().currentWindow() == nullptr; }, 5000));
    EXPECT_FALSE(slideshowManager.isSlideshowRunning());
    EXPECT_TRUE(start->isEnabled());
    EXPECT_EQ(inhibitor.released, QList<quint32>{41});
    EXPECT_EQ(log.messages(LogLevel::Info).count(QStringLiteral("stopSlideshow() method executed")), 1);
}

TEST_F(ShellFixture, ClosingThePlayerByHandEndsTheShowAndAMissingScreenFallsBack)
{
    LogCapture log;
    ContentView& window = openWindow();
    window.queue().replaceAll(makeQueue(2));
    settings.set(Settings::selectedDisplayID, 12345);
    settings.set(Settings::startInWindowedMode, true);
    commands.post(Command::startSlideshow);
    PlayerWindow* player = window.presenter().currentWindow();
    ASSERT_NE(player, nullptr);
    EXPECT_TRUE(log.contains(LogLevel::Warning,
                             QStringLiteral("Selected display ID 12345 not found. Falling back to main screen.")));
    EXPECT_EQ(player->screen(), QGuiApplication::primaryScreen());
    EXPECT_EQ(player->geometry(), PlayerWindow::windowedGeometry(QGuiApplication::primaryScreen()->geometry()));

    player->close();
    EXPECT_FALSE(slideshowManager.isSlideshowRunning());
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.presenter().currentWindow() == nullptr; }, 5000));

    // The chosen screen, found by its id.
    const int id = DisplayManager::screenId(QGuiApplication::primaryScreen());
    settings.set(Settings::selectedDisplayID, id);
    commands.post(Command::startSlideshow);
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("Slideshow starting on selected display ID: %1.").arg(id)));
}

// The show shares the queue: a main window closed mid-show ends the show through its own stop
// path, and nothing the show arms afterwards reads the window's state.
TEST_F(ShellFixture, ClosingTheMainWindowDuringAShowEndsTheShow)
{
    LogCapture log;
    ContentView& window = openWindow();
    window.queue().replaceAll(makeQueue(5));
    commands.post(Command::startSlideshow);
    QPointer<PlayerWindow> player = window.presenter().currentWindow();
    ASSERT_TRUE(player);
    scheduler.advance(3.0);
    windows.clear();
    EXPECT_FALSE(slideshowManager.isSlideshowRunning());
    EXPECT_EQ(log.messages(LogLevel::Info).count(QStringLiteral("stopSlideshow() method executed")), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return player.isNull(); }, 5000));
    scheduler.advance(30.0);
    EXPECT_EQ(scheduler.pendingCount(), 0);
}

// A show closed while its first picture, a large one, is still being decoded: the window waits
// for the decode, nothing it used goes before, and nothing it decoded stays behind.
TEST_F(ShellFixture, ClosingAShowWhileALargePictureDecodes)
{
    const QString path = dir.filePath(QStringLiteral("large.jpg"));
    QImage large(6000, 4000, QImage::Format_RGB32);
    large.fill(Qt::darkGreen);
    ASSERT_TRUE(large.save(path, "JPEG", 90));
    const QUrl url = QUrl::fromLocalFile(path);
    ContentView& window = openWindow();
    window.queue().append({makeItem(url)});
    commands.post(Command::startSlideshow);
    QPointer<PlayerWindow> player = window.presenter().currentWindow();
    ASSERT_TRUE(player);
    QCoreApplication::processEvents(); // the scene asks for its picture
    player->close();
    EXPECT_FALSE(slideshowManager.isSlideshowRunning());
    EXPECT_TRUE(QTest::qWaitFor([&] { return player.isNull(); }, 30000));
    EXPECT_FALSE(pictures.pictures.isCached(url));
}

// Live mode's changes during a show reach the main window: new files count as added and the
// grid takes them in; vanished ones are reported by a toast.
TEST_F(ShellFixture, ALiveShowsChangesReachTheMainWindow)
{
    LogCapture log;
    ContentView& window = openWindow();
    const QString folder = dir.filePath(QStringLiteral("live"));
    QDir().mkpath(folder);
    for (const char* name : {"live/a.png", "live/b.png"})
        window.queue().append({makeItem(QUrl::fromLocalFile(savePicture(QString::fromLatin1(name))))});
    window.intake().setTotalPhotosAdded(2);
    slideshowManager.setLiveModeActive(true);
    slideshowManager.setWatchedFolder(QUrl::fromLocalFile(folder));
    named<QPushButton>(window, QStringLiteral("Start"))->click();
    ASSERT_EQ(folderWatchers.watched, folder);
    const QUuid refreshBefore = window.queue().refreshID();

    savePicture(QStringLiteral("live/c.png"));
    savePicture(QStringLiteral("live/d.png"));
    QFile::remove(folder + QStringLiteral("/a.png"));
    folderWatchers.change();
    scheduler.advance(0.3);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.intake().totalPhotosAdded() == 4 && window.isToastShown(); }));
    EXPECT_EQ(window.queue().size(), 3);
    EXPECT_EQ(window.toastText(), QStringLiteral("1 photos removed"));
    EXPECT_NE(window.queue().refreshID(), refreshBefore) << "the grid takes the new items in";
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("Added 2 new images to the slideshow")));
}
