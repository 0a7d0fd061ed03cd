#pragma once

#include "core/Scheduler.h"

#include <functional>

namespace tb {

// The countdown to the next item, shown in the show's corner and used as the wait after a
// resume. The time left is a deadline read against the scheduler's clock, never a sum of
// ticks: a late tick cannot stretch it. Ticks every 0.1 s only refresh what is shown.
class Countdown {
public:
    // `moving` is asked at each tick: while it says no, the value shown stands still.
    Countdown(Scheduler& scheduler, double duration, std::function<bool()> moving, std::function<void()> changed);
    ~Countdown();
    Countdown(const Countdown&) = delete;
    Countdown& operator=(const Countdown&) = delete;

    // The full duration again. A frozen countdown stays frozen, at the full duration.
    void start();
    // Stands still at the time left now (a pause)...
    void freeze();
    // ...and runs on from there (a resume).
    void resume();
    // No more ticks.
    void stop();

    double remaining() const { return value; }

    static constexpr double tick = 0.1;

private:
    void set(double seconds);
    void tickOnce();
    void restartTicks();

    Scheduler& scheduler;
    const double duration;
    std::function<bool()> moving;
    std::function<void()> changed;
    double value = 0;
    double deadline = 0;
    bool frozen = false;
    TaskId ticker = 0;
};

} // namespace tb
