#pragma once

#include <QString>

namespace tb {

class IdentifiableImage;
struct ExifData;

// The text of the show's file information box: the file's name, its creation date in the
// user's locale ("Unknown" without one), then the photo's metadata, "N/A" for what it lacks.
QString infoBoxText(const IdentifiableImage& item, const ExifData& exif);

} // namespace tb
