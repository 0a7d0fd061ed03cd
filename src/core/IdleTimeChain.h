#pragma once

#include "IdleTimeProbe.h"
#include "IdleTimeSource.h"

#include <vector>

namespace tb {

// The idle time from the first probe that knows it, asked in order; 0.0 when none does, so
// nothing starts by itself. The probes are not owned and must outlive the chain.
class IdleTimeChain final : public IdleTimeSource {
public:
    explicit IdleTimeChain(std::vector<IdleTimeProbe*> probes);
    double idleSeconds() override;

private:
    std::vector<IdleTimeProbe*> probes;
};

} // namespace tb
