#include "Countdown.h"

#include <algorithm>

namespace tb {

Countdown::Countdown(Scheduler& scheduler, double duration, std::function<bool()> moving, std::function<void()> changed)
    : scheduler(scheduler), duration(duration), moving(std::move(moving)), changed(std::move(changed))
{
}

Countdown::~Countdown() { stop(); }

void Countdown::start()
{
    set(duration);
    deadline = scheduler.now() + duration;
    restartTicks();
}

void Countdown::freeze()
{
    if (!frozen)
        set(std::max(deadline - scheduler.now(), 0.0));
    frozen = true;
}

void Countdown::resume()
{
    frozen = false;
    deadline = scheduler.now() + value;
    restartTicks();
}

void Countdown::restartTicks()
{
    scheduler.cancel(ticker);
    ticker = scheduler.every(tick, [this] { tickOnce(); });
}

void Countdown::stop()
{
    scheduler.cancel(ticker);
    ticker = 0;
}

void Countdown::tickOnce()
{
    if (frozen || !moving())
        return;
    set(std::max(deadline - scheduler.now(), 0.0));
}

void Countdown::set(double seconds)
{
    if (seconds == value)
        return;
    value = seconds;
    if (changed)
        changed();
}

} // namespace tb
