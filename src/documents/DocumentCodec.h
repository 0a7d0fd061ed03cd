#pragma once

#include "SlideshowDocument.h"

#include <QByteArray>
#include <QString>

#include <variant>

namespace tb {

// The .slideshow file format: UTF-8 JSON, pretty-printed with keys sorted at every level, dates
// as UTC ISO 8601 with whole seconds, binary as base64, slashes escaped ("\/"), and optional
// values that are absent left out rather than written as null.
QByteArray encodeSlideshowDocument(const SlideshowDocument& document);

// Reads the records field by field. Absent and null optional values are alike, unknown keys are
// ignored, and values are checked by type only. The error names the path of the offending key,
// e.g. "images[3].isGIF: expected a boolean".
std::variant<SlideshowDocument, QString> decodeSlideshowDocument(const QByteArray& json);

// The format version this program writes.
inline constexpr char slideshowFormatVersion[] = "1.0";

} // namespace tb
