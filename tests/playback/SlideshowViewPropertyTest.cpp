#include "PlayerHarness.h"

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

// Random keys and waits over random queues and modes: whatever happens, the indices stay in
// range, the history stays bounded, the shuffle invariant holds, and a show stops at most once.
TEST(SlideshowViewProperties, InvariantsHoldUnderRandomKeysAndTime)
{
    std::mt19937_64 dice(20261123);
    constexpr int shows = 200;
    constexpr int eventsPerShow = 50;
    int stoppedShows = 0;
    for (int show = 0; show < shows; ++show) {
        LogCapture log;
        PlayerHarness h(dice());
        const int itemCount = 1 + int(dice() % 25);
        SlideshowConfiguration c;
        c.slideshowDelay = 0.5 + double(dice() % 40) / 10.0;
        c.randomOrder = dice() % 2;
        c.loopSlideshow = dice() % 2;
        c.isManualMode = dice() % 5 == 0;
        SlideshowView& p = h.start(itemCount, c);
        SCOPED_TRACE(testing::Message() << "show " << show << ": " << itemCount << " items, random " << c.randomOrder
                                        << ", loop " << c.loopSlideshow << ", manual " << c.isManualMode);

        for (int e = 0; e < eventsPerShow; ++e) {
            switch (dice() % 7) {
            case 0:
            case 1:
                h.scheduler.advance(double(dice() % 100) / 10.0);
                break;
            case 2:
                p.handleKey(Qt::Key_Right);
                break;
            case 3:
                p.handleKey(Qt::Key_Left);
                break;
            case 4:
                p.handleKey(Qt::Key_Space);
                break;
            case 5:
                h.scheduler.advance(c.slideshowDelay);
                break;
            default:
                if (dice() % 20 == 0)
                    p.handleKey(Qt::Key_Escape);
                break;
            }
            ASSERT_GE(p.currentIndex(), 0);
            ASSERT_LT(p.currentIndex(), itemCount);
            ASSERT_LE(p.viewHistory().size(), ViewHistory::limit);
            ASSERT_GE(p.historyIndex(), 0);
            ASSERT_LT(p.historyIndex(), p.viewHistory().size());
            if (c.randomOrder) {
                ASSERT_TRUE(h.shuffleInvariantHolds());
            }
            ASSERT_LE(log.messages(LogLevel::Info).count(QStringLiteral("stopSlideshow() method executed")), 1);
            ASSERT_LE(h.closes, 1);
            if (p.hasStoppedSlideshow()) {
                ASSERT_FALSE(h.manager.isSlideshowRunning());
                ASSERT_EQ(p.pendingAdvance(), 0u);
            }
        }
        ASSERT_TRUE(log.messages(LogLevel::Error).isEmpty());
        stoppedShows += p.hasStoppedSlideshow();
    }
    // Sanity of the generator: a fair share of shows must have reached their end.
    EXPECT_GT(stoppedShows, shows / 10);
}
