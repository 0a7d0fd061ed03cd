#pragma once

#include "core/ProcessMemory.h"

namespace tb {

// /proc/self/statm for the resident size; glibc's malloc_trim to give freed memory back.
class LinuxProcessMemory final : public ProcessMemory {
public:
    std::optional<double> residentMiB() const override;
    void releaseFreeMemory() override;
};

} // namespace tb
