#pragma once

#include <QByteArray>
#include <QColorSpace>
#include <QString>

namespace tb {

// The colour space a HEIF or JPEG XL container gives its picture, set on the decoded image so the
// program's one sRGB step converts it like any other picture. A description the program cannot
// follow leaves the picture as sRGB, with one warning.
namespace ContainerColour {

// H.273 transfer characteristics; HEIF's nclx box and JPEG XL's encoded profile share them.
// JPEG XL adds its own pure gamma curve.
enum class Transfer : int {
    Bt709 = 1,
    Unspecified = 2,
    Gamma22 = 4,
    Gamma28 = 5,
    Bt601 = 6,
    Smpte240 = 7,
    Linear = 8,
    SRgb = 13,
    Bt2020TenBit = 14,
    Bt2020TwelveBit = 15,
    Pq = 16,
    Dci = 17,
    Hlg = 18,
    JxlGamma = 65535,
};

// `primaries` (a colour space of the right primaries and white point, whatever its transfer)
// with the container's transfer curve. `encodingGamma` is JPEG XL's exponent for its gamma
// curve (0.4545 for 2.2). Curves Qt cannot draw (PQ, HLG, logarithmic) give no colour space.
QColorSpace withTransfer(const QColorSpace& primaries, int transfer, double encodingGamma, const QString& fileName);

// The colour space of an embedded ICC profile; none, with a warning, when Qt cannot use it.
QColorSpace fromIccProfile(const QByteArray& profile, const QString& fileName);

} // namespace ContainerColour

} // namespace tb
