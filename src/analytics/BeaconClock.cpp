#include "BeaconClock.h"

namespace tb {

BeaconClock::Stamp BeaconClock::uniqueStamp()
{
    const QDateTime local = wallClock().toLocalTime();
    const qint64 milliseconds = local.toMSecsSinceEpoch();
    qint64 last = lastTimestamp.load();
    qint64 next = 0;
    do {
        next = milliseconds > last ? milliseconds : last + 1;
    } while (!lastTimestamp.compare_exchange_weak(last, next));
    // Qt counts Monday as 1 and Sunday as 7; the server counts from Sunday as 0.
    return Stamp{next, local.time().hour(), local.date().dayOfWeek() % 7, local.offsetFromUtc() / 60};
}

} // namespace tb
