#include "RecordingAnalytics.h"

#include <QMutexLocker>

namespace tb {

void RecordingAnalytics::recordEvent(const QString& key, const Segmentation& segmentation, int count)
{
    QMutexLocker lock(&mutex);
    recorded.append(Event{key, segmentation, count});
}

void RecordingAnalytics::beginSession()
{
    QMutexLocker lock(&mutex);
    if (!sessionRunning)
        ++begun;
    sessionRunning = true;
}

void RecordingAnalytics::endSession()
{
    QMutexLocker lock(&mutex);
    sessionRunning = false;
}

QList<RecordingAnalytics::Event> RecordingAnalytics::events() const
{
    QMutexLocker lock(&mutex);
    return recorded;
}

bool RecordingAnalytics::isSessionRunning() const
{
    QMutexLocker lock(&mutex);
    return sessionRunning;
}

int RecordingAnalytics::sessionsBegun() const
{
    QMutexLocker lock(&mutex);
    return begun;
}

} // namespace tb
