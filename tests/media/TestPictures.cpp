#include "TestPictures.h"

#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QPainter>

#include <jxl/encode.h>
#include <jxl/encode_cxx.h>
#include <libheif/heif.h>

#include <vector>

namespace tb::test {

QImage twoColourPicture(int width, int height)
{
    QImage picture(width, height, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.fillRect(0, 0, width / 2, height, Qt::red);
    painter.fillRect(width / 2, 0, width - width / 2, height, Qt::blue);
    return picture;
}

namespace {

bool writeHeif(const QImage& picture, const QString& path, heif_compression_format compression)
{
    if (!heif_have_encoder_for_format(compression))
        return false;
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB888);
    heif_context* context = heif_context_alloc();
    heif_encoder* encoder = nullptr;
    heif_image* image = nullptr;
    bool ok =
        heif_context_get_encoder_for_format(context, compression, &encoder).code == heif_error_Ok &&
        heif_image_create(rgb.width(), rgb.height(), heif_colorspace_RGB, heif_chroma_interleaved_RGB, &image).code ==
            heif_error_Ok &&
        heif_image_add_plane(image, heif_channel_interleaved, rgb.width(), rgb.height(), 8).code == heif_error_Ok;
    if (ok) {
        heif_encoder_set_lossy_quality(encoder, 95);
        int stride = 0;
        uint8_t* plane = heif_image_get_plane(image, heif_channel_interleaved, &stride);
        for (int y = 0; y < rgb.height(); ++y)
            memcpy(plane + y * stride, rgb.constScanLine(y), size_t(rgb.width() * 3));
        ok = heif_context_encode_image(context, image, encoder, nullptr, nullptr).code == heif_error_Ok &&
             heif_context_write_to_file(context, QFile::encodeName(path).constData()).code == heif_error_Ok;
    }
    if (image)
        heif_image_release(image);
    if (encoder)
        heif_encoder_release(encoder);
    heif_context_free(context);
    return ok;
}

bool writeJxl(const QImage& picture, const QString& path)
{
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB888);
    JxlEncoderPtr encoder = JxlEncoderMake(nullptr);
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = uint32_t(rgb.width());
    info.ysize = uint32_t(rgb.height());
    info.bits_per_sample = 8;
    info.num_color_channels = 3;
    info.uses_original_profile = JXL_FALSE;
    JxlColorEncoding colour;
    JxlColorEncodingSetToSRGB(&colour, JXL_FALSE);
    if (JxlEncoderSetBasicInfo(encoder.get(), &info) != JXL_ENC_SUCCESS ||
        JxlEncoderSetColorEncoding(encoder.get(), &colour) != JXL_ENC_SUCCESS)
        return false;
    std::vector<uint8_t> pixels;
    for (int y = 0; y < rgb.height(); ++y)
        pixels.insert(pixels.end(), rgb.constScanLine(y), rgb.constScanLine(y) + rgb.width() * 3);
    const JxlPixelFormat format{3, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
    JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
    if (JxlEncoderAddImageFrame(settings, &format, pixels.data(), pixels.size()) != JXL_ENC_SUCCESS)
        return false;
    JxlEncoderCloseInput(encoder.get());

    std::vector<uint8_t> out(4096);
    uint8_t* next = out.data();
    size_t available = out.size();
    for (;;) {
        const JxlEncoderStatus status = JxlEncoderProcessOutput(encoder.get(), &next, &available);
        if (status == JXL_ENC_SUCCESS)
            break;
        if (status != JXL_ENC_NEED_MORE_OUTPUT)
            return false;
        const size_t used = size_t(next - out.data());
        out.resize(out.size() * 2);
        next = out.data() + used;
        available = out.size() - used;
    }
    out.resize(size_t(next - out.data()));
    QFile file(path);
    return file.open(QIODevice::WriteOnly) &&
           file.write(reinterpret_cast<const char*>(out.data()), qint64(out.size())) == qint64(out.size());
}

} // namespace

bool writePicture(const QImage& picture, const QString& path)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    if (extension == QLatin1String("heic"))
        return writeHeif(picture, path, heif_compression_HEVC);
    if (extension == QLatin1String("avif"))
        return writeHeif(picture, path, heif_compression_AV1);
    if (extension == QLatin1String("jxl"))
        return writeJxl(picture, path);
    if (extension == QLatin1String("gif"))
        return QFile::copy(gifFixture(), path);
    QImageWriter writer(path, extension == QLatin1String("jpg") ? QByteArray("jpeg") : extension.toLatin1());
    writer.setQuality(95);
    return writer.write(picture);
}

QString gifFixture() { return QStringLiteral(TALLOWBROOK_FIXTURES "/two-frames.gif"); }

} // namespace tb::test
