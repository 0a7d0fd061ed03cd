#include "VideoThumbnailGenerator.h"

#include "ClipProbe.h"
#include "FfmpegHandles.h"
#include "core/Logger.h"

#include <QFileInfo>
#include <QTransform>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include <cmath>
#include <memory>

namespace tb {

namespace {

struct ScalerFreer {
    void operator()(SwsContext* s) const { sws_freeContext(s); }
};

// The clip's turn in degrees clockwise, from its display matrix.
int rotationOf(const AVStream* stream)
{
    const AVPacketSideData* side = nullptr;
    for (int i = 0; i < stream->nb_side_data; ++i)
        if (stream->side_data[i].type == AV_PKT_DATA_DISPLAYMATRIX)
            side = &stream->side_data[i];
    if (!side || side->size < 9 * 4)
        return 0;
    const double angle = av_display_rotation_get(reinterpret_cast<const int32_t*>(side->data));
    if (std::isnan(angle))
        return 0;
    // av_display_rotation_get gives counter-clockwise degrees.
    return ((int(std::lround(-angle)) % 360) + 360) % 360;
}

} // namespace

std::variant<QImage, QString> firstVideoFrame(const QString& path, int maximumSide)
{
    quietFFmpeg();
    AVFormatContext* rawFormat = nullptr;
    if (const int error = avformat_open_input(&rawFormat, path.toUtf8().constData(), nullptr, nullptr); error < 0)
        return ffmpegErrorText(error);
    std::unique_ptr<AVFormatContext, FormatCloser> format(rawFormat);
    if (const int error = avformat_find_stream_info(format.get(), nullptr); error < 0)
        return ffmpegErrorText(error);
    const AVCodec* codec = nullptr;
    const int streamIndex = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (streamIndex < 0 || !codec)
        return QStringLiteral("The file has no video track.");
    AVStream* stream = format->streams[streamIndex];

    std::unique_ptr<AVCodecContext, CodecFreer> decoder(avcodec_alloc_context3(codec));
    if (!decoder || avcodec_parameters_to_context(decoder.get(), stream->codecpar) < 0)
        return QStringLiteral("The video track cannot be decoded.");
    if (const int error = avcodec_open2(decoder.get(), codec, nullptr); error < 0)
        return ffmpegErrorText(error);

    std::unique_ptr<AVPacket, PacketFreer> packet(av_packet_alloc());
    std::unique_ptr<AVFrame, FrameFreer> frame(av_frame_alloc());
    bool haveFrame = false;
    int status = 0;
    while (!haveFrame && (status = av_read_frame(format.get(), packet.get())) >= 0) {
        if (packet->stream_index == streamIndex && avcodec_send_packet(decoder.get(), packet.get()) >= 0)
            haveFrame = avcodec_receive_frame(decoder.get(), frame.get()) >= 0;
        av_packet_unref(packet.get());
    }
    if (!haveFrame) {
        // Decoders that hold frames back give them up at the end of the input.
        avcodec_send_packet(decoder.get(), nullptr);
        haveFrame = avcodec_receive_frame(decoder.get(), frame.get()) >= 0;
    }
    if (!haveFrame || frame->width <= 0 || frame->height <= 0)
        return status < 0 && status != AVERROR_EOF ? ffmpegErrorText(status)
                                                   : QStringLiteral("No frame could be decoded.");

    // Scale while converting, to the size that fits once the clip is turned upright.
    const int rotation = rotationOf(stream);
    QSize upright(frame->width, frame->height);
    if (rotation == 90 || rotation == 270)
        upright.transpose();
    QSize target = upright;
    if (std::max(upright.width(), upright.height()) > maximumSide)
        target = upright.scaled(maximumSide, maximumSide, Qt::KeepAspectRatio);
    if (rotation == 90 || rotation == 270)
        target.transpose();
    target = target.expandedTo(QSize(1, 1));

    QImage image(target, QImage::Format_RGB32);
    std::unique_ptr<SwsContext, ScalerFreer> scaler(
        sws_getContext(frame->width, frame->height, AVPixelFormat(frame->format), target.width(), target.height(),
                       AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!scaler || image.isNull())
        return QStringLiteral("The frame cannot be converted.");
    uint8_t* planes[4] = {image.bits(), nullptr, nullptr, nullptr};
    int strides[4] = {int(image.bytesPerLine()), 0, 0, 0};
    sws_scale(scaler.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
    if (rotation != 0)
        image = image.transformed(QTransform().rotate(rotation));
    return image;
}

std::optional<QImage> VideoThumbnailGenerator::thumbnail(const QUrl& url)
{
    if (auto hit = cache.object(url))
        return hit;
    const QString path = url.toLocalFile();
    auto result = firstVideoFrame(path, maximumSide);
    if (const QString* error = std::get_if<QString>(&result)) {
        logError(
            QStringLiteral("Failed to generate video thumbnail for %1: %2").arg(QFileInfo(path).fileName(), *error));
        return std::nullopt;
    }
    const QImage frame = std::get<QImage>(result);
    cache.insert(url, frame); // stored without a cost: only the count bounds this cache
    return frame;
}

void VideoThumbnailGenerator::clearCache()
{
    cache.removeAll();
    logInfo(QStringLiteral("VideoThumbnailGenerator cache cleared"));
}

} // namespace tb
