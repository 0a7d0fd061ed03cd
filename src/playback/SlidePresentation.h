#pragma once

#include "media/MediaTypes.h"

#include <QPointF>
#include <QString>

namespace tb {

class IdentifiableImage;
class RandomSource;

// How the player shows one item: the kind of view, the picture it shows, and where a Ken Burns
// motion ends. Chosen from the item and the show's settings alone, without touching the file:
// whether a picture can be read, and its size, are learnt from its decode on the pool.
struct SlidePresentation {
    // "none" (nothing to show), "video", "gif", "kenBurns", "bestFit", "fit" or "fill", chosen
    // in that order of precedence. A GIF animates whatever the transition.
    QString kind = QStringLiteral("none");
    QString source;
    // A zoom of 1.1 to 1.25 and a drift of up to 30 points each way, drawn afresh for every
    // item of a Ken Burns show.
    double kenBurnsScale = 1.0;
    QPointF kenBurnsOffset;

    static SlidePresentation choose(const IdentifiableImage* item, TransitionType transition, ImageScalingMode scaling,
                                    RandomSource& random);
};

} // namespace tb
