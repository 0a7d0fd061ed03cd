#include "KenBurns.h"

#include "core/RandomSource.h"

#include <algorithm>

namespace tb {

QList<KenBurnsTargetState> makeKenBurnsTargets(int count, RandomSource& random)
{
    QList<KenBurnsTargetState> targets;
    targets.reserve(count);
    for (int i = 0; i < count; ++i) {
        const double scale = 1.05 + 0.05 * random.unit();
        const double x = -20.0 + 40.0 * random.unit();
        const double y = -20.0 + 40.0 * random.unit();
        targets.append({scale, x, y});
    }
    return targets;
}

namespace Motion {

double transitionTime(int frame, int frames) { return frames < 2 ? 1.0 : double(frame) / double(frames - 1); }

double ease(double t)
{
    if (t < 0.5)
        return 4.0 * t * t * t;
    const double a = 2.0 * t - 2.0;
    return 1.0 + a * a * a / 2.0;
}

double soloProgress(double startProgress, double t, double solo, double delay)
{
    const double share = delay > 0 ? solo / delay : 1.0 - startProgress;
    return std::min(1.0, startProgress + t * share);
}

double outgoingProgress(double startProgress, double t, double transition, double delay)
{
    const double before = delay > 0 ? (delay - transition) / delay : 0.0;
    const double during = delay > 0 ? transition / delay : 0.0;
    return startProgress + before + t * during;
}

double incomingProgress(double t, double transition, double delay) { return delay > 0 ? t * transition / delay : 0.0; }

double startProgressAfterTransition(double transition, double delay) { return delay > 0 ? transition / delay : 1.0; }

Zoom at(const KenBurnsTargetState& target, double progress)
{
    return {1.0 + (target.targetScale - 1.0) * progress,
            QPointF(target.targetOffsetX * progress, target.targetOffsetY * progress)};
}

} // namespace Motion

} // namespace tb
