#include "PlayerHarness.h"

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

SlideshowConfiguration timed(bool randomOrder, bool loop, double delay = 3.0)
{
    SlideshowConfiguration c;
    c.slideshowDelay = delay;
    c.randomOrder = randomOrder;
    c.loopSlideshow = loop;
    return c;
}

int count(const LogCapture& log, const char* message)
{
    return int(log.messages(LogLevel::Info).count(QString::fromUtf8(message)));
}

} // namespace

// The timer row of the combinations: who ends the show, and how.
TEST(SlideshowView, TimedStepsInEachOfTheFourModes)
{
    for (bool shuffled : {false, true}) {
        for (bool loop : {false, true}) {
            SCOPED_TRACE(testing::Message() << "shuffled " << shuffled << " loop " << loop);
            LogCapture log;
            PlayerHarness h;
            SlideshowView& p = h.start(3, timed(shuffled, loop));
            const double first = shuffled ? 3.1 : 3.0; // the first shuffled arm waits 0.1 s more
            QList<int> shown{p.currentIndex()};
            h.scheduler.advance(first);
            shown.append(p.currentIndex());
            h.scheduler.advance(3.0);
            shown.append(p.currentIndex());
            EXPECT_EQ(QSet<int>(shown.begin(), shown.end()).size(), 3) << "every item once";
            if (shuffled) {
                EXPECT_TRUE(h.shuffleInvariantHolds());
            }

            h.scheduler.advance(3.0); // the wrap point
            if (!loop) {
                EXPECT_FALSE(h.manager.isSlideshowRunning());
                EXPECT_TRUE(p.hasStoppedSlideshow());
                EXPECT_EQ(h.closes, 1);
                EXPECT_EQ(count(log, "stopSlideshow() method executed"), 1);
                EXPECT_EQ(count(log, shuffled ? "[SlideshowView] Reached end of shuffled images. Stopping slideshow "
                                                "(no loop)."
                                              : "SlideshowView: Slideshow ended"),
                          1);
                EXPECT_EQ(h.scheduler.pendingCount(), 0) << "nothing left armed";
            } else {
                EXPECT_TRUE(h.manager.isSlideshowRunning());
                EXPECT_GE(h.caches.pictureClears, 1) << "caches are emptied at the wrap";
                EXPECT_EQ(p.shuffledIndex(), 0);
                if (shuffled) {
                    EXPECT_EQ(count(log, "[Slideshow] Re-shuffling after completing full cycle of 3 images"), 1);
                    EXPECT_TRUE(h.shuffleInvariantHolds());
                } else {
                    EXPECT_EQ(p.currentIndex(), 0);
                }
                EXPECT_NE(p.pendingAdvance(), 0u);
            }
        }
    }
}

TEST(SlideshowView, LeftArrowWalksTheHistoryOnlyAndRestartsTheWait)
{
    PlayerHarness h;
    SlideshowView& p = h.start(5, timed(false, false));
    p.goBackByArrow();
    EXPECT_EQ(p.currentIndex(), 0) << "no wrap at the start of the history";
    h.scheduler.advance(2.0);
    p.goBackByArrow();
    h.scheduler.advance(2.9);
    EXPECT_EQ(p.currentIndex(), 0) << "the arrow gave a full delay";
    h.scheduler.advance(0.1);
    EXPECT_EQ(p.currentIndex(), 1);

    p.goForwardByArrow(); // 2
    p.goBackByArrow();    // 1
    p.goBackByArrow();    // 0
    const auto viewed = p.allViewedImages();
    p.goForwardByArrow();
    EXPECT_EQ(p.currentIndex(), 1) << "forward walks the history first";
    EXPECT_EQ(p.allViewedImages(), viewed);
    p.goForwardByArrow();
    p.goForwardByArrow();
    EXPECT_EQ(p.currentIndex(), 3) << "and moves on at its end";
}

TEST(SlideshowView, PauseKeepsTheCountdownAndAResumeWaitsAtLeastATenth)
{
    PlayerHarness h;
    SlideshowView& p = h.start(3, timed(false, false, 2.95));
    h.scheduler.advance(2.9);
    EXPECT_NEAR(p.remainingTime(), 0.05, 1e-9);
    p.pauseSlideshow();
    EXPECT_TRUE(p.showPauseInfo());
    EXPECT_EQ(p.pendingAdvance(), 0u);
    h.scheduler.advance(10);
    EXPECT_FALSE(p.showPauseInfo()) << "the indicator fades after a second";
    EXPECT_EQ(p.currentIndex(), 0);
    EXPECT_NEAR(p.remainingTime(), 0.05, 1e-9) << "the countdown stands still while paused";

    // An arrow while paused changes the item and resets the countdown, and arms nothing.
    p.goForwardByArrow();
    EXPECT_EQ(p.currentIndex(), 1);
    EXPECT_EQ(p.pendingAdvance(), 0u);
    h.scheduler.advance(1);
    EXPECT_DOUBLE_EQ(p.remainingTime(), 2.95);

    h.scheduler.advance(30);
    p.pauseSlideshow(); // already paused: still paused
    p.resumeSlideshow();
    EXPECT_TRUE(p.showResumeInfo());
    h.scheduler.advance(2.9);
    EXPECT_EQ(p.currentIndex(), 1);
    h.scheduler.advance(0.1);
    EXPECT_EQ(p.currentIndex(), 2);

    // A resume at 0.05 s left waits 0.1 s. (The last change came 0.05 s ago.)
    h.scheduler.advance(2.85);
    EXPECT_NEAR(p.remainingTime(), 0.05, 1e-9);
    p.pauseSlideshow();
    p.resumeSlideshow();
    h.scheduler.advance(0.09);
    EXPECT_FALSE(p.hasStoppedSlideshow());
    h.scheduler.advance(0.01);
    EXPECT_FALSE(h.manager.isSlideshowRunning());
}

TEST(SlideshowView, ManualShowsArmNothingAndAResumeRestartsOnlyTheAudio)
{
    PlayerHarness h;
    h.audio.tracks = 1;
    SlideshowConfiguration c = timed(false, false);
    c.isManualMode = true;
    SlideshowView& p = h.start(3, c);
    h.scheduler.advance(100);
    EXPECT_EQ(p.currentIndex(), 0);
    EXPECT_EQ(p.remainingTime(), 0.0) << "the countdown runs in manual mode too";
    p.pauseSlideshow();
    EXPECT_FALSE(p.showPauseInfo());
    h.audio.calls.clear();
    p.resumeSlideshow();
    EXPECT_EQ(h.audio.calls, QStringList{QStringLiteral("play")});
    EXPECT_EQ(p.pendingAdvance(), 0u);
    p.goForwardByArrow();
    EXPECT_EQ(p.currentIndex(), 1);
    EXPECT_EQ(p.pendingAdvance(), 0u);
}

TEST(SlideshowView, OneItemShows)
{
    {
        LogCapture log;
        PlayerHarness h;
        h.start(1, timed(true, false));
        h.scheduler.advance(3.1);
        EXPECT_EQ(count(log, "[SlideshowView] Reached end of shuffled images. Stopping slideshow (no loop)."), 1);
        EXPECT_FALSE(h.manager.isSlideshowRunning());
    }
    {
        LogCapture log;
        PlayerHarness h;
        h.start(1, timed(false, false));
        h.scheduler.advance(3.0);
        EXPECT_EQ(count(log, "SlideshowView: Slideshow ended"), 1);
        EXPECT_EQ(h.closes, 1);
    }
    {
        PlayerHarness h;
        SlideshowView& p = h.start(1, timed(false, true));
        h.scheduler.advance(30.0);
        EXPECT_TRUE(h.manager.isSlideshowRunning()) << "with loop the item is entered again every delay";
        EXPECT_EQ(p.viewHistory().size(), 11);
    }
}

TEST(SlideshowView, TheStopPathRunsOnceInItsOrder)
{
    LogCapture log;
    PlayerHarness h;
    h.audio.tracks = 2;
    SlideshowView& p = h.start(4, timed(false, false));
    h.audio.calls.clear();
    p.handleKey(Qt::Key_Escape);
    p.stopSlideshow();
    p.onDisappear(); // the window going away afterwards changes nothing more

    EXPECT_EQ(count(log, "stopSlideshow() method executed"), 1);
    EXPECT_EQ(h.audio.calls, (QStringList{QStringLiteral("pause"), QStringLiteral("play"), QStringLiteral("stop")}))
        << "the playlist is started right before it is stopped";
    EXPECT_EQ(h.closes, 1);
    EXPECT_EQ(h.caches.pictureClears, 1);
    EXPECT_EQ(h.caches.thumbnailClears, 1);
    EXPECT_EQ(h.caches.videoThumbnailClears, 1);
    EXPECT_EQ(h.inhibitor.released, QList<quint32>{41});
    EXPECT_FALSE(h.manager.isSlideshowRunning());
    EXPECT_EQ(h.scheduler.pendingCount(), 0);
}

TEST(SlideshowView, StopsWhenAnyoneClearsTheRunningFlagAndReportsAMissingWindow)
{
    LogCapture log;
    PlayerHarness h;
    SlideshowView& p = h.start(3, timed(false, false), /*withWindow=*/false);
    h.manager.setSlideshowRunning(false);
    EXPECT_TRUE(p.hasStoppedSlideshow());
    EXPECT_EQ(log.messages(LogLevel::Error), QStringList{QStringLiteral("[Slideshow] Could not get keyWindow.")});
    EXPECT_EQ(h.scheduler.pendingCount(), 0);
}

TEST(SlideshowView, AnEmptiedShuffledQueueEndsTheShowNotTheProgram)
{
    LogCapture log;
    PlayerHarness h;
    SlideshowView& p = h.start(3, timed(true, true));
    h.queue->clear(); // live mode took every file away
    h.scheduler.advance(3.1);
    h.scheduler.advance(3.0);
    h.scheduler.advance(3.0);
    h.scheduler.advance(3.0);
    EXPECT_TRUE(p.hasStoppedSlideshow());
    EXPECT_EQ(log.messages(LogLevel::Error).size(), 1);
}

TEST(SlideshowView, AClipPlayedToItsEndArmsNoTimer)
{
    PlayerHarness h;
    h.settings.set(Settings::videoPlaybackMode, QStringLiteral("fullVideo"));
    SlideshowView& p =
        h.start({IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(QStringLiteral("/c.mp4")),
                                   QStringLiteral("c.mp4"), QStringLiteral("/"), std::nullopt, false, true, 8.0),
                 makeQueue(1).first()},
                timed(false, false));
    EXPECT_EQ(p.pendingAdvance(), 0u);
    h.settings.set(Settings::videoPlaybackMode, QStringLiteral("useDelay"));
    p.goBackByArrow(); // re-arms under the other mode
    EXPECT_NE(p.pendingAdvance(), 0u);
}

TEST(SleepPreventer, HoldsAndReleasesWithItsLogLines)
{
    LogCapture log;
    FakeInhibitor inhibitor;
    SleepPreventer preventer(inhibitor);
    preventer.allowSleep();
    EXPECT_TRUE(log.messages(LogLevel::Info).isEmpty()) << "nothing held, nothing said";
    preventer.preventSleep();
    preventer.allowSleep();
    inhibitor.failure = QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown");
    preventer.preventSleep();
    EXPECT_EQ(log.messages(LogLevel::Info),
              (QStringList{QStringLiteral("Display sleep prevented (assertionID: 41)"),
                           QStringLiteral("Display sleep allowed (released assertionID: 41)"),
                           QStringLiteral("Failed to prevent display sleep (error code: "
                                          "org.freedesktop.DBus.Error.ServiceUnknown)")}));

    inhibitor.failure.clear();
    preventer.preventSleep();
    inhibitor.failure = QStringLiteral("org.freedesktop.DBus.Error.NoReply");
    preventer.allowSleep();
    EXPECT_EQ(preventer.assertionID(), 42u) << "a failed release keeps the id for the next try";
    EXPECT_EQ(log.messages(LogLevel::Info).last(),
              QStringLiteral("Failed to allow display sleep (error code: org.freedesktop.DBus.Error.NoReply)"));
}

// The desktop answers later: a show that ends before the hold is granted still releases it.
TEST(SleepPreventer, AReleaseAskedBeforeTheHoldIsGrantedFollowsIt)
{
    LogCapture log;
    FakeInhibitor inhibitor;
    inhibitor.deferred = true;
    {
        SleepPreventer preventer(inhibitor);
        preventer.preventSleep();
        preventer.allowSleep();
        preventer.allowSleep();
    }
    EXPECT_TRUE(inhibitor.released.isEmpty());
    inhibitor.answerAll();
    EXPECT_EQ(inhibitor.released, QList<quint32>{41}) << "once";
    EXPECT_EQ(log.messages(LogLevel::Info),
              (QStringList{QStringLiteral("Display sleep prevented (assertionID: 41)"),
                           QStringLiteral("Display sleep allowed (released assertionID: 41)")}));
}
