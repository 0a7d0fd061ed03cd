#pragma once

#include "core/BoundedCache.h"

#include <QImage>
#include <QImageReader>
#include <QSize>
#include <QUrl>

#include <functional>
#include <optional>

namespace tb {

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
    using NetworkTest = std::function<bool(const QString& path)>;

    // maximumSize caps the decoded size (the largest screen, times the Ken Burns zoom); an
    // empty size decodes at full size.
    explicit ImageLoader(QSize maximumSize = {}, NetworkTest isNetworkPath = {});

    std::optional<Picture> loadImage(const QUrl& url);
    void clearCache() { cache.removeAll(); }
    bool isCached(const QUrl& url) const { return cache.contains(url.toString()); }
    qint64 cachedCost() const { return cache.totalCost(); }
    qsizetype cachedCount() const { return cache.count(); }
    void setMaximumSize(QSize size) { maximumSize = size; }

    static constexpr int countLimit = 50;
    static constexpr qint64 totalCostLimit = 314572800;

private:
    BoundedCache<QString, Picture> cache{countLimit, totalCostLimit};
    QSize maximumSize;
    NetworkTest isNetworkPath;
};

// Reads a picture scaled to `size` (in the file's stored orientation, as QImageReader takes it).
// JPEG, HEIC, AVIF and JPEG XL scale while decoding; other formats are decoded whole and then
// scaled, since Qt's emulated scaled reads spoil some (1-bit PNGs come out as noise).
QImage readScaled(QImageReader& reader, const QSize& size);

// A picture's own size, upright, read from its header without decoding; invalid when the file
// cannot be read.
QSize pictureSize(const QString& path);

// Whether a path lies on a network or user-space file system (NFS, SMB/CIFS, FUSE, 9P, AFS,
// Ceph) or in a GVFS mount, where access may need the user's permission.
bool isNetworkPath(const QString& path);

// Resident memory of this process in MiB, or nothing when the system does not say.
std::optional<double> residentMemoryMiB();

} // namespace tb
