#include "SlidePresentation.h"

#include "PictureProvider.h"
#include "core/RandomSource.h"
#include "media/IdentifiableImage.h"

namespace tb {

SlidePresentation SlidePresentation::choose(const IdentifiableImage* item, TransitionType transition,
                                            ImageScalingMode scaling, RandomSource& random)
{
    SlidePresentation slide;
    if (transition == TransitionType::kenBurns) {
        slide.kenBurnsScale = 1.1 + random.unit() * 0.15;
        slide.kenBurnsOffset = QPointF(-30 + random.unit() * 60, -30 + random.unit() * 60);
    }
    if (!item)
        return slide;
    if (item->isVideo()) {
        slide.kind = QStringLiteral("video"); // the poster frame
        slide.source = PictureProvider::sourceFor(item->url(), true);
        return slide;
    }
    if (item->isGIF()) {
        slide.kind = QStringLiteral("gif");
        slide.source = item->url().toString();
        return slide;
    }
    slide.source = PictureProvider::sourceFor(item->url(), false);
    if (transition == TransitionType::kenBurns)
        slide.kind = QStringLiteral("kenBurns");
    else if (scaling == ImageScalingMode::bestFit)
        slide.kind = QStringLiteral("bestFit");
    else
        slide.kind = scaling == ImageScalingMode::fill ? QStringLiteral("fill") : QStringLiteral("fit");
    return slide;
}

} // namespace tb
