#pragma once

#include <QString>

namespace tb {

// Why the file cannot be played as audio, or an empty text when it can: it is readable, and
// FFmpeg finds an audio stream in it that it has a decoder for. Nothing is decoded; the check
// is quick enough for the GUI thread.
QString audioOpenError(const QString& filePath);

} // namespace tb
