#include "ExportPlan.h"

#include "core/RandomSource.h"

#include <algorithm>
#include <cmath>

namespace tb {

QString containerFormatRaw(ContainerFormat format)
{
    return format == ContainerFormat::mov ? QStringLiteral("mov") : QStringLiteral("mp4");
}

QString videoResolutionLabel(VideoResolution resolution)
{
    switch (resolution) {
    case VideoResolution::hd:
        return QStringLiteral("1280x720 (HD)");
    case VideoResolution::fullHD:
        return QStringLiteral("1920x1080 (FullHD)");
    case VideoResolution::fourK:
        return QStringLiteral("3840x2160 (4K)");
    }
    return {};
}

QSize videoResolutionSize(VideoResolution resolution)
{
    switch (resolution) {
    case VideoResolution::hd:
        return {1280, 720};
    case VideoResolution::fullHD:
        return {1920, 1080};
    case VideoResolution::fourK:
        return {3840, 2160};
    }
    return {};
}

FramePlan::FramePlan(int imageCount, double delay, TransitionType type)
    : imageCount(imageCount),
      delay(delay),
      transitionDuration(type == TransitionType::none ? 0.0 : movieTransition),
      soloDuration(std::max(delay - transitionDuration, 0.1)),
      soloFrames(int(soloDuration * frameRate)),
      transitionFrames(int(transitionDuration * frameRate)),
      totalFrames(imageCount * soloFrames + std::max(imageCount - 1, 0) * transitionFrames),
      videoDuration(imageCount < 1 ? 0.0 : soloDuration * imageCount + transitionDuration * (imageCount - 1))
{
}

std::vector<FrameSpan> FramePlan::soloSpans() const
{
    std::vector<FrameSpan> spans;
    spans.reserve(size_t(std::max(imageCount, 0)));
    for (int i = 0; i < imageCount; ++i)
        spans.push_back({qint64(i) * (soloFrames + transitionFrames), soloFrames});
    return spans;
}

QString formatDuration(double seconds)
{
    const auto total = qint64(std::round(seconds));
    const qint64 h = total / 3600;
    const qint64 m = total % 3600 / 60;
    const qint64 s = total % 60;
    if (total < 60)
        return QStringLiteral("%1s").arg(total);
    if (total < 3600)
        return s == 0 ? QStringLiteral("%1m").arg(m) : QStringLiteral("%1m %2s").arg(m).arg(s);
    if (m == 0 && s == 0)
        return QStringLiteral("%1h").arg(h);
    if (s == 0)
        return QStringLiteral("%1h %2m").arg(h).arg(m);
    return QStringLiteral("%1h %2m %3s").arg(h).arg(m).arg(s);
}

QList<IdentifiableImage> includedImages(const QList<IdentifiableImage>& queue)
{
    QList<IdentifiableImage> included;
    std::copy_if(queue.cbegin(), queue.cend(), std::back_inserter(included),
                 [](const IdentifiableImage& item) { return !item.isVideo(); });
    return included;
}

QString exportWarning(int includedCount, int skippedCount)
{
    if (includedCount == 0)
        return QStringLiteral("Cannot export — no images to include. Videos are not yet supported.");
    if (skippedCount > 0)
        return QStringLiteral("%1 video%2 will be skipped — only images can be exported.")
            .arg(skippedCount)
            .arg(skippedCount == 1 ? QString() : QStringLiteral("s"));
    return {};
}

QString exportAudioLine(const QList<AudioTrack>& tracks, bool isLooping)
{
    if (tracks.isEmpty())
        return QStringLiteral("Audio: no tracks added");
    double total = 0.0;
    for (const AudioTrack& track : tracks)
        total += track.duration.value_or(0.0);
    const QString count =
        tracks.size() == 1 ? QStringLiteral("1 track") : QStringLiteral("%1 tracks").arg(tracks.size());
    return QStringLiteral("Audio: ") + count + QStringLiteral(" • ") + QString::asprintf("%.1f", total) +
           QStringLiteral("s") + (isLooping ? QStringLiteral(" • Looping ON") : QString());
}

QList<IdentifiableImage> makeExportOrder(QList<IdentifiableImage> included, bool shuffle, RandomSource& random,
                                         const std::optional<QUuid>& startingImageId)
{
    if (shuffle)
        random.shuffle(included);
    if (startingImageId) {
        const auto at = std::find_if(included.begin(), included.end(),
                                     [&](const IdentifiableImage& item) { return item.id() == *startingImageId; });
        if (at != included.end())
            std::rotate(included.begin(), at, at + 1);
    }
    return included;
}

} // namespace tb
