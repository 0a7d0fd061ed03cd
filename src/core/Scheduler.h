#pragma once

#include <QtGlobal>

#include <functional>

namespace tb {

// Identifies one armed task. 0 never names a task, so a holder can keep 0 for "nothing armed"
// and cancel it without checking.
using TaskId = quint64;

// All timed work of the program's logic goes through a Scheduler, so tests can drive time by
// hand. Tasks run on the thread that owns the scheduler (the GUI thread in the program); arm and
// cancel them from that thread only.
class Scheduler {
public:
    virtual ~Scheduler() = default;

    // Runs fn once, `seconds` from now (a negative delay counts as 0).
    virtual TaskId after(double seconds, std::function<void()> fn) = 0;
    // Runs fn every `seconds` until cancelled. Periods shorter than minimumPeriod are raised to
    // it, so a zero period cannot spin the event loop.
    virtual TaskId every(double seconds, std::function<void()> fn) = 0;
    // A cancelled task never runs again, even if it was already due. Unknown ids are ignored.
    virtual void cancel(TaskId id) = 0;
    virtual bool isPending(TaskId id) const = 0;
    // Monotonic seconds since the scheduler was made; animation progress is measured with it.
    virtual double now() const = 0;

    static constexpr double minimumPeriod = 0.001;
};

} // namespace tb
