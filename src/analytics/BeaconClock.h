#pragma once

#include <QDateTime>

#include <atomic>
#include <functional>

namespace tb {

// When things happen, as the analytics server hears it: milliseconds since 1970 and the local
// calendar of that moment. Safe to use from any thread.
class BeaconClock {
public:
    using WallClock = std::function<QDateTime()>;

    struct Stamp {
        qint64 timestamp = 0;   // milliseconds since 1970
        int hour = 0;           // local hour of the day
        int dayOfWeek = 0;      // 0 for Sunday
        int minutesFromGMT = 0; // the local zone's offset
    };

    // wallClock must be callable from any thread; the local time zone is the process's.
    explicit BeaconClock(WallClock wallClock) : wallClock(std::move(wallClock)) {}

    // A timestamp never handed out before and above every earlier one, even when the system
    // clock steps back: the server orders and de-duplicates requests and events by it.
    Stamp uniqueStamp();
    // The wall clock as it stands, for ages and durations.
    qint64 currentMilliseconds() const { return wallClock().toMSecsSinceEpoch(); }

private:
    WallClock wallClock;
    std::atomic<qint64> lastTimestamp{0};
};

} // namespace tb
