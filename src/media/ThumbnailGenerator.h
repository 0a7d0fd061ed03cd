#pragma once

#include "core/BoundedCache.h"

#include <QImage>
#include <QSize>
#include <QUrl>

#include <atomic>
#include <optional>

namespace tb {

class ProcessMemory;
class SharedThumbnails;

// Small pictures for the queue, decoded at reduced size (JPEG scales inside the decoder, so the
// full picture is never decoded) at twice the display size for high-density screens. Cached by
// file and size (200 entries, 100 MiB of pixels). With the desktop's shared thumbnails, one
// already there that is big enough for the display is taken instead of decoding, and what is
// decoded is shared in turn. Thread-safe. With the process's memory to read, every tenth
// thumbnail logs it.
class ThumbnailGenerator {
public:
    explicit ThumbnailGenerator(ProcessMemory* memory = nullptr, SharedThumbnails* shared = nullptr)
        : memory(memory), shared(shared)
    {
    }

    // `pixelRatio` is the display's device pixels per point: a shared thumbnail must cover the
    // display size in device pixels.
    std::optional<QImage> generateThumbnail(const QUrl& url, QSize size, qreal pixelRatio = 1.0);
    // A picture decoded to exactly `size` in pixels, its aspect not kept: a grid show's cell.
    // Cached beside the thumbnails, never shared with the desktop. Nothing for a file that cannot
    // be read, silently: its cell stays empty.
    std::optional<QImage> generateStretched(const QUrl& url, QSize size);
    void forgetStretched(const QUrl& url, QSize size) { cache.remove(stretchedKey(url, size)); }
    bool isCachedStretched(const QUrl& url, QSize size) const { return cache.contains(stretchedKey(url, size)); }
    // Whether the desktop's shared thumbnails are used (the user's setting).
    void setSharing(bool on) { sharing = on; }
    void clearCache() { cache.removeAll(); }
    void forget(const QUrl& url, QSize size) { cache.remove(key(url, size)); }
    bool isCached(const QUrl& url, QSize size) const { return cache.contains(key(url, size)); }

    static constexpr int countLimit = 200;
    static constexpr qint64 totalCostLimit = 104857600;

private:
    static QString key(const QUrl& url, QSize size);
    static QString stretchedKey(const QUrl& url, QSize size) { return QStringLiteral("stretched ") + key(url, size); }

    ProcessMemory* memory;
    SharedThumbnails* shared;
    std::atomic<bool> sharing{true};
    BoundedCache<QString, QImage> cache{countLimit, totalCostLimit};
    // Paces the memory line only; emptying the cache does not reset it.
    std::atomic<int> generated{0};
};

} // namespace tb
