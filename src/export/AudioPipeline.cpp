#include "AudioPipeline.h"

#include "core/Logger.h"

#include <algorithm>

namespace tb::AudioPipeline {

namespace {

const char* yesNo(bool value) { return value ? "true" : "false"; }

} // namespace

std::optional<QString> processAudio(const QList<AudioTrack>& tracks, bool isLooping, double videoDuration,
                                    AudioSpanReader& reader, const ChunkSink& sink,
                                    const std::atomic_bool& cancelRequested)
{
    if (tracks.isEmpty())
        return std::nullopt;
    const auto frames = qint64(videoDuration * sampleRate);
    logInfo(QStringLiteral("Audio processing: %1 samples needed for %2s video")
                .arg(frames)
                .arg(QString::asprintf("%.2f", videoDuration)));
    std::vector<float> buffer;
    buffer.reserve(size_t(frames) * channels);

    double processed = 0.0;
    double position = 0.0;
    qsizetype index = 0;
    int cycles = 0;
    double processedAtCycleStart = 0.0;
    while (videoDuration > 0) {
        if (cancelRequested)
            break;
        const AudioTrack& track = tracks[index];
        const double length = track.duration.value_or(0.0);
        const double take = std::min(length - position, videoDuration - processed);
        if (take > 0) {
            AudioRead read = reader.read(track, position, take);
            if (read.failure)
                return read.failure;
            if (read.samples)
                buffer.insert(buffer.end(), read.samples->begin(), read.samples->end());
            // A span read as nothing still takes its time: what follows keeps its place.
            processed += take;
            position += take;
        }
        if (position >= length) {
            position = 0.0;
            if (++index == tracks.size()) {
                index = 0;
                ++cycles;
                if (processed >= videoDuration || !isLooping)
                    break;
                // A looping list with no length would otherwise go round for ever.
                if (processed <= processedAtCycleStart) {
                    logWarning(QStringLiteral("Audio looping stopped: the playlist has no length to repeat"));
                    break;
                }
                processedAtCycleStart = processed;
                logInfo(QStringLiteral("Audio looping: starting playlist cycle %1").arg(cycles + 1));
            }
        }
        if (processed >= videoDuration)
            break;
    }
    if (processed < videoDuration)
        logInfo(QStringLiteral("Audio processing complete: %1 playlist cycles, filled %2s of %3s")
                    .arg(cycles)
                    .arg(QString::asprintf("%.2f", processed), QString::asprintf("%.2f", videoDuration)));

    buffer.resize(size_t(frames) * channels, 0.0f);
    logInfo(QStringLiteral("Final audio buffer: %1 samples (%2s)")
                .arg(buffer.size())
                .arg(QString::asprintf("%.2f", double(buffer.size()) / chunkValues)));

    size_t offset = 0;
    qint64 time = 0; // in frames
    if (!buffer.empty() && !cancelRequested) {
        while (true) {
            const size_t count = std::min(size_t(chunkValues), buffer.size() - offset);
            const int chunkFrames = int(count / channels);
            if (!sink(buffer.data() + offset, chunkFrames, time))
                break;
            const bool last = offset + count >= buffer.size();
            if ((time / sampleRate) % 10 == 0 || last)
                logInfo(QStringLiteral("Appended audio chunk: %1 samples at time %2s")
                            .arg(count)
                            .arg(QString::asprintf("%.2f", double(time) / sampleRate)));
            time += chunkFrames;
            offset += count;
            if (last || cancelRequested)
                break;
        }
    }
    logInfo(QStringLiteral("Audio processing finished: %1 samples written").arg(offset));
    logInfo(QStringLiteral("Audio export summary: %1 tracks, %2s duration, looping: %3")
                .arg(tracks.size())
                .arg(QString::asprintf("%.2f", videoDuration), QLatin1String(yesNo(isLooping))));
    return std::nullopt;
}

} // namespace tb::AudioPipeline
