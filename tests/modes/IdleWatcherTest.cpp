#include "modes/IdleWatcher.h"
#include "core/IdleTimeSource.h"
#include "core/ManualScheduler.h"
#include "core/SettingsStore.h"
#include "support/LogCapture.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

// Reports the idle time the test sets, counting the questions.
struct ScriptedIdleTime final : IdleTimeSource {
    double idleSeconds() override
    {
        ++asked;
        return idle;
    }
    double idle = 0.0;
    int asked = 0;
};

struct IdleTest : ::testing::Test {
    QTemporaryDir dir;
    SettingsStore settings{dir.filePath(QStringLiteral("settings.conf"))};
    ManualScheduler scheduler;
    ScriptedIdleTime source;
    int notifications = 0;
    IdleWatcher watcher{scheduler, settings, source, [this] { ++notifications; }};
    LogCapture log;

    // One poll, and the notification task it may have queued.
    void poll() { scheduler.advance(IdleWatcher::pollInterval); }
};

} // namespace

TEST_F(IdleTest, OneNotificationPerIdleStretchFromTheTickThatReachesTheThreshold)
{
    settings.set(Settings::screensaverIdleMinutes, 5);
    watcher.start();
    EXPECT_TRUE(log.contains(LogLevel::Info, "[IdleWatcher] Started polling for idle time (threshold: 5 min)."));
    source.idle = 299.0;
    poll();
    EXPECT_EQ(notifications, 0);
    source.idle = 300.0;
    poll();
    EXPECT_EQ(notifications, 1);
    EXPECT_TRUE(log.contains(LogLevel::Info, "[IdleWatcher] Idle threshold reached (5 min). Posting notification."));

    // An hour away, the show stopped by hand meanwhile: no second notification.
    for (int i = 0; i < 120; ++i)
        poll();
    EXPECT_EQ(notifications, 1);

    source.idle = 2.0;
    poll();
    EXPECT_TRUE(log.contains(LogLevel::Info, "[IdleWatcher] User became active. Resetting."));
    EXPECT_FALSE(watcher.hasFired());
    source.idle = 301.0;
    poll();
    EXPECT_EQ(notifications, 2);
    EXPECT_EQ(log.all().count(QStringLiteral("[IdleWatcher] User became active. Resetting.")), 1);
}

TEST_F(IdleTest, OffMeansNoTimerAndATurnedOffSettingAsksNothing)
{
    watcher.start();
    EXPECT_TRUE(log.contains(LogLevel::Info, "[IdleWatcher] Idle mode is off, timer not started."));
    EXPECT_FALSE(watcher.isPolling());

    settings.set(Settings::screensaverIdleMinutes, 1);
    watcher.restart();
    settings.set(Settings::screensaverIdleMinutes, 0); // without a restart
    source.idle = 3600.0;
    poll();
    poll();
    EXPECT_TRUE(watcher.isPolling()) << "the poll goes on";
    EXPECT_EQ(source.asked, 0);
    EXPECT_EQ(notifications, 0);

    settings.set(Settings::screensaverIdleMinutes, 1);
    poll();
    EXPECT_EQ(notifications, 1);
    watcher.stop();
    EXPECT_TRUE(log.contains(LogLevel::Info, "[IdleWatcher] Stopped."));
    EXPECT_FALSE(watcher.isPolling());
    poll();
    EXPECT_EQ(source.asked, 1);
}
