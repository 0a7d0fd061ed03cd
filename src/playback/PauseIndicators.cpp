#include "PauseIndicators.h"

namespace tb {

PauseIndicators::PauseIndicators(Scheduler& scheduler, std::function<void()> changed)
    : scheduler(scheduler), changed(std::move(changed))
{
}

PauseIndicators::~PauseIndicators()
{
    scheduler.cancel(pauseTask);
    scheduler.cancel(resumeTask);
}

void PauseIndicators::paused() { show(pauseInfo, pauseTask); }

void PauseIndicators::resumed()
{
    pauseInfo = false;
    show(resumeInfo, resumeTask);
}

void PauseIndicators::hidePause()
{
    if (!pauseInfo)
        return;
    pauseInfo = false;
    changed();
}

// A label shown again while still up stays its full second from now.
void PauseIndicators::show(bool& flag, TaskId& task)
{
    flag = true;
    changed();
    scheduler.cancel(task);
    task = scheduler.after(duration, [this, &flag, &task] {
        task = 0;
        flag = false;
        changed();
    });
}

} // namespace tb
