#include "QtScheduler.h"

#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tb {

QtScheduler::QtScheduler(QObject* parent) : QObject(parent) { clock.start(); }

// Timers are children of this object and go with it.
QtScheduler::~QtScheduler() = default;

TaskId QtScheduler::arm(double seconds, bool repeat, std::function<void()> fn)
{
    const TaskId id = ++lastId;
    // QTimer takes whole milliseconds in an int; clamp rather than overflow on absurd delays.
    const double ms = std::clamp(std::round(seconds * 1000.0), 0.0, double(std::numeric_limits<int>::max()));
    auto* timer = new QTimer(this);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(!repeat);
    timer->setInterval(int(ms));
    connect(timer, &QTimer::timeout, this, [this, id, repeat, fn = std::move(fn)] {
        if (!repeat) {
            // Forget the timer before running: the task may arm new ones or ask isPending().
            auto it = timers.find(id);
            if (it == timers.end())
                return;
            it->second->deleteLater();
            timers.erase(it);
        }
        fn();
    });
    timers.emplace(id, timer);
    timer->start();
    return id;
}

TaskId QtScheduler::after(double seconds, std::function<void()> fn)
{
    return arm(std::max(0.0, seconds), false, std::move(fn));
}

TaskId QtScheduler::every(double seconds, std::function<void()> fn)
{
    return arm(std::max(seconds, minimumPeriod), true, std::move(fn));
}

void QtScheduler::cancel(TaskId id)
{
    auto it = timers.find(id);
    if (it == timers.end())
        return;
    it->second->stop();
    // deleteLater: cancel() may be called from inside this very timer's callback.
    it->second->deleteLater();
    timers.erase(it);
}

bool QtScheduler::isPending(TaskId id) const { return timers.count(id) != 0; }

double QtScheduler::now() const { return double(clock.nsecsElapsed()) / 1e9; }

} // namespace tb
