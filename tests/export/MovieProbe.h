#pragma once

// What a test can find in a written movie, read back with FFmpeg, and a file-size limit that
// makes a disk fill up part way through a write.

#include <QByteArray>
#include <QFile>
#include <QString>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <vector>

#include <sys/resource.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace tb::test {

// Lets this process's files grow only so far; a write past it fails with EFBIG (SIGXFSZ, which
// would end the process, is ignored while the limit holds).
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &previous);
        previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = previous;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &previous);
        std::signal(SIGXFSZ, previousHandler);
    }

private:
    rlimit previous{};
    void (*previousHandler)(int) = nullptr;
};

// What a player would find in the file: each stream as the container describes it, and as its
// decoder sees it.
struct StreamFacts {
    AVCodecID codec = AV_CODEC_ID_NONE;
    int profile = 0;
    uint32_t tag = 0;
    int width = 0;
    int height = 0;
    int sampleRate = 0;
    int channels = 0;
    int64_t frameCount = 0;
    double duration = 0;
    AVColorSpace colourSpace = AVCOL_SPC_UNSPECIFIED;
    int decodedFrames = 0;                   // pictures, or samples per channel
    std::vector<std::pair<int, int>> chroma; // U and V at the centre of each picture
    double rms = 0;                          // of the sound's first channel
    std::vector<int64_t> keyframes;          // frame numbers (presentation times in frames)
};

inline std::vector<StreamFacts> probe(const QString& path)
{
    std::vector<StreamFacts> facts;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.toUtf8().constData(), nullptr, nullptr) < 0)
        return facts;
    avformat_find_stream_info(format, nullptr);
    std::vector<AVCodecContext*> decoders;
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        const AVStream* stream = format->streams[i];
        const AVCodecParameters* p = stream->codecpar;
        StreamFacts& f = facts.emplace_back();
        f.codec = p->codec_id;
        f.profile = p->profile;
        f.tag = p->codec_tag;
        f.width = p->width;
        f.height = p->height;
        f.sampleRate = p->sample_rate;
        f.channels = p->ch_layout.nb_channels;
        f.frameCount = stream->nb_frames;
        f.duration = double(stream->duration) * av_q2d(stream->time_base);
        f.colourSpace = p->color_space;
        AVCodecContext* decoder = avcodec_alloc_context3(avcodec_find_decoder(p->codec_id));
        avcodec_parameters_to_context(decoder, p);
        avcodec_open2(decoder, decoder->codec, nullptr);
        decoders.push_back(decoder);
    }
    std::vector<double> squares(facts.size());
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    const auto receive = [&](size_t index) {
        StreamFacts& f = facts[index];
        while (avcodec_receive_frame(decoders[index], frame) >= 0) {
            if (f.width > 0) {
                ++f.decodedFrames;
                const int offset = frame->height / 4 * frame->linesize[1] + frame->width / 4;
                f.chroma.emplace_back(frame->data[1][offset], frame->data[2][offset]);
            } else {
                f.decodedFrames += frame->nb_samples;
                const auto* left = reinterpret_cast<const float*>(frame->data[0]);
                for (int s = 0; s < frame->nb_samples; ++s)
                    squares[index] += double(left[s]) * left[s];
            }
        }
    };
    while (av_read_frame(format, packet) >= 0) {
        const AVStream* stream = format->streams[packet->stream_index];
        if ((packet->flags & AV_PKT_FLAG_KEY) && stream->codecpar->width > 0)
            facts[size_t(packet->stream_index)].keyframes.push_back(
                av_rescale_q(packet->pts - std::max<int64_t>(stream->start_time, 0), stream->time_base,
                             av_inv_q(stream->avg_frame_rate)));
        avcodec_send_packet(decoders[size_t(packet->stream_index)], packet);
        receive(size_t(packet->stream_index));
        av_packet_unref(packet);
    }
    for (size_t i = 0; i < facts.size(); ++i) {
        avcodec_send_packet(decoders[i], nullptr);
        receive(i);
        if (facts[i].width == 0 && facts[i].decodedFrames > 0)
            facts[i].rms = std::sqrt(squares[i] / facts[i].decodedFrames);
        avcodec_free_context(&decoders[i]);
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avformat_close_input(&format);
    return facts;
}

// A mono 16-bit WAV at 22,050 Hz of the given values (-1 to 1).
inline void writeMonoWav(const QString& path, const std::vector<double>& values)
{
    QByteArray pcm;
    for (double v : values) {
        const auto value = qint16(std::lround(v * 32767));
        pcm.append(reinterpret_cast<const char*>(&value), 2);
    }
    QByteArray wav("RIFF");
    const auto u32 = [&wav](quint32 v) { wav.append(reinterpret_cast<const char*>(&v), 4); };
    const auto u16 = [&wav](quint16 v) { wav.append(reinterpret_cast<const char*>(&v), 2); };
    u32(quint32(36 + pcm.size()));
    wav.append("WAVEfmt ");
    u32(16), u16(1), u16(1), u32(22050), u32(22050 * 2), u16(2), u16(16);
    wav.append("data");
    u32(quint32(pcm.size()));
    wav.append(pcm);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(wav);
}

// `seconds` of a 440 Hz tone at half scale.
inline void writeTone(const QString& path, double seconds)
{
    std::vector<double> values(size_t(seconds * 22050));
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = 0.5 * std::sin(2 * M_PI * 440.0 * double(i) / 22050);
    writeMonoWav(path, values);
}

} // namespace tb::test
