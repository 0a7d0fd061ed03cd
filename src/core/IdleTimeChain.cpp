#include "IdleTimeChain.h"

#include "Logger.h"

namespace tb {

IdleTimeChain::IdleTimeChain(std::vector<IdleTimeProbe*> probes) : probes(std::move(probes)) {}

double IdleTimeChain::idleSeconds()
{
    for (IdleTimeProbe* probe : probes) {
        if (const std::optional<double> idle = probe->ask()) {
            saidUnknown = false;
            return *idle;
        }
    }
    if (!saidUnknown)
        logWarning(QStringLiteral("[IdleWatcher] This desktop does not tell the idle time: screen-saver mode "
                                  "cannot start a show."));
    saidUnknown = true;
    return 0.0;
}

} // namespace tb
