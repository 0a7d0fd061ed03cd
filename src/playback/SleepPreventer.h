#pragma once

#include <QtGlobal>

namespace tb {

class SleepInhibitor;

// Holds the display awake while a single-photo show runs. One per show.
class SleepPreventer {
public:
    explicit SleepPreventer(SleepInhibitor& inhibitor) : inhibitor(inhibitor) {}

    // Takes a hold whatever was held before (a second call replaces the id).
    void preventSleep();
    // Releases the hold, if any; a failed release keeps the id so the next call tries again.
    void allowSleep();

    quint32 assertionID() const { return id; }

private:
    SleepInhibitor& inhibitor;
    quint32 id = 0;
};

} // namespace tb
