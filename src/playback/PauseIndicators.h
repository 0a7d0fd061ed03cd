#pragma once

#include "core/Scheduler.h"

#include <functional>

namespace tb {

// The "Slideshow paused" and "Slideshow resumed" labels of both players: each shows for a second
// and then clears itself. A resume hides the pause label at once.
class PauseIndicators {
public:
    PauseIndicators(Scheduler& scheduler, std::function<void()> changed);
    ~PauseIndicators();
    PauseIndicators(const PauseIndicators&) = delete;
    PauseIndicators& operator=(const PauseIndicators&) = delete;

    void paused();
    void resumed();
    // Only the pause label goes (a manual show shows no labels).
    void hidePause();

    bool showPauseInfo() const { return pauseInfo; }
    bool showResumeInfo() const { return resumeInfo; }

    static constexpr double duration = 1.0;

private:
    void show(bool& flag, TaskId& task);

    Scheduler& scheduler;
    std::function<void()> changed;
    bool pauseInfo = false;
    bool resumeInfo = false;
    TaskId pauseTask = 0;
    TaskId resumeTask = 0;
};

} // namespace tb
