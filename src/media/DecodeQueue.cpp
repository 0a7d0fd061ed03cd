#include "DecodeQueue.h"

#include <QRunnable>

#include <limits>
#include <memory>

namespace tb {

class DecodeQueue::Job final : public QRunnable {
public:
    Job(DecodeQueue& queue, JobId id, std::function<void()> work, std::function<void()> dropped)
        : queue(queue), id(id), work(std::move(work)), dropped(std::move(dropped))
    {
        setAutoDelete(true);
    }
    void run() override
    {
        queue.started(id);
        work();
    }

    DecodeQueue& queue;
    const JobId id;
    std::function<void()> work;
    std::function<void()> dropped;
};

DecodeQueue::DecodeQueue(int threads, int backlog) : backlog(std::max(1, backlog))
{
    pool.setMaxThreadCount(std::max(1, threads));
}

DecodeQueue::~DecodeQueue() { drain(); }

void DecodeQueue::started(JobId id)
{
    QMutexLocker lock(&mutex);
    pending.remove(id);
}

DecodeQueue::Job* DecodeQueue::takeLocked(QMap<JobId, Job*>::iterator it)
{
    // A job the pool has already handed to a thread is about to run: it stays.
    Job* job = it.value();
    if (!pool.tryTake(job))
        return nullptr;
    pending.erase(it);
    return job;
}

QList<DecodeQueue::Job*> DecodeQueue::overflowLocked(qsizetype keep)
{
    QList<Job*> taken;
    for (auto it = pending.begin(); pending.size() > keep && it != pending.end();) {
        if (Job* job = takeLocked(it)) {
            taken.append(job);
            it = pending.begin();
        } else {
            ++it;
        }
    }
    return taken;
}

void DecodeQueue::drop(const QList<Job*>& jobs)
{
    for (Job* job : jobs) {
        std::unique_ptr<Job> owned(job);
        if (owned->dropped)
            owned->dropped();
    }
}

DecodeQueue::JobId DecodeQueue::submit(std::function<void()> work, std::function<void()> dropped)
{
    QList<Job*> overtaken;
    JobId id = 0;
    {
        QMutexLocker lock(&mutex);
        id = ++lastId;
        if (closed) {
            lock.unlock();
            if (dropped)
                dropped();
            return id;
        }
        auto* job = new Job(*this, id, std::move(work), std::move(dropped));
        pending.insert(id, job);
        // Newer jobs first: what was asked last is what is needed now.
        pool.start(job, int(id % JobId(std::numeric_limits<int>::max())));
        overtaken = overflowLocked(backlog);
    }
    drop(overtaken);
    return id;
}

bool DecodeQueue::withdraw(JobId id)
{
    Job* job = nullptr;
    {
        QMutexLocker lock(&mutex);
        const auto it = pending.find(id);
        if (it == pending.end())
            return false;
        job = takeLocked(it);
    }
    if (!job)
        return false;
    drop({job});
    return true;
}

void DecodeQueue::cancelAll()
{
    QList<Job*> taken;
    {
        QMutexLocker lock(&mutex);
        taken = overflowLocked(0);
    }
    drop(taken);
}

void DecodeQueue::drain()
{
    cancelAll();
    pool.waitForDone();
}

void DecodeQueue::close()
{
    {
        QMutexLocker lock(&mutex);
        closed = true;
    }
    drain();
}

int DecodeQueue::waiting() const
{
    QMutexLocker lock(&mutex);
    return int(pending.size());
}

} // namespace tb
