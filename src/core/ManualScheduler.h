#pragma once

#include "Scheduler.h"

#include <map>

namespace tb {

// A scheduler whose clock moves only when told to. Tasks due at the same moment run in the
// order they were armed; a task may arm or cancel others while it runs.
class ManualScheduler final : public Scheduler {
public:
    TaskId after(double seconds, std::function<void()> fn) override;
    TaskId every(double seconds, std::function<void()> fn) override;
    void cancel(TaskId id) override;
    bool isPending(TaskId id) const override;
    double now() const override { return double(clock) / 1e9; }

    // Moves the clock forward, running every task that falls due on the way at its due time.
    void advance(double seconds);
    // Number of armed tasks (repeating ones included).
    int pendingCount() const { return static_cast<int>(tasks.size()); }
    // Seconds until the next task is due, or a negative value when nothing is armed.
    double nextDueIn() const;

private:
    // Time is kept in whole nanoseconds, so many small advances add up exactly
    // (thirty advances of 0.1 s reach a task due at 3 s).
    using Nanoseconds = qint64;
    static Nanoseconds toNanoseconds(double seconds);

    struct Task {
        Nanoseconds due = 0;
        Nanoseconds period = 0; // 0 for one-shot tasks
        std::function<void()> fn;
    };
    TaskId arm(Nanoseconds delay, Nanoseconds period, std::function<void()> fn);

    Nanoseconds clock = 0;
    TaskId lastId = 0;
    // Keyed by id; ids grow with arming order, which breaks ties between equal due times.
    std::map<TaskId, Task> tasks;
};

} // namespace tb
