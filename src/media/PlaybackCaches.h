#pragma once

#include "IdentifiableImage.h"

#include <QList>

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
};

} // namespace tb
