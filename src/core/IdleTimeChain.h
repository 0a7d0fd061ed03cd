#pragma once

#include "IdleTimeProbe.h"
#include "IdleTimeSource.h"

#include <vector>

namespace tb {

// The idle time from the first probe that knows it, asked in order; 0.0 when none does, so
// nothing starts by itself, and a warning says so once (a Wayland desktop that offers neither
// GNOME's nor the freedesktop idle service over D-Bus, whose X server, if any, sees only X
// programs' input). The probes are not owned and must outlive the chain.
class IdleTimeChain final : public IdleTimeSource {
public:
    explicit IdleTimeChain(std::vector<IdleTimeProbe*> probes);
    double idleSeconds() override;

private:
    std::vector<IdleTimeProbe*> probes;
    bool saidUnknown = false;
};

} // namespace tb
