#pragma once

#include "audio/AudioTrack.h"
#include "media/IdentifiableImage.h"
#include "media/MediaTypes.h"

#include <QList>
#include <QSize>
#include <QSizeF>
#include <QString>
#include <QUuid>

#include <optional>
#include <vector>

namespace tb {

class RandomSource;

// The container decides the codec: mov holds HEVC, mp4 holds H.264.
enum class ContainerFormat : int { mov = 0, mp4 = 1 };
QString containerFormatRaw(ContainerFormat format);

// The movie sizes offered; the label is what the menu shows.
enum class VideoResolution : int { hd = 0, fullHD = 1, fourK = 2 };
QString videoResolutionLabel(VideoResolution resolution);
QSize videoResolutionSize(VideoResolution resolution);

// What the export panel hands to the main window: the final list of pictures (no clips) and
// how to render them. The background colour is not here: the exporter reads it from the
// settings itself.
struct ExportSettings {
    double delay = 3.0; // seconds one picture occupies, its transition included
    TransitionType transitionType = TransitionType::none;
    bool shuffleMode = false; // informational: the list is already shuffled
    QSizeF resolution;
    QList<IdentifiableImage> images;
    ContainerFormat containerFormat = ContainerFormat::mp4;
};

// The movie's timeline. Every picture has the same solo stretch, every neighbouring pair a
// transition, and there is no hold at the end. Frame counts are truncated toward zero in
// doubles, so a delay of 1 s with a 0.8 s transition has a 0.19999999999999996 s solo of 5
// frames; the estimate the panel shows and the frames the exporter makes come from here alike.
// Frames first .. first + count - 1 of a movie.
struct FrameSpan {
    qint64 first = 0;
    qint64 count = 0;
    bool operator==(const FrameSpan&) const = default;
};

struct FramePlan {
    static constexpr int frameRate = 30;
    // The transitions of the movie are always this long, whatever the player's cross-fade.
    static constexpr double movieTransition = 0.8;

    FramePlan(int imageCount, double delay, TransitionType type);

    int imageCount;
    double delay;
    double transitionDuration; // 0 without a transition
    double soloDuration;       // never below 0.1 s
    int soloFrames;
    int transitionFrames;
    int totalFrames;
    double videoDuration; // seconds, what the sound track is cut to

    // The stretches where a picture stands alone: every picture's solo frames, one after the other
    // with the transitions between them. Unless the pictures move, each stretch repeats one frame.
    std::vector<FrameSpan> soloSpans() const;
};

// "14s", "2m", "2m 5s", "1h", "1h 5m", "1h 0m 5s": the estimate rounded to whole seconds.
QString formatDuration(double seconds);

// The queue without its clips; animated pictures stay (the movie shows their first frame).
QList<IdentifiableImage> includedImages(const QList<IdentifiableImage>& queue);
// The line under the panel's settings, empty when there is nothing to say.
QString exportWarning(int includedCount, int skippedCount);
// "Audio: no tracks added", "Audio: 2 tracks • 61.5s • Looping ON".
QString exportAudioLine(const QList<AudioTrack>& tracks, bool isLooping);

// The pictures in the movie's order: queue order, shuffled when asked, and the selected picture
// moved to the front (the others keep their order behind it).
QList<IdentifiableImage> makeExportOrder(QList<IdentifiableImage> included, bool shuffle, RandomSource& random,
                                         const std::optional<QUuid>& startingImageId);

} // namespace tb
