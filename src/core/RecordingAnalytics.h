#pragma once

#include "Analytics.h"

#include <QList>
#include <QMutex>

namespace tb {

// Keeps every event in memory. The program uses it until the network client is wired in;
// tests read back what was recorded. Safe to call from any thread.
class RecordingAnalytics final : public Analytics {
public:
    struct Event {
        QString key;
        Segmentation segmentation;
        int count = 1;
        bool operator==(const Event&) const = default;
    };

    void recordEvent(const QString& key, const Segmentation& segmentation = {}, int count = 1) override;
    void beginSession() override;
    void endSession() override;

    QList<Event> events() const;
    bool isSessionRunning() const;
    int sessionsBegun() const;

private:
    mutable QMutex mutex;
    QList<Event> recorded; // — guarded by mutex, as are the session fields
    bool sessionRunning = false;
    int begun = 0;
};

} // namespace tb
