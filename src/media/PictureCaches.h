#pragma once

#include "IdentifiableImage.h"

#include <QImage>
#include <QList>
#include <QSize>

#include <optional>

namespace tb {

// What one owner of pictures (a show, a main window's grid) asks of the picture service. The
// caches are shared by the whole program, but each owner empties only what it brought in, so a
// show ending in one window leaves another window's pictures and thumbnails alone.
class PictureCaches {
public:
    virtual ~PictureCaches() = default;
    virtual void clearPictures() = 0;
    virtual void clearThumbnails() = 0;
    virtual void clearVideoThumbnails() = 0;
    // Decodes these items into the picture cache ahead of the show, in the background: a few
    // at most, the newest first.
    virtual void preload(const QList<IdentifiableImage>& items) = 0;
    // Drops the decodes ahead that have not started.
    virtual void cancelPreloads() = 0;
    // The picture to show for a file: the full picture (no larger than the screens need), or
    // a clip's poster frame. Blocking and safe from any thread.
    virtual std::optional<QImage> picture(const QUrl& url, bool isVideo) = 0;
    // A file's small picture, at twice the display size (a clip's poster frame); pixelRatio is
    // the display's device pixels per point. Blocking and safe from any thread.
    virtual std::optional<QImage> thumbnail(const QUrl& url, bool isVideo, QSize displaySize,
                                            qreal pixelRatio = 1.0) = 0;
    // A file's picture (a clip's poster frame, a GIF's first frame) stretched to exactly
    // `pixelSize`: a grid cell. Kept with the thumbnails. Blocking and safe from any thread.
    virtual std::optional<QImage> cellPicture(const QUrl& url, bool isVideo, QSize pixelSize) = 0;
};

} // namespace tb
