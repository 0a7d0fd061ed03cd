#include "ContainerColour.h"

#include "core/Logger.h"

#include <QList>

#include <algorithm>
#include <cmath>

namespace tb::ContainerColour {

namespace {

// The BT.709 camera curve, undone (BT.601 and BT.2020 share it, SMPTE 240M nearly): Qt has no
// name for it, but takes it as a table.
QList<uint16_t> bt709Curve()
{
    static const QList<uint16_t> table = [] {
        constexpr int size = 1024;
        QList<uint16_t> entries(size);
        for (int i = 0; i < size; ++i) {
            const double v = double(i) / (size - 1);
            const double linear = v < 0.081 ? v / 4.5 : std::pow((v + 0.099) / 1.099, 1.0 / 0.45);
            entries[i] = uint16_t(std::lround(std::clamp(linear, 0.0, 1.0) * 65535.0));
        }
        return entries;
    }();
    return table;
}

} // namespace

QColorSpace withTransfer(const QColorSpace& primaries, int transfer, double encodingGamma, const QString& fileName)
{
    switch (Transfer(transfer)) {
    case Transfer::SRgb:
    case Transfer::Unspecified:
        return primaries.withTransferFunction(QColorSpace::TransferFunction::SRgb);
    case Transfer::Linear:
        return primaries.withTransferFunction(QColorSpace::TransferFunction::Linear);
    case Transfer::Gamma22:
        return primaries.withTransferFunction(QColorSpace::TransferFunction::Gamma, 2.2f);
    case Transfer::Gamma28:
        return primaries.withTransferFunction(QColorSpace::TransferFunction::Gamma, 2.8f);
    case Transfer::Dci:
        return primaries.withTransferFunction(QColorSpace::TransferFunction::Gamma, 2.6f);
    case Transfer::Bt709:
    case Transfer::Bt601:
    case Transfer::Smpte240:
    case Transfer::Bt2020TenBit:
    case Transfer::Bt2020TwelveBit:
        return primaries.withTransferFunction(bt709Curve());
    case Transfer::JxlGamma:
        if (encodingGamma > 0.0 && encodingGamma <= 1.0)
            return primaries.withTransferFunction(QColorSpace::TransferFunction::Gamma, float(1.0 / encodingGamma));
        break;
    default:
        break;
    }
    // PQ and HLG are high dynamic range: drawing them needs tone mapping, which Qt does not do.
    logWarning(QStringLiteral("Colour transfer %1 of %2 cannot be shown, showing the picture as sRGB")
                   .arg(transfer)
                   .arg(fileName));
    return {};
}

QColorSpace fromIccProfile(const QByteArray& profile, const QString& fileName)
{
    QColorSpace space = QColorSpace::fromIccProfile(profile);
    if (!space.isValid())
        logWarning(QStringLiteral("Colour profile of %1 cannot be used, showing the picture as sRGB").arg(fileName));
    return space;
}

} // namespace tb::ContainerColour
