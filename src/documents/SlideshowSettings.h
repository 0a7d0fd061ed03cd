#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tb {

// The playback settings a slideshow document carries. The first eight fields are required in a
// document; the optional ones were added over time and may be absent from older files.
struct SlideshowSettings {
    double slideshowDelay = 0;
    int gridOptionRaw = 0;
    bool randomOrder = false;
    bool loopSlideshow = false;
    QString transitionType;
    QString imageScalingMode;
    int selectedDisplayID = 0;
    QString selectedSortOption;

    std::optional<bool> isManualMode;
    std::optional<double> crossfadeDuration;
    std::optional<bool> overlayEnabled;
    std::optional<QString> overlayType;
    std::optional<QByteArray> overlayImageBookmark;
    std::optional<QString> overlayText;
    std::optional<QString> overlayFontFamily;
    std::optional<double> overlayFontSize;
    std::optional<QByteArray> overlayFontColorData;
    std::optional<QString> overlayPosition;
    std::optional<QString> overlaySize;
    std::optional<double> overlayOpacity;
    std::optional<double> overlayMargin;
    // Never written when saving; honoured when a document has them.
    std::optional<QByteArray> backgroundColorData;
    std::optional<bool> startInWindowedMode;
    std::optional<bool> includeSubdirectories;
    std::optional<bool> syncGridTransitions;

    bool operator==(const SlideshowSettings&) const = default;
};

} // namespace tb
