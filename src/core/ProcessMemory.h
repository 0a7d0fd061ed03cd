#pragma once

#include <optional>

namespace tb {

// This process's memory, as the system counts it.
class ProcessMemory {
public:
    virtual ~ProcessMemory() = default;
    // Resident memory in MiB, or nothing when the system does not say.
    virtual std::optional<double> residentMiB() const = 0;
    // Hands memory the program has freed back to the system (after a show, whose large
    // pictures would otherwise keep the process big).
    virtual void releaseFreeMemory() = 0;
};

} // namespace tb
