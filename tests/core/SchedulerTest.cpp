#include "core/ManualScheduler.h"
#include "core/QtScheduler.h"

#include <QTest>

#include <gtest/gtest.h>

#include <vector>

using namespace tb;

TEST(ManualScheduler, RunsATaskOnlyWhenItsTimeHasCome)
{
    ManualScheduler scheduler;
    double ranAt = -1;
    const TaskId id = scheduler.after(3.0, [&] { ranAt = scheduler.now(); });

    scheduler.advance(2.999);
    EXPECT_EQ(ranAt, -1);
    EXPECT_TRUE(scheduler.isPending(id));
    EXPECT_DOUBLE_EQ(scheduler.nextDueIn(), 0.001);

    scheduler.advance(0.001);
    EXPECT_DOUBLE_EQ(ranAt, 3.0);
    EXPECT_FALSE(scheduler.isPending(id));

    scheduler.advance(100);
    EXPECT_DOUBLE_EQ(ranAt, 3.0) << "a one-shot task runs once";
}

TEST(ManualScheduler, ManySmallStepsAddUpExactly)
{
    ManualScheduler scheduler;
    bool ran = false;
    scheduler.after(3.0, [&] { ran = true; });
    for (int i = 0; i < 30; ++i)
        scheduler.advance(0.1);
    EXPECT_TRUE(ran);
    EXPECT_DOUBLE_EQ(scheduler.now(), 3.0);
}

TEST(ManualScheduler, CancelledTasksNeverRun)
{
    ManualScheduler scheduler;
    int runs = 0;
    const TaskId once = scheduler.after(1, [&] { ++runs; });
    const TaskId repeating = scheduler.every(1, [&] { ++runs; });
    scheduler.cancel(once);
    scheduler.cancel(repeating);
    scheduler.cancel(0);     // "nothing armed"
    scheduler.cancel(12345); // never armed
    scheduler.advance(10);
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(scheduler.pendingCount(), 0);
}

TEST(ManualScheduler, TasksDueTogetherRunInArmingOrderAndEarlierDueFirst)
{
    ManualScheduler scheduler;
    std::vector<int> order;
    scheduler.after(2, [&] { order.push_back(3); });
    scheduler.after(1, [&] { order.push_back(1); });
    scheduler.after(2, [&] { order.push_back(4); });
    scheduler.after(1, [&] { order.push_back(2); });
    scheduler.after(-5, [&] { order.push_back(0); }); // a negative delay means "now"
    scheduler.advance(5);
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(ManualScheduler, RepeatingTasksRunAtEachPeriodWithTheClockAtTheirDueTime)
{
    ManualScheduler scheduler;
    std::vector<double> times;
    scheduler.every(3, [&] { times.push_back(scheduler.now()); });
    scheduler.advance(10);
    EXPECT_EQ(times, (std::vector<double>{3, 6, 9}));
    EXPECT_DOUBLE_EQ(scheduler.now(), 10);
    scheduler.advance(2);
    EXPECT_EQ(times.size(), 4u);
}

TEST(ManualScheduler, ZeroPeriodIsRaisedSoAdvanceEnds)
{
    ManualScheduler scheduler;
    int runs = 0;
    scheduler.every(0, [&] { ++runs; });
    scheduler.advance(0.0105);
    EXPECT_EQ(runs, 10);
}

TEST(ManualScheduler, ATaskMayArmAndCancelOthersWhileRunning)
{
    ManualScheduler scheduler;
    std::vector<std::string> log;
    TaskId victim = 0;
    TaskId self = 0;
    int repeats = 0;

    scheduler.after(1, [&] {
        log.push_back("first");
        scheduler.cancel(victim);                                     // due at the same moment
        scheduler.after(0.5, [&] { log.push_back("armed inside"); }); // falls inside this advance
        scheduler.after(0, [&] { log.push_back("armed for now"); });
    });
    victim = scheduler.after(1, [&] { log.push_back("victim"); });
    self = scheduler.every(1, [&] {
        if (++repeats == 2)
            scheduler.cancel(self);
    });

    scheduler.advance(5);
    EXPECT_EQ(log, (std::vector<std::string>{"first", "armed for now", "armed inside"}));
    EXPECT_EQ(repeats, 2) << "a repeating task can cancel itself";
    EXPECT_EQ(scheduler.pendingCount(), 0);
}

// The program's scheduler runs on the event loop; these wait on conditions, not on time.
TEST(QtScheduler, RunsTasksInArmingOrderAndSkipsCancelledOnes)
{
    QtScheduler scheduler;
    std::vector<int> order;
    scheduler.after(0, [&] { order.push_back(1); });
    const TaskId cancelled = scheduler.after(0, [&] { order.push_back(99); });
    scheduler.after(0, [&] { order.push_back(2); });
    scheduler.cancel(cancelled);
    EXPECT_FALSE(scheduler.isPending(cancelled));

    EXPECT_TRUE(QTest::qWaitFor([&] { return order.size() >= 2; }, 5000));
    QCoreApplication::processEvents();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST(QtScheduler, RepeatingTaskCancelledFromInsideStops)
{
    QtScheduler scheduler;
    int runs = 0;
    TaskId id = 0;
    id = scheduler.every(0, [&] {
        if (++runs == 3)
            scheduler.cancel(id);
    });
    bool sentinel = false;
    EXPECT_TRUE(QTest::qWaitFor([&] { return runs >= 3; }, 5000));
    scheduler.after(0.02, [&] { sentinel = true; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return sentinel; }, 5000));
    EXPECT_EQ(runs, 3);
    EXPECT_FALSE(scheduler.isPending(id));
    EXPECT_GT(scheduler.now(), 0.0);
}
