#include "JxlHandler.h"

#include "DecodeLimits.h"

#include <QIODevice>
#include <QImage>

#include <jxl/decode.h>
#include <jxl/decode_cxx.h>

namespace tb {

namespace {

bool oriented90(JxlOrientation orientation) { return orientation > JXL_ORIENT_ROTATE_180; }

// Runs the decoder over the whole file. With `image` null it stops at the header.
bool run(const QByteArray& data, QSize* size, QImage* image)
{
    JxlDecoderPtr decoder = JxlDecoderMake(nullptr);
    if (!decoder)
        return false;
    const int events = JXL_DEC_BASIC_INFO | (image ? JXL_DEC_FULL_IMAGE : 0);
    if (JxlDecoderSubscribeEvents(decoder.get(), events) != JXL_DEC_SUCCESS ||
        JxlDecoderSetInput(decoder.get(), reinterpret_cast<const uint8_t*>(data.constData()), size_t(data.size())) !=
            JXL_DEC_SUCCESS)
        return false;
    JxlDecoderCloseInput(decoder.get());

    const JxlPixelFormat format{4, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
    QImage output;
    for (;;) {
        switch (JxlDecoderProcessInput(decoder.get())) {
        case JXL_DEC_BASIC_INFO: {
            JxlBasicInfo info;
            if (JxlDecoderGetBasicInfo(decoder.get(), &info) != JXL_DEC_SUCCESS)
                return false;
            // The decoder turns the picture upright, so a sideways one swaps its sides.
            const bool swap = oriented90(info.orientation);
            const QSize upright(int(swap ? info.ysize : info.xsize), int(swap ? info.xsize : info.ysize));
            if (!withinAllocationLimit(upright.width(), upright.height()))
                return false;
            if (size)
                *size = upright;
            if (!image)
                return true;
            break;
        }
        case JXL_DEC_NEED_IMAGE_OUT_BUFFER: {
            JxlBasicInfo info;
            size_t bytes = 0;
            if (JxlDecoderGetBasicInfo(decoder.get(), &info) != JXL_DEC_SUCCESS ||
                JxlDecoderImageOutBufferSize(decoder.get(), &format, &bytes) != JXL_DEC_SUCCESS)
                return false;
            const bool swap = oriented90(info.orientation);
            output = QImage(int(swap ? info.ysize : info.xsize), int(swap ? info.xsize : info.ysize),
                            QImage::Format_RGBA8888);
            if (output.isNull() || size_t(output.sizeInBytes()) < bytes ||
                JxlDecoderSetImageOutBuffer(decoder.get(), &format, output.bits(), bytes) != JXL_DEC_SUCCESS)
                return false;
            break;
        }
        case JXL_DEC_FULL_IMAGE:
            // The first frame of an animation is the picture.
            *image = output;
            return !output.isNull();
        case JXL_DEC_SUCCESS:
            return image && !image->isNull();
        default: // errors, and input that ends early
            return false;
        }
    }
}

} // namespace

bool JxlHandler::canRead(QIODevice* device)
{
    if (!device)
        return false;
    const QByteArray head = device->peek(16);
    const JxlSignature signature =
        JxlSignatureCheck(reinterpret_cast<const uint8_t*>(head.constData()), size_t(head.size()));
    return signature == JXL_SIG_CODESTREAM || signature == JXL_SIG_CONTAINER;
}

bool JxlHandler::canRead() const
{
    if (!canRead(device()))
        return false;
    setFormat(QByteArrayLiteral("jxl"));
    return true;
}

QImage JxlHandler::decode(const QByteArray& data, const QSize&) const
{
    QImage decoded;
    return run(data, nullptr, &decoded) ? decoded : QImage();
}

QSize JxlHandler::headerSize(const QByteArray& data) const
{
    QSize size;
    return run(data, &size, nullptr) ? size : QSize();
}

} // namespace tb
