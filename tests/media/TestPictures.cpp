#include "TestPictures.h"

#include <QColorSpace>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QPainter>
#include <QProcess>

#include <jxl/encode.h>
#include <jxl/encode_cxx.h>
#include <libheif/heif.h>

#include <vector>

#include <gtest/gtest.h>

namespace tb::test {

QImage twoColourPicture(int width, int height)
{
    QImage picture(width, height, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.fillRect(0, 0, width / 2, height, Qt::red);
    painter.fillRect(width / 2, 0, width - width / 2, height, Qt::blue);
    return picture;
}

bool writeHeif(const QImage& picture, const QString& path, const HeifColour& colour)
{
    const heif_compression_format compression =
        QFileInfo(path).suffix().toLower() == QLatin1String("avif") ? heif_compression_AV1 : heif_compression_HEVC;
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
    if (ok && !colour.profile.isEmpty())
        ok = heif_image_set_raw_color_profile(image, "prof", colour.profile.constData(), size_t(colour.profile.size()))
                 .code == heif_error_Ok;
    if (ok && colour.primaries != 0) {
        heif_color_profile_nclx* nclx = heif_nclx_color_profile_alloc();
        heif_nclx_color_profile_set_color_primaries(nclx, uint16_t(colour.primaries));
        heif_nclx_color_profile_set_transfer_characteristics(nclx, uint16_t(colour.transfer));
        heif_nclx_color_profile_set_matrix_coefficients(nclx, heif_matrix_coefficients_ITU_R_BT_601_6);
        nclx->full_range_flag = 1;
        ok = heif_image_set_nclx_color_profile(image, nclx).code == heif_error_Ok;
        heif_nclx_color_profile_free(nclx);
    }
    if (ok) {
        heif_encoder_set_lossy_quality(encoder, 95);
        int stride = 0;
        uint8_t* plane = heif_image_get_plane(image, heif_channel_interleaved, &stride);
        for (int y = 0; y < rgb.height(); ++y)
            memcpy(plane + y * stride, rgb.constScanLine(y), size_t(rgb.width() * 3));
        // libheif leaves nclx boxes out for macOS's sake unless told otherwise.
        heif_encoding_options* options = heif_encoding_options_alloc();
        options->macOS_compatibility_workaround_no_nclx_profile = colour.primaries == 0;
        ok = heif_context_encode_image(context, image, encoder, options, nullptr).code == heif_error_Ok &&
             heif_context_write_to_file(context, QFile::encodeName(path).constData()).code == heif_error_Ok;
        heif_encoding_options_free(options);
    }
    if (image)
        heif_image_release(image);
    if (encoder)
        heif_encoder_release(encoder);
    heif_context_free(context);
    return ok;
}

namespace {

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
    JxlColorEncoding colour;
    JxlColorEncodingSetToSRGB(&colour, JXL_FALSE);
    const QColorSpace space = picture.colorSpace();
    if (space == QColorSpace(QColorSpace::DisplayP3))
        colour.primaries = JXL_PRIMARIES_P3;
    const QByteArray profile =
        space.isValid() && space != QColorSpace(QColorSpace::DisplayP3) ? space.iccProfile() : QByteArray();
    // Pixels kept in a profile's own colours need no colour engine in the encoder.
    info.uses_original_profile = profile.isEmpty() ? JXL_FALSE : JXL_TRUE;
    if (JxlEncoderSetBasicInfo(encoder.get(), &info) != JXL_ENC_SUCCESS)
        return false;
    if (profile.isEmpty()
            ? JxlEncoderSetColorEncoding(encoder.get(), &colour) != JXL_ENC_SUCCESS
            : JxlEncoderSetICCProfile(encoder.get(), reinterpret_cast<const uint8_t*>(profile.constData()),
                                      size_t(profile.size())) != JXL_ENC_SUCCESS)
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
    if (extension == QLatin1String("heic") || extension == QLatin1String("avif"))
        return writeHeif(picture, path, HeifColour{0, 0, picture.colorSpace().iccProfile()});
    if (extension == QLatin1String("jxl"))
        return writeJxl(picture, path);
    if (extension == QLatin1String("gif"))
        return QFile::copy(gifFixture(), path);
    QImageWriter writer(path, extension == QLatin1String("jpg") ? QByteArray("jpeg") : extension.toLatin1());
    writer.setQuality(95);
    return writer.write(picture);
}

QString gifFixture() { return QStringLiteral(TALLOWBROOK_FIXTURES "/two-frames.gif"); }

QString writeBytes(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        ADD_FAILURE() << "cannot write " << path.toStdString();
    return path;
}

QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool makeClip(const QString& path, const QStringList& input, int seconds)
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), QStringList{QStringLiteral("-v"), QStringLiteral("error")} + input +
                                               QStringList{QStringLiteral("-t"), QString::number(seconds), path});
    return ffmpeg.waitForFinished(60000) && ffmpeg.exitCode() == 0;
}

} // namespace tb::test
