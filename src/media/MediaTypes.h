#pragma once

#include <QString>
#include <QStringList>

namespace tb {

// Everything the queue takes, matched on the lower-cased extension alone.
const QStringList& supportedFileExtensions();
// The clips among them; every other extension is a still or animated picture.
const QStringList& supportedVideoExtensions();
// Live mode watches for a narrower set: no JPEG XL and no TIFF.
const QStringList& liveModeExtensions();

bool isSupportedExtension(const QString& extension);
bool isVideoExtension(const QString& extension);

// How many items a show puts on screen at once; stored as the integer setting displayMode.
enum class GridOption : int { none = 0, sideBySide = 1, twoByTwo = 2, threeByThree = 3 };

// Any raw value outside 1...3 (4 or more, or negative) plays as a single photo.
GridOption gridOptionFromRaw(int raw);
QString gridOptionLabel(GridOption option);
int gridRows(GridOption option);
int gridColumns(GridOption option);

// Stored as its raw string, which is also its label.
enum class TransitionType : int { none = 0, fade = 1, kenBurns = 2 };

QString transitionTypeRaw(TransitionType type);
// Unknown strings read as none.
TransitionType transitionTypeFromRaw(const QString& raw);

// How the single-photo player fits a picture; stored as its raw string.
enum class ImageScalingMode : int { fit = 0, fill = 1, bestFit = 2 };

QString imageScalingModeRaw(ImageScalingMode mode);
// A string that matches no raw value reads as bestFit.
ImageScalingMode imageScalingModeFromRaw(const QString& raw);

} // namespace tb
