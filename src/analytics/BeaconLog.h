#pragma once

#include "core/Logger.h"

#include <atomic>

namespace tb {

// The analytics client's own lines. They tell of the client's inner workings (every request,
// every reply), so they reach the program's log only while the client is set to debug.
class BeaconLog {
public:
    void setEnabled(bool on) { enabled.store(on, std::memory_order_relaxed); }
    bool isEnabled() const { return enabled.load(std::memory_order_relaxed); }

    void info(const QString& message, SourceLocation where = SourceLocation::current()) const
    {
        if (isEnabled())
            logInfo(message, where);
    }
    void warning(const QString& message, SourceLocation where = SourceLocation::current()) const
    {
        if (isEnabled())
            logWarning(message, where);
    }
    void error(const QString& message, SourceLocation where = SourceLocation::current()) const
    {
        if (isEnabled())
            logError(message, where);
    }

private:
    std::atomic<bool> enabled{false};
};

} // namespace tb
