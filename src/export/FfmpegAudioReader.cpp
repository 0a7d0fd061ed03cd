#include "FfmpegAudioReader.h"

#include "core/Logger.h"
#include "media/ClipProbe.h"
#include "media/FfmpegHandles.h"

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

namespace tb {

namespace {

struct ResamplerFreer {
    void operator()(SwrContext* context) const { swr_free(&context); }
};

using Samples = std::vector<float>;

// Keeps the converted values from the span's start on, up to its length.
class SpanCollector {
public:
    SpanCollector(qint64 firstFrame, size_t wanted) : firstFrame(firstFrame), wanted(wanted) { values.reserve(wanted); }

    // `frames` converted frames whose first stands at `at` (in frames from the file's start).
    void take(const float* converted, int frames, qint64 at)
    {
        const qint64 skip = std::max<qint64>(0, firstFrame - at);
        if (skip >= frames)
            return;
        const size_t from = size_t(skip) * AudioPipeline::channels;
        const size_t count = std::min(size_t(frames) * AudioPipeline::channels - from, wanted - values.size());
        values.insert(values.end(), converted + from, converted + from + count);
    }
    bool full() const { return values.size() >= wanted; }
    Samples finish()
    {
        values.resize(wanted, 0.0f);
        return std::move(values);
    }

private:
    qint64 firstFrame;
    size_t wanted;
    Samples values;
};

} // namespace

AudioRead FfmpegAudioReader::read(const AudioTrack& track, double start, double duration)
{
    quietFFmpeg();
    const QByteArray path = track.url.toLocalFile().toUtf8();
    AVFormatContext* opened = nullptr;
    int status = avformat_open_input(&opened, path.constData(), nullptr, nullptr);
    if (status < 0)
        return {
            std::nullopt,
            QStringLiteral("The audio file %1 could not be opened: %2").arg(track.filename, ffmpegErrorText(status))};
    std::unique_ptr<AVFormatContext, FormatCloser> format(opened);
    const AVCodec* decoder = nullptr;
    if (avformat_find_stream_info(format.get(), nullptr) < 0 ||
        (status = av_find_best_stream(format.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0)) < 0 || !decoder) {
        logError(QStringLiteral("No audio track found in file: ") + track.filename);
        return {};
    }
    AVStream* stream = format->streams[status];
    const auto failedToStart = [&track] {
        logError(QStringLiteral("Failed to start reading audio from: ") + track.filename);
        return AudioRead{};
    };

    std::unique_ptr<AVCodecContext, CodecFreer> codec(avcodec_alloc_context3(decoder));
    if (!codec || avcodec_parameters_to_context(codec.get(), stream->codecpar) < 0 ||
        avcodec_open2(codec.get(), decoder, nullptr) < 0)
        return failedToStart();
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    SwrContext* made = nullptr;
    if (swr_alloc_set_opts2(&made, &stereo, AV_SAMPLE_FMT_FLT, AudioPipeline::sampleRate, &codec->ch_layout,
                            codec->sample_fmt, codec->sample_rate, 0, nullptr) < 0)
        return failedToStart();
    std::unique_ptr<SwrContext, ResamplerFreer> resampler(made);
    // Mono counts as a centre channel, which the resampler sends to both sides 3 dB down; a
    // mono recording should sound as loud on both sides as it is.
    static constexpr double bothSides[2] = {1.0, 1.0};
    if (codec->ch_layout.nb_channels == 1 && swr_set_matrix(resampler.get(), bothSides, 1) < 0)
        return failedToStart();
    if (swr_init(resampler.get()) < 0)
        return failedToStart();
    if (start > 0) {
        const auto target = qint64(start * AV_TIME_BASE);
        if (avformat_seek_file(format.get(), -1, INT64_MIN, target, target, 0) < 0)
            return failedToStart();
    }

    const auto firstFrame = qint64(start * AudioPipeline::sampleRate);
    SpanCollector span(firstFrame, size_t(qint64(duration * AudioPipeline::sampleRate)) * AudioPipeline::channels);
    std::unique_ptr<AVPacket, PacketFreer> packet(av_packet_alloc());
    std::unique_ptr<AVFrame, FrameFreer> frame(av_frame_alloc());
    std::vector<float> converted;
    std::optional<qint64> outputAt; // where the next converted frame stands, in frames
    const auto convert = [&](const AVFrame* input) {
        if (!outputAt) {
            const qint64 pts =
                input && input->best_effort_timestamp != AV_NOPTS_VALUE ? input->best_effort_timestamp : 0;
            outputAt = av_rescale_q(pts, stream->time_base, AVRational{1, AudioPipeline::sampleRate});
        }
        const int room = swr_get_out_samples(resampler.get(), input ? input->nb_samples : 0);
        if (room <= 0)
            return;
        converted.resize(size_t(room) * AudioPipeline::channels);
        auto* out = reinterpret_cast<uint8_t*>(converted.data());
        const int frames = swr_convert(resampler.get(), &out, room,
                                       input ? const_cast<const uint8_t**>(input->extended_data) : nullptr,
                                       input ? input->nb_samples : 0);
        if (frames <= 0)
            return;
        span.take(converted.data(), frames, *outputAt);
        *outputAt += frames;
    };
    bool draining = false;
    while (!span.full() && !cancelRequested) {
        if (!draining) {
            status = av_read_frame(format.get(), packet.get());
            if (status < 0) {
                draining = true;
                avcodec_send_packet(codec.get(), nullptr);
            } else {
                if (packet->stream_index == stream->index)
                    avcodec_send_packet(codec.get(), packet.get());
                av_packet_unref(packet.get());
            }
        }
        while ((status = avcodec_receive_frame(codec.get(), frame.get())) >= 0) {
            convert(frame.get());
            av_frame_unref(frame.get());
        }
        if (draining)
            break; // every frame the decoder held has come out
    }
    if (!span.full())
        convert(nullptr); // what the resampler still holds
    return {span.finish(), std::nullopt};
}

} // namespace tb
