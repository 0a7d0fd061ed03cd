#include "JxlHandler.h"

#include "ContainerColour.h"
#include "DecodeLimits.h"

#include <QIODevice>
#include <QImage>

#include <jxl/decode.h>
#include <jxl/decode_cxx.h>

namespace tb {

namespace {

bool oriented90(JxlOrientation orientation) { return orientation > JXL_ORIENT_ROTATE_180; }

QColorSpace fromEncoding(const JxlColorEncoding& encoding, const QString& fileName)
{
    // Grey pictures come out as RGB; only their curve matters.
    if (encoding.color_space == JXL_COLOR_SPACE_GRAY)
        return ContainerColour::withTransfer(QColorSpace(QColorSpace::SRgb), int(encoding.transfer_function),
                                             encoding.gamma, fileName);
    QPointF white(0.3127, 0.3290);
    switch (encoding.white_point) {
    case JXL_WHITE_POINT_D65:
        break;
    case JXL_WHITE_POINT_E:
        white = QPointF(1.0 / 3.0, 1.0 / 3.0);
        break;
    case JXL_WHITE_POINT_DCI:
        white = QPointF(0.314, 0.351);
        break;
    case JXL_WHITE_POINT_CUSTOM:
        white = QPointF(encoding.white_point_xy[0], encoding.white_point_xy[1]);
        break;
    }
    QPointF red(0.64, 0.33), green(0.30, 0.60), blue(0.15, 0.06);
    switch (encoding.primaries) {
    case JXL_PRIMARIES_SRGB:
        break;
    case JXL_PRIMARIES_P3:
        red = QPointF(0.680, 0.320), green = QPointF(0.265, 0.690), blue = QPointF(0.150, 0.060);
        break;
    case JXL_PRIMARIES_2100:
        red = QPointF(0.708, 0.292), green = QPointF(0.170, 0.797), blue = QPointF(0.131, 0.046);
        break;
    case JXL_PRIMARIES_CUSTOM:
        red = QPointF(encoding.primaries_red_xy[0], encoding.primaries_red_xy[1]);
        green = QPointF(encoding.primaries_green_xy[0], encoding.primaries_green_xy[1]);
        blue = QPointF(encoding.primaries_blue_xy[0], encoding.primaries_blue_xy[1]);
        break;
    }
    QColorSpace primaries(white, red, green, blue, QColorSpace::TransferFunction::SRgb);
    if (!primaries.isValid())
        primaries = QColorSpace(QColorSpace::SRgb);
    return ContainerColour::withTransfer(primaries, int(encoding.transfer_function), encoding.gamma, fileName);
}

// The colours of the pixels the decoder hands out (for XYB pictures libjxl turns them into the
// original colours first): the encoded description when there is one, else the ICC profile.
QColorSpace decodedColour(JxlDecoder* decoder, const QString& fileName)
{
    // libjxl leaves the fields a grey picture does without untouched.
    JxlColorEncoding encoding{};
    if (JxlDecoderGetColorAsEncodedProfile(decoder, nullptr, JXL_COLOR_PROFILE_TARGET_DATA, &encoding) ==
        JXL_DEC_SUCCESS)
        return fromEncoding(encoding, fileName);
    size_t size = 0;
    if (JxlDecoderGetICCProfileSize(decoder, nullptr, JXL_COLOR_PROFILE_TARGET_DATA, &size) != JXL_DEC_SUCCESS ||
        size == 0)
        return {};
    QByteArray profile(qsizetype(size), Qt::Uninitialized);
    if (JxlDecoderGetColorAsICCProfile(decoder, nullptr, JXL_COLOR_PROFILE_TARGET_DATA,
                                       reinterpret_cast<uint8_t*>(profile.data()), size) != JXL_DEC_SUCCESS)
        return {};
    return ContainerColour::fromIccProfile(profile, fileName);
}

// Runs the decoder over the whole file. With `image` null it stops at the header.
bool run(const QByteArray& data, QSize* size, QImage* image, const QString& fileName = {})
{
    JxlDecoderPtr decoder = JxlDecoderMake(nullptr);
    if (!decoder)
        return false;
    const int events = JXL_DEC_BASIC_INFO | (image ? JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE : 0);
    if (JxlDecoderSubscribeEvents(decoder.get(), events) != JXL_DEC_SUCCESS ||
        JxlDecoderSetInput(decoder.get(), reinterpret_cast<const uint8_t*>(data.constData()), size_t(data.size())) !=
            JXL_DEC_SUCCESS)
        return false;
    JxlDecoderCloseInput(decoder.get());

    const JxlPixelFormat format{4, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
    QImage output;
    QColorSpace colour;
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
        case JXL_DEC_COLOR_ENCODING:
            colour = decodedColour(decoder.get(), fileName);
            break;
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
            output.setColorSpace(colour);
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
    return run(data, nullptr, &decoded, fileName()) ? decoded : QImage();
}

QSize JxlHandler::headerSize(const QByteArray& data) const
{
    QSize size;
    return run(data, &size, nullptr) ? size : QSize();
}

} // namespace tb
