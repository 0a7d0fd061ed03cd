#pragma once

#include "media/IdentifiableImage.h"

#include <QColor>
#include <QImage>
#include <QSize>
#include <QSizeF>

#include <optional>

namespace tb {

// Brings every picture of a movie to exactly the frame's size before any frame is made: fitted
// whole (small pictures are scaled up too), centred, with the background colour on the free
// sides and through any transparency. Each picture is decoded whole, once; one three or more
// times too big is halved by averaging, and Lanczos resampling then gives its fitted size.
namespace ImagePreparation {

// The picture's upright size in pixels: from the header, turned by the orientation the decoder
// will apply; else from a full decode (with a warning); else 1920x1080 (with an error).
QSizeF imageSize(const IdentifiableImage& item);

// The file decoded and resampled to the size it takes in the frame; nothing when it cannot be read.
std::optional<QImage> decodeFitted(const IdentifiableImage& item, QSizeF sourceSize, QSize frame);

// `source` (a picture of `sourceSize`, or already decoded at its fitted size) fitted into a
// frame of `target` size on the background colour. Should no frame-sized picture be made (no
// memory for it), the source comes back as it is.
QImage scaledImage(const QImage& source, QSizeF sourceSize, QSize target, const QColor& background);

} // namespace ImagePreparation

} // namespace tb
