#pragma once

#include <optional>

namespace tb {

// One way of learning the idle time (a desktop service, the X server). Unlike an
// `IdleTimeSource`, a probe can say that it does not know, so the next way can be tried; it never
// blocks the caller for long.
class IdleTimeProbe {
public:
    virtual ~IdleTimeProbe() = default;
    // Seconds since the last keyboard or pointer input, or nothing when this probe cannot tell.
    virtual std::optional<double> ask() = 0;
};

} // namespace tb
