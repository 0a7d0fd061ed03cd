#pragma once

#include <QImage>
#include <QString>

#include <atomic>
#include <optional>

namespace tb {

// The thumbnails the desktop's file managers and image viewers share under
// $XDG_CACHE_HOME/thumbnails (size folders normal 128, large 256, x-large 512, xx-large 1024), so a
// picture another program has shrunk already need not be decoded again, and ours serve them in
// turn. A thumbnail is named after the MD5 of its file's URI and is trusted only while the URI and
// modification time written into it match the file; stale ones are left for their owners to
// replace. Failed decodes are not recorded. Thread-safe: decoding threads share one instance.
class SharedThumbnails {
public:
    explicit SharedThumbnails(QString root = defaultRoot());
    static QString defaultRoot();

    // A valid thumbnail at least `longestSide` pixels on its longer side (or one of a picture that
    // is no bigger itself), looked for from the smallest size folder that fits the request
    // upward; nothing above 1024, for files inside the cache, or when none is valid.
    std::optional<QImage> find(const QString& filePath, int longestSide) const;
    // Shares a thumbnail we decoded: into the smallest of normal, large and x-large that holds its
    // longer side, scaled down to 512 when bigger. Replaces atomically, readable by the owner
    // only. When the cache cannot be written, nothing is and one warning is logged per instance.
    void store(const QString& filePath, const QImage& thumbnail);

private:
    bool isInsideCache(const QString& filePath) const;
    bool makeFolder(const QString& folder) const;
    void warnOnce(const QString& reason);

    QString root;
    std::atomic<bool> warned{false};
};

} // namespace tb
