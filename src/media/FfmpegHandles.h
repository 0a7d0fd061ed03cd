#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace tb {

// Owners of FFmpeg's objects, so every early return frees what was opened.
struct FormatCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct CodecFreer {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFreer {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFreer {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

using FormatHandle = std::unique_ptr<AVFormatContext, FormatCloser>;
using CodecHandle = std::unique_ptr<AVCodecContext, CodecFreer>;
using FrameHandle = std::unique_ptr<AVFrame, FrameFreer>;
using PacketHandle = std::unique_ptr<AVPacket, PacketFreer>;

} // namespace tb
