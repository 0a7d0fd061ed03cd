#pragma once

#include "IdentifiableImage.h"

#include <QImage>
#include <QList>

#include <optional>

namespace tb {

// The picture caches a show empties at its wrap points and at its end, and refills ahead of
// the items about to come.
class PlaybackCaches {
public:
    virtual ~PlaybackCaches() = default;
    virtual void clearPictures() = 0;
    virtual void clearThumbnails() = 0;
    virtual void clearVideoThumbnails() = 0;
    // Decodes these items into the picture cache, in the background.
    virtual void preload(const QList<IdentifiableImage>& items) = 0;
    // The picture to show for a file: the full picture, or a clip's poster frame. Blocking and
    // safe from any thread.
    virtual std::optional<QImage> picture(const QUrl& url, bool isVideo) = 0;
    // The queue's small picture of a file (at most 300 pixels a side; a clip's poster frame).
    // Blocking and safe from any thread.
    virtual std::optional<QImage> thumbnail(const QUrl& url, bool isVideo) = 0;
};

} // namespace tb
