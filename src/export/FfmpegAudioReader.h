#pragma once

#include "AudioPipeline.h"

namespace tb {

// Decodes a span of an audio file with FFmpeg and converts it (libswresample) to the movie's
// interleaved float stereo at 44.1 kHz. Seeks to the span's start, drops what the seek brought
// before it, and stops at its end; a file shorter than its recorded length gives silence for the
// rest, so the next track keeps its planned time.
class FfmpegAudioReader final : public AudioSpanReader {
public:
    explicit FfmpegAudioReader(const std::atomic_bool& cancelRequested) : cancelRequested(cancelRequested) {}
    AudioRead read(const AudioTrack& track, double start, double duration) override;

private:
    const std::atomic_bool& cancelRequested;
};

} // namespace tb
