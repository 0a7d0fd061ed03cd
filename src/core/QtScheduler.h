#pragma once

#include "Scheduler.h"

#include <QElapsedTimer>
#include <QObject>

#include <unordered_map>

class QTimer;

namespace tb {

// The program's scheduler: each task is a precise QTimer owned by this object, so tasks run on
// the thread this scheduler lives on and die with it.
class QtScheduler final : public QObject, public Scheduler {
    Q_OBJECT
public:
    explicit QtScheduler(QObject* parent = nullptr);
    ~QtScheduler() override;

    TaskId after(double seconds, std::function<void()> fn) override;
    TaskId every(double seconds, std::function<void()> fn) override;
    void cancel(TaskId id) override;
    bool isPending(TaskId id) const override;
    double now() const override;

private:
    TaskId arm(double seconds, bool repeat, std::function<void()> fn);

    QElapsedTimer clock;
    TaskId lastId = 0;
    std::unordered_map<TaskId, QTimer*> timers;
};

} // namespace tb
