#pragma once

#include "core/BoundedCache.h"

#include <QImage>
#include <QUrl>

#include <optional>
#include <variant>

namespace tb {

// A clip's poster frame: its first frame, turned as the clip says, within 400×400. Cached by
// file (200 entries; no cost, so only the count bounds it). Thread-safe and blocking.
class VideoThumbnailGenerator {
public:
    std::optional<QImage> thumbnail(const QUrl& url);
    void clearCache();
    void forget(const QUrl& url) { cache.remove(url); }

    static constexpr int countLimit = 200;
    static constexpr int maximumSide = 400;

private:
    BoundedCache<QUrl, QImage> cache{countLimit, 104857600};
};

// The first video frame of a clip, rotated upright and scaled to fit within maximumSide; the
// error's description when there is none.
std::variant<QImage, QString> firstVideoFrame(const QString& path, int maximumSide);

} // namespace tb
