#pragma once

#include <QString>

#include <optional>

namespace tb {

// The duration of a clip in seconds, read from its container (and, when the container does not
// say, from its streams) without decoding. Nothing when the file cannot be opened as media.
std::optional<double> clipDuration(const QString& filePath);

// Keeps FFmpeg's own messages off the console (fatal ones aside).
void quietFFmpeg();

// FFmpeg's text for one of its error codes.
QString ffmpegErrorText(int code);

} // namespace tb
