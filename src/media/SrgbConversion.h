#pragma once

#include <QImage>

class QIODevice;
class QImageReader;

namespace tb {

// Every picture the program shows or exports is in sRGB: the screen, the thumbnail cache and the
// movie encoder all assume it. A picture that carries other colours (an Adobe RGB, Display P3 or
// ProPhoto profile, a camera's profile, a HEIF or JPEG XL container's colour description) is
// converted once, right after its scaled decode, so the cost is that of a screen-sized picture.
namespace SrgbConversion {

// `decoded` (just read by `reader`) in sRGB. A picture without colour information is taken as
// sRGB and comes back as it is; one whose profile cannot be used comes back as it is too, with
// one warning.
QImage toSrgb(QImage decoded, QImageReader& reader);

// Whether the file behind `device` embeds an ICC profile, by its container's markers alone
// (JPEG, PNG, TIFF, WebP: the formats whose profiles Qt reads itself); the device's position is
// given back. So a profile Qt rejected can be told from none at all.
bool embedsIccProfile(QIODevice& device);

} // namespace SrgbConversion

} // namespace tb
