#include "HeifHandler.h"

#include "ContainerColour.h"
#include "DecodeLimits.h"

#include <QIODevice>
#include <QImage>

#include <libheif/heif.h>

#include <memory>
#include <optional>
#include <vector>

namespace tb {

namespace {

struct ContextDeleter {
    void operator()(heif_context* c) const { heif_context_free(c); }
};
struct HandleDeleter {
    void operator()(heif_image_handle* h) const { heif_image_handle_release(h); }
};
struct ImageDeleter {
    void operator()(heif_image* i) const { heif_image_release(i); }
};
using Context = std::unique_ptr<heif_context, ContextDeleter>;
using Handle = std::unique_ptr<heif_image_handle, HandleDeleter>;
using Image = std::unique_ptr<heif_image, ImageDeleter>;

// An embedded thumbnail that still covers the wanted size; nothing when none does.
Handle coveringThumbnail(heif_image_handle* primary, const QSize& wanted)
{
    const int count = heif_image_handle_get_number_of_thumbnails(primary);
    std::vector<heif_item_id> ids(size_t(std::max(count, 0)));
    heif_image_handle_get_list_of_thumbnail_IDs(primary, ids.data(), count);
    for (heif_item_id id : ids) {
        heif_image_handle* thumbnail = nullptr;
        if (heif_image_handle_get_thumbnail(primary, id, &thumbnail).code != heif_error_Ok)
            continue;
        Handle candidate(thumbnail);
        if (heif_image_handle_get_width(thumbnail) >= wanted.width() &&
            heif_image_handle_get_height(thumbnail) >= wanted.height()) {
            return candidate;
        }
    }
    return nullptr;
}

// The colour space an nclx box describes. Primaries Qt has no name for are taken by their
// chromaticities, which libheif works out from the code.
QColorSpace fromNclx(const heif_color_profile_nclx& nclx, const QString& fileName)
{
    QColorSpace primaries;
    switch (nclx.color_primaries) {
    case heif_color_primaries_ITU_R_BT_709_5:
    case heif_color_primaries_unspecified:
        primaries = QColorSpace(QColorSpace::SRgb);
        break;
    case heif_color_primaries_SMPTE_EG_432_1:
        primaries = QColorSpace(QColorSpace::DisplayP3);
        break;
    default:
        primaries = QColorSpace(QPointF(nclx.color_primary_white_x, nclx.color_primary_white_y),
                                QPointF(nclx.color_primary_red_x, nclx.color_primary_red_y),
                                QPointF(nclx.color_primary_green_x, nclx.color_primary_green_y),
                                QPointF(nclx.color_primary_blue_x, nclx.color_primary_blue_y),
                                QColorSpace::TransferFunction::SRgb);
        break;
    }
    if (!primaries.isValid())
        primaries = QColorSpace(QColorSpace::SRgb);
    return ContainerColour::withTransfer(primaries, int(nclx.transfer_characteristics), 0.0, fileName);
}

// What the container says of the picture's colours: an ICC profile (which libheif puts before
// an nclx box when there are both), else the nclx numbers; nothing when it says nothing.
std::optional<QColorSpace> describedColour(const heif_image_handle* handle, const QString& fileName)
{
    if (const size_t size = heif_image_handle_get_raw_color_profile_size(handle); size > 0) {
        QByteArray profile(qsizetype(size), Qt::Uninitialized);
        if (heif_image_handle_get_raw_color_profile(handle, profile.data()).code == heif_error_Ok)
            return ContainerColour::fromIccProfile(profile, fileName);
    }
    heif_color_profile_nclx* nclx = nullptr;
    if (heif_image_handle_get_nclx_color_profile(handle, &nclx).code != heif_error_Ok || !nclx)
        return std::nullopt;
    const QColorSpace space = fromNclx(*nclx, fileName);
    heif_nclx_color_profile_free(nclx);
    return space;
}

// An AVIF may carry its nclx numbers only in the AV1 stream, where libheif hands them to the
// decoded picture.
std::optional<QColorSpace> streamColour(const heif_image* image, const QString& fileName)
{
    heif_color_profile_nclx* nclx = nullptr;
    if (heif_image_get_nclx_color_profile(image, &nclx).code != heif_error_Ok || !nclx)
        return std::nullopt;
    const QColorSpace space = fromNclx(*nclx, fileName);
    heif_nclx_color_profile_free(nclx);
    return space;
}

Context readContext(const QByteArray& data)
{
    Context context(heif_context_alloc());
    if (!context ||
        heif_context_read_from_memory_without_copy(context.get(), data.constData(), size_t(data.size()), nullptr)
                .code != heif_error_Ok)
        return nullptr;
    return context;
}

} // namespace

bool HeifHandler::canRead(QIODevice* device)
{
    if (!device)
        return false;
    const QByteArray head = device->peek(64);
    return head.size() >= 12 && heif_check_filetype(reinterpret_cast<const uint8_t*>(head.constData()),
                                                    int(head.size())) == heif_filetype_yes_supported;
}

bool HeifHandler::canRead() const
{
    if (!canRead(device()))
        return false;
    const QByteArray head = device()->peek(32);
    setFormat(head.contains("avif") || head.contains("avis") ? QByteArrayLiteral("avif") : QByteArrayLiteral("heic"));
    return true;
}

QImage HeifHandler::decode(const QByteArray& data, const QSize& wanted) const
{
    Context context = readContext(data);
    if (!context)
        return {};
    heif_image_handle* primaryHandle = nullptr;
    if (heif_context_get_primary_image_handle(context.get(), &primaryHandle).code != heif_error_Ok)
        return {};
    Handle primary(primaryHandle);
    Handle thumbnail = wanted.isValid() ? coveringThumbnail(primaryHandle, wanted) : nullptr;
    heif_image_handle* handle = thumbnail ? thumbnail.get() : primaryHandle;
    if (!withinAllocationLimit(heif_image_handle_get_width(handle), heif_image_handle_get_height(handle)))
        return {};

    const bool alpha = heif_image_handle_has_alpha_channel(handle);
    heif_image* decoded = nullptr;
    if (heif_decode_image(handle, &decoded, heif_colorspace_RGB,
                          alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, nullptr)
            .code != heif_error_Ok)
        return {};
    Image picture(decoded);
    int stride = 0;
    const uint8_t* pixels = heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
    const int width = heif_image_get_width(decoded, heif_channel_interleaved);
    const int height = heif_image_get_height(decoded, heif_channel_interleaved);
    if (!pixels || width <= 0 || height <= 0)
        return {};
    // A thumbnail without colour boxes of its own is a smaller copy of the primary picture.
    std::optional<QColorSpace> colour = describedColour(handle, fileName());
    if (!colour && thumbnail)
        colour = describedColour(primaryHandle, fileName());
    if (!colour)
        colour = streamColour(decoded, fileName());
    // Wrap libheif's rows, then copy: the copy owns its pixels once the decoded image is gone.
    QImage result =
        QImage(pixels, width, height, stride, alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888).copy();
    if (colour)
        result.setColorSpace(*colour);
    return result;
}

QSize HeifHandler::headerSize(const QByteArray& data) const
{
    Context context = readContext(data);
    heif_image_handle* primary = nullptr;
    if (!context || heif_context_get_primary_image_handle(context.get(), &primary).code != heif_error_Ok)
        return {};
    Handle handle(primary);
    return QSize(heif_image_handle_get_width(primary), heif_image_handle_get_height(primary));
}

} // namespace tb
