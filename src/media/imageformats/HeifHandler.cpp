#include "HeifHandler.h"

#include "DecodeLimits.h"

#include <QIODevice>
#include <QImage>

#include <libheif/heif.h>

#include <memory>
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

// The primary picture, or an embedded thumbnail that still covers the wanted size.
Handle chooseHandle(heif_context* context, const QSize& wanted)
{
    heif_image_handle* primary = nullptr;
    if (heif_context_get_primary_image_handle(context, &primary).code != heif_error_Ok)
        return nullptr;
    Handle best(primary);
    if (!wanted.isValid())
        return best;
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
    return best;
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
    Handle handle = chooseHandle(context.get(), wanted);
    if (!handle)
        return {};
    if (!withinAllocationLimit(heif_image_handle_get_width(handle.get()), heif_image_handle_get_height(handle.get())))
        return {};

    const bool alpha = heif_image_handle_has_alpha_channel(handle.get());
    heif_image* decoded = nullptr;
    if (heif_decode_image(handle.get(), &decoded, heif_colorspace_RGB,
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
    // Wrap libheif's rows, then copy: the copy owns its pixels once the decoded image is gone.
    return QImage(pixels, width, height, stride, alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888).copy();
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
