#pragma once

#include "ExifData.h"
#include "core/BoundedCache.h"

#include <QString>

namespace tb {

class IdentifiableImage;

// Reads and formats the metadata of photos through Exiv2, without decoding pixels, and keeps
// every answer (also "no metadata") for the life of the process, so no file is read twice.
// Made once and shared; safe to use from any thread.
class MetadataService {
public:
    MetadataService();

    ExifData exifData(const IdentifiableImage& item);
    ExifData exifData(const QString& filePath);

private:
    BoundedCache<QString, ExifData> cache; // no limits: never emptied on purpose
};

} // namespace tb
