#pragma once

#include <QtGlobal>

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace tb {

// QImage's 32-bit formats are 0xAARRGGBB words, so their byte order follows the machine's: the
// FFmpeg pixel format that reads a QImage's bits as they lie.
inline constexpr AVPixelFormat qtPixelLayout = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? AV_PIX_FMT_BGRA : AV_PIX_FMT_ARGB;

} // namespace tb
