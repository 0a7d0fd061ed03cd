#pragma once

#include "audio/AudioTrack.h"

#include <QList>
#include <QString>

#include <atomic>
#include <functional>
#include <optional>
#include <vector>

namespace tb {

// What a span of one playlist file reads as.
struct AudioRead {
    // Interleaved stereo floats at 44.1 kHz, exactly the span's length; nothing when the file
    // holds no audio to read (logged), which costs the span's time as silence.
    std::optional<std::vector<float>> samples;
    // The file could not be opened at all: the export ends with this.
    std::optional<QString> failure;
};

class AudioSpanReader {
public:
    virtual ~AudioSpanReader() = default;
    // Reads `duration` seconds of the track from `start`, giving up early (padded) on a cancel.
    virtual AudioRead read(const AudioTrack& track, double start, double duration) = 0;
};

// The movie's sound track: the playlist laid end to end from its start, repeated while it loops,
// cut at the end of the video or followed by silence, with no fades; handed on in one-second
// chunks with their start in frames of 1/44100 s. The whole track is made before the first
// chunk goes out.
namespace AudioPipeline {

constexpr int sampleRate = 44100;
constexpr int channels = 2;
constexpr int chunkValues = sampleRate * channels;

// Takes a chunk: interleaved values, their number of frames, the first frame's time. False stops
// the feed (the writer failed; it says why at its end).
using ChunkSink = std::function<bool(const float* values, int frames, qint64 startFrame)>;

// Returns the failure that ends the export, if any. A cancel stops the reading and skips the
// feed without a failure; the caller sees the cancel itself.
std::optional<QString> processAudio(const QList<AudioTrack>& tracks, bool isLooping, double videoDuration,
                                    AudioSpanReader& reader, const ChunkSink& sink,
                                    const std::atomic_bool& cancelRequested);

} // namespace AudioPipeline

} // namespace tb
