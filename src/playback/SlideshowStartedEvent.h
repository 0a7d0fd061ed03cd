#pragma once

#include "core/Analytics.h"

#include <QString>

namespace tb {

// "slideshowStarted": every value a string.
Segmentation slideshowStartedSegmentation(int queueSize, double delay, bool loop, bool shuffle,
                                          const QString& transitionType, double crossfadeDuration, int displayModeRaw,
                                          bool liveMode, int audioTracks, bool overlayEnabled);

// A real number as the analytics server has always received it: "3.0", "2.5".
QString decimalText(double value);

} // namespace tb
