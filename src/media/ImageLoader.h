#pragma once

#include "core/BoundedCache.h"

#include <QImage>
#include <QImageReader>
#include <QSize>
#include <QUrl>

#include <optional>

namespace tb {

class FileSystems;

// A picture ready for the screen: decoded at no more than the screen can show, with the size of
// the picture itself (best fit lays pictures out by it).
struct Picture {
    QImage image;
    QSize originalSize;
};

// Full-size pictures for the players, decoded once and kept in a cache bounded by count (50)
// and by the cost of the decoded pixels (300 MiB). Thread-safe and blocking; callers pick the
// thread. A failed load is not remembered: the next request tries again.
class ImageLoader {
public:
    // maximumSize caps the decoded size (the largest screen, times the Ken Burns zoom); an
    // empty size decodes at full size. Without file systems to ask, no path counts as a network
    // one.
    explicit ImageLoader(QSize maximumSize = {}, const FileSystems* fileSystems = nullptr);

    std::optional<Picture> loadImage(const QUrl& url);
    void clearCache() { cache.removeAll(); }
    void forget(const QUrl& url) { cache.remove(url.toString()); }
    bool isCached(const QUrl& url) const { return cache.contains(url.toString()); }
    qint64 cachedCost() const { return cache.totalCost(); }
    qsizetype cachedCount() const { return cache.count(); }
    void setMaximumSize(QSize size) { maximumSize = size; }

    static constexpr int countLimit = 50;
    static constexpr qint64 totalCostLimit = 314572800;

private:
    BoundedCache<QString, Picture> cache{countLimit, totalCostLimit};
    QSize maximumSize;
    const FileSystems* fileSystems;
};

// Reads a picture scaled to `size` (in the file's stored orientation, as QImageReader takes it).
// JPEG, HEIC, AVIF and JPEG XL scale while decoding; other formats are decoded whole and then
// scaled, since Qt's emulated scaled reads spoil some (1-bit PNGs come out as noise). The
// picture comes back in sRGB, converted at its scaled size.
QImage readScaled(QImageReader& reader, const QSize& size);

// The picture's size once turned upright, from the file's header alone; invalid when the
// header does not say.
QSize uprightSize(const QImageReader& reader);
// Reads a picture turned upright and scaled to `upright`; the reader turns it by what the file
// records (its EXIF orientation, or the container's own rotation).
QImage readUpright(QImageReader& reader, const QSize& upright);

} // namespace tb
