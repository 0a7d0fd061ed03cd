#pragma once

#include <QMap>
#include <QMutex>
#include <QThreadPool>

#include <functional>

namespace tb {

// Decoding work of one owner (a show, a window, a grid) on threads of its own: newest first,
// with at most `backlog` jobs waiting, older ones dropped as newer ones come. A job nobody wants
// any more can be withdrawn before it starts; whatever waits is dropped, and whatever runs is
// waited for, before the queue goes, so no job outlives what it uses. A dropped job's `dropped`
// runs instead of its work, on the thread that dropped it.
class DecodeQueue {
public:
    using JobId = quint64;

    DecodeQueue(int threads, int backlog);
    ~DecodeQueue();
    DecodeQueue(const DecodeQueue&) = delete;
    DecodeQueue& operator=(const DecodeQueue&) = delete;

    JobId submit(std::function<void()> work, std::function<void()> dropped = {});
    // True when the job had not started: it never will.
    bool withdraw(JobId id);
    // Drops every job still waiting.
    void cancelAll();
    // Drops what waits and waits for what runs.
    void drain();
    // Drains, and from then on drops every job it is given instead of running it: for owners
    // that others may still call after the things their jobs use are gone.
    void close();
    int waiting() const;

private:
    class Job;
    friend class Job;
    void started(JobId id);
    // Takes the job out of the pool if it has not started. — mutex held
    Job* takeLocked(QMap<JobId, Job*>::iterator it);
    // Takes waiting jobs, oldest first, until at most `keep` wait. — mutex held
    QList<Job*> overflowLocked(qsizetype keep);
    // Runs the taken jobs' `dropped` instead of their work, and frees them. — mutex not held
    static void drop(const QList<Job*>& jobs);

    QThreadPool pool;
    const int backlog;
    mutable QMutex mutex;
    JobId lastId = 0;          // — guarded by mutex
    bool closed = false;       // — guarded by mutex
    QMap<JobId, Job*> pending; // oldest first — guarded by mutex
};

} // namespace tb
