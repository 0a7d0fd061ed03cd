#pragma once

#include "core/BoundedCache.h"

#include <QImage>
#include <QSize>
#include <QUrl>

#include <atomic>
#include <optional>

namespace tb {

// Small pictures for the queue, decoded at reduced size (JPEG scales inside the decoder, so the
// full picture is never decoded) at twice the display size for high-density screens. Cached by
// file (200 entries, 100 MiB of pixels); the size asked first is the size kept. Thread-safe.
class ThumbnailGenerator {
public:
    std::optional<QImage> generateThumbnail(const QUrl& url, QSize size);
    void clearCache() { cache.removeAll(); }

    static constexpr int countLimit = 200;
    static constexpr qint64 totalCostLimit = 104857600;

private:
    BoundedCache<QUrl, QImage> cache{countLimit, totalCostLimit};
    // Paces the memory line only; emptying the cache does not reset it.
    std::atomic<int> generated{0};
};

} // namespace tb
