#pragma once

#include <QList>
#include <QPointF>

namespace tb {

class RandomSource;

// Where one picture's slow zoom and pan arrive at progress 1: drawn once per export, each
// picture on its own. It always zooms in, from 1.
struct KenBurnsTargetState {
    double targetScale;   // 1.05 to 1.10
    double targetOffsetX; // -20 to 20 output pixels
    double targetOffsetY; // -20 to 20; positive moves the picture up
};

QList<KenBurnsTargetState> makeKenBurnsTargets(int count, RandomSource& random);

// The motion of a movie's pictures and its transitions, frame by frame. A picture's progress
// runs linearly through its life: its solo stretch (clamped at 1), then, as the outgoing
// picture of a transition, on past 1; the incoming picture starts its motion during the
// transition and continues from there in its solo.
namespace Motion {

// A transition frame's place: f / (n - 1), or 1 when the transition has fewer than 2 frames.
double transitionTime(int frame, int frames);
// The dissolve's cubic ease in and out; the Ken Burns dissolve is not eased.
double ease(double t);

double soloProgress(double startProgress, double t, double solo, double delay);
// Unclamped: it passes 1, and with a delay shorter than the transition it starts behind.
double outgoingProgress(double startProgress, double t, double transition, double delay);
double incomingProgress(double t, double transition, double delay);
// Where a picture that came in through a transition starts its solo stretch.
double startProgressAfterTransition(double transition, double delay);

struct Zoom {
    double scale;
    QPointF shift; // zoomed with the picture; positive y is up
};
Zoom at(const KenBurnsTargetState& target, double progress);

} // namespace Motion

} // namespace tb
