#pragma once

namespace tb {

// How long the user has not touched keyboard or pointer, in seconds. A source that cannot tell
// answers 0.0, so nothing starts by itself; it never blocks the caller for long.
class IdleTimeSource {
public:
    virtual ~IdleTimeSource() = default;
    virtual double idleSeconds() = 0;
};

} // namespace tb
