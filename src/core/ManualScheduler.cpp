#include "ManualScheduler.h"

#include <algorithm>
#include <cmath>

namespace tb {

ManualScheduler::Nanoseconds ManualScheduler::toNanoseconds(double seconds)
{
    // Clamped to about 292 years either way, far beyond any delay the program arms.
    return std::llround(std::clamp(seconds, -9.2e9, 9.2e9) * 1e9);
}

TaskId ManualScheduler::arm(Nanoseconds delay, Nanoseconds period, std::function<void()> fn)
{
    const TaskId id = ++lastId;
    tasks.emplace(id, Task{clock + std::max<Nanoseconds>(0, delay), period, std::move(fn)});
    return id;
}

TaskId ManualScheduler::after(double seconds, std::function<void()> fn)
{
    return arm(toNanoseconds(seconds), 0, std::move(fn));
}

TaskId ManualScheduler::every(double seconds, std::function<void()> fn)
{
    const Nanoseconds period = toNanoseconds(std::max(seconds, minimumPeriod));
    return arm(period, period, std::move(fn));
}

void ManualScheduler::cancel(TaskId id) { tasks.erase(id); }

bool ManualScheduler::isPending(TaskId id) const { return tasks.count(id) != 0; }

double ManualScheduler::nextDueIn() const
{
    if (tasks.empty())
        return -1;
    const auto earliest = std::min_element(tasks.begin(), tasks.end(),
                                           [](const auto& a, const auto& b) { return a.second.due < b.second.due; });
    return double(earliest->second.due - clock) / 1e9;
}

void ManualScheduler::advance(double seconds)
{
    const Nanoseconds target = clock + std::max<Nanoseconds>(0, toNanoseconds(seconds));
    for (;;) {
        // The next task is the earliest due; among equals, the first armed (lowest id).
        auto next = tasks.end();
        for (auto it = tasks.begin(); it != tasks.end(); ++it) {
            if (it->second.due <= target && (next == tasks.end() || it->second.due < next->second.due))
                next = it;
        }
        if (next == tasks.end())
            break;

        clock = std::max(clock, next->second.due);
        const TaskId id = next->first;
        // Copy the callable: the task may cancel itself (erasing the stored one) while running.
        std::function<void()> fn = next->second.fn;
        if (next->second.period > 0) {
            // The repeat keeps its id, so the caller can still cancel it and it keeps its place
            // among tasks due at the same time.
            Task repeat = std::move(next->second);
            repeat.due += repeat.period;
            tasks.erase(next);
            tasks.emplace(id, std::move(repeat));
        } else {
            tasks.erase(next);
        }
        fn();
    }
    clock = target;
}

} // namespace tb
