#include "IdleTimeChain.h"

namespace tb {

IdleTimeChain::IdleTimeChain(std::vector<IdleTimeProbe*> probes) : probes(std::move(probes)) {}

double IdleTimeChain::idleSeconds()
{
    for (IdleTimeProbe* probe : probes) {
        if (const std::optional<double> idle = probe->ask())
            return *idle;
    }
    return 0.0;
}

} // namespace tb
