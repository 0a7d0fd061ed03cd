#pragma once

#include "IdleWatching.h"
#include "core/Scheduler.h"

#include <functional>

namespace tb {

class IdleTimeSource;
class SettingsStore;

// Starts the screen saver: polls the idle time every 30 s and, once it reaches the minutes the
// settings name, tells the program once per idle stretch. The program's one instance is started
// when a main window appears and by the settings panel.
class IdleWatcher final : public IdleWatching {
public:
    // `thresholdReached` is called from a task of its own, never from inside a tick.
    IdleWatcher(Scheduler& scheduler, SettingsStore& settings, IdleTimeSource& source,
                std::function<void()> thresholdReached);
    ~IdleWatcher() override;

    void start();
    void stop();
    void restart() override { start(); }

    bool isPolling() const { return timer != 0; }
    bool hasFired() const { return fired; }

    static constexpr double pollInterval = 30.0;

private:
    void tick();
    void cancelTimer();

    Scheduler& scheduler;
    SettingsStore& settings;
    IdleTimeSource& source;
    std::function<void()> thresholdReached;
    TaskId timer = 0;
    TaskId notification = 0;
    bool fired = false;
};

} // namespace tb
