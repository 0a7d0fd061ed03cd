#include "SlideshowStartedEvent.h"

#include "media/MediaTypes.h"

#include <QLocale>

namespace tb {

namespace {
QString boolText(bool value) { return value ? QStringLiteral("true") : QStringLiteral("false"); }
} // namespace

Segmentation slideshowStartedSegmentation(int queueSize, double delay, bool loop, bool shuffle,
                                          const QString& transitionType, double crossfadeDuration, int displayModeRaw,
                                          bool liveMode, int audioTracks, bool overlayEnabled)
{
    return Segmentation{
        {QStringLiteral("slideshowSize"), QString::number(queueSize)},
        {QStringLiteral("slideshowDelay"), decimalText(delay)},
        {QStringLiteral("loopEnabled"), boolText(loop)},
        {QStringLiteral("shuffleEnabled"), boolText(shuffle)},
        {QStringLiteral("transitionType"), transitionType},
        {QStringLiteral("crossfadeDuration"), decimalText(crossfadeDuration)},
        {QStringLiteral("displayMode"), gridOptionLabel(gridOptionFromRaw(displayModeRaw))},
        {QStringLiteral("liveMode"), boolText(liveMode)},
        {QStringLiteral("audioEnabled"), boolText(audioTracks > 0)},
        {QStringLiteral("audioTracksCount"), QString::number(audioTracks)},
        {QStringLiteral("overlayEnabled"), boolText(overlayEnabled)},
    };
}

QString decimalText(double value)
{
    QString text = QString::number(value, 'g', QLocale::FloatingPointShortest);
    if (!text.contains(QLatin1Char('.')) && !text.contains(QLatin1Char('e')) && !text.contains(QLatin1Char('n')))
        text += QStringLiteral(".0");
    return text;
}

} // namespace tb
