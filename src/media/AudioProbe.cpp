#include "AudioProbe.h"

#include "ClipProbe.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace tb {

QString audioOpenError(const QString& filePath)
{
    const QByteArray path = filePath.toUtf8();
    if (access(path.constData(), R_OK) != 0)
        return QStringLiteral("The file “%1” couldn’t be opened: %2")
            .arg(filePath, QString::fromLocal8Bit(std::strerror(errno)));
    quietFFmpeg();
    AVFormatContext* format = nullptr;
    int status = avformat_open_input(&format, path.constData(), nullptr, nullptr);
    if (status < 0)
        return QStringLiteral("The file “%1” is not in a known audio format (%2)")
            .arg(filePath, ffmpegErrorText(status));
    QString error;
    const AVCodec* decoder = nullptr;
    status = avformat_find_stream_info(format, nullptr);
    if (status >= 0)
        status = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0);
    if (status == AVERROR_STREAM_NOT_FOUND)
        error = QStringLiteral("The file “%1” holds no audio").arg(filePath);
    else if (status == AVERROR_DECODER_NOT_FOUND || (status >= 0 && !decoder))
        error = QStringLiteral("The audio of “%1” is in a format that cannot be decoded").arg(filePath);
    else if (status < 0)
        error = QStringLiteral("The file “%1” cannot be read as audio (%2)").arg(filePath, ffmpegErrorText(status));
    avformat_close_input(&format);
    return error;
}

} // namespace tb
