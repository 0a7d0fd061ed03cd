#include "IdleWatcher.h"

#include "core/IdleTimeSource.h"
#include "core/Logger.h"
#include "core/SettingsKeys.h"
#include "core/SettingsStore.h"

namespace tb {

IdleWatcher::IdleWatcher(Scheduler& scheduler, SettingsStore& settings, IdleTimeSource& source,
                         std::function<void()> thresholdReached)
    : scheduler(scheduler), settings(settings), source(source), thresholdReached(std::move(thresholdReached))
{
}

IdleWatcher::~IdleWatcher()
{
    cancelTimer();
    scheduler.cancel(notification);
}

void IdleWatcher::cancelTimer()
{
    scheduler.cancel(timer);
    timer = 0;
}

void IdleWatcher::start()
{
    cancelTimer();
    fired = false;
    const int minutes = settings.value(Settings::screensaverIdleMinutes);
    if (minutes < 1) {
        logInfo(QStringLiteral("[IdleWatcher] Idle mode is off, timer not started."));
        return;
    }
    timer = scheduler.every(pollInterval, [this] { tick(); });
    logInfo(QStringLiteral("[IdleWatcher] Started polling for idle time (threshold: %1 min).").arg(minutes));
}

void IdleWatcher::stop()
{
    cancelTimer();
    fired = false;
    logInfo(QStringLiteral("[IdleWatcher] Stopped."));
}

void IdleWatcher::tick()
{
    // Turned off without a restart: the poll goes on, asking nothing.
    const int minutes = settings.value(Settings::screensaverIdleMinutes);
    if (minutes < 1)
        return;
    if (source.idleSeconds() >= minutes * 60.0) {
        // Once per idle stretch: a show stopped by hand is not started again until the user
        // has been seen active.
        if (!fired) {
            fired = true;
            logInfo(
                QStringLiteral("[IdleWatcher] Idle threshold reached (%1 min). Posting notification.").arg(minutes));
            notification = scheduler.after(0.0, [this] {
                notification = 0;
                thresholdReached();
            });
        }
        return;
    }
    if (fired)
        logInfo(QStringLiteral("[IdleWatcher] User became active. Resetting."));
    fired = false;
}

} // namespace tb
