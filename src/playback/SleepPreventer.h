#pragma once

#include <QtGlobal>

#include <memory>

namespace tb {

class SleepInhibitor;

// Holds the display awake while a single-photo show runs. One per show. The desktop answers
// later; a release asked for before the hold was granted happens as soon as it is, even after
// the show has gone.
class SleepPreventer {
public:
    explicit SleepPreventer(SleepInhibitor& inhibitor);
    ~SleepPreventer();
    SleepPreventer(const SleepPreventer&) = delete;
    SleepPreventer& operator=(const SleepPreventer&) = delete;

    // Takes a hold whatever was held before (a second call replaces the id).
    void preventSleep();
    // Releases the hold, if any; a failed release keeps the id so the next call tries again.
    void allowSleep();

    quint32 assertionID() const;

private:
    struct Hold;
    static void release(SleepInhibitor& inhibitor, const std::shared_ptr<Hold>& hold);

    SleepInhibitor& inhibitor;
    // Shared with the desktop's answers, which may come after this preventer is gone.
    std::shared_ptr<Hold> hold;
};

} // namespace tb
