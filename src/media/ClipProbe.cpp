#include "ClipProbe.h"

#include <mutex>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/error.h>
#include <libavutil/log.h>
}

namespace tb {

void quietFFmpeg()
{
    // FFmpeg writes its own complaints about odd files to the console; the program reports what
    // matters in its log.
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_FATAL); });
}

QString ffmpegErrorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

std::optional<double> clipDuration(const QString& filePath)
{
    quietFFmpeg();
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, filePath.toUtf8().constData(), nullptr, nullptr) < 0)
        return std::nullopt;
    // Containers with a proper header (mp4, mov) know their duration at once; others (some avi)
    // need a look at the streams.
    if (format->duration == AV_NOPTS_VALUE && avformat_find_stream_info(format, nullptr) < 0) {
        avformat_close_input(&format);
        return std::nullopt;
    }
    const int64_t duration = format->duration;
    avformat_close_input(&format);
    if (duration == AV_NOPTS_VALUE || duration < 0)
        return std::nullopt;
    return double(duration) / AV_TIME_BASE;
}

} // namespace tb
