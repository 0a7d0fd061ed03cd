// libFuzzer target for what a slideshow document brings in from outside: the JSON reader and the
// bookmark blobs it carries. Any bytes must decode or be refused, never crash; what decodes must
// survive being written and read again unchanged.
#include "documents/DocumentCodec.h"
#include "media/Bookmark.h"

#include <QCoreApplication>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    static QCoreApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const auto decoded = tb::decodeSlideshowDocument(bytes);
    if (const auto* document = std::get_if<tb::SlideshowDocument>(&decoded)) {
        // The first write settles what the format does not keep (fractions of a second, time
        // zones); from then on a document must read back exactly as written.
        const QByteArray written = tb::encodeSlideshowDocument(*document);
        const auto again = tb::decodeSlideshowDocument(written);
        if (!std::holds_alternative<tb::SlideshowDocument>(again) ||
            tb::encodeSlideshowDocument(std::get<tb::SlideshowDocument>(again)) != written)
            std::abort();
    }
    if (const auto bookmark = tb::Bookmark::fromData(bytes)) {
        const auto again = tb::Bookmark::fromData(bookmark->toData());
        if (!again || again->path != bookmark->path || again->inode != bookmark->inode ||
            again->device != bookmark->device || again->size != bookmark->size ||
            again->modifiedMs != bookmark->modifiedMs)
            std::abort();
    }
    return 0;
}
