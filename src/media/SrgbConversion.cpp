#include "SrgbConversion.h"

#include "core/Logger.h"

#include <QColorSpace>
#include <QFileInfo>
#include <QIODevice>
#include <QImageReader>
#include <QtEndian>

#include <algorithm>

namespace tb::SrgbConversion {

namespace {

// Profiles stand among a file's first segments or chunks, before its pixels; a damaged file
// must not keep the walk going longer than this.
constexpr int walkLimit = 256;

QByteArray readAt(QIODevice& device, qint64 offset, qint64 size)
{
    if (offset < 0 || !device.seek(offset))
        return {};
    return device.read(size);
}

quint32 bigEndian16(const QByteArray& bytes, int at) { return qFromBigEndian<quint16>(bytes.constData() + at); }
quint32 bigEndian32(const QByteArray& bytes, int at) { return qFromBigEndian<quint32>(bytes.constData() + at); }

// An APP2 segment that starts with ICC_PROFILE, before the first scan.
bool jpegEmbedsProfile(QIODevice& device)
{
    if (readAt(device, 0, 2) != QByteArrayLiteral("\xFF\xD8"))
        return false;
    static const QByteArray iccSignature("ICC_PROFILE\0", 12);
    qint64 at = 2;
    for (int step = 0; step < walkLimit; ++step) {
        const QByteArray head = readAt(device, at, 4 + iccSignature.size());
        if (head.size() < 4 || uchar(head[0]) != 0xFF)
            return false;
        const uchar marker = uchar(head[1]);
        if (marker == 0xFF) { // fill byte before a marker
            ++at;
            continue;
        }
        if (marker == 0xDA || marker == 0xD9)
            return false;
        if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) { // markers without a length
            at += 2;
            continue;
        }
        if (marker == 0xE2 && head.mid(4) == iccSignature)
            return true;
        at += 2 + bigEndian16(head, 2);
    }
    return false;
}

// An iCCP chunk, before the first IDAT.
bool pngEmbedsProfile(QIODevice& device)
{
    qint64 at = 8;
    for (int step = 0; step < walkLimit; ++step) {
        const QByteArray head = readAt(device, at, 8);
        if (head.size() < 8)
            return false;
        const QByteArray type = head.mid(4, 4);
        if (type == "iCCP")
            return true;
        if (type == "IDAT" || type == "IEND")
            return false;
        at += 12 + qint64(bigEndian32(head, 0)); // length, type, data, CRC
    }
    return false;
}

// An ICCP chunk, which the extended format places before the picture's own chunks.
bool webpEmbedsProfile(QIODevice& device)
{
    const QByteArray riff = readAt(device, 0, 12);
    if (riff.size() < 12 || !riff.startsWith("RIFF") || riff.mid(8) != "WEBP")
        return false;
    qint64 at = 12;
    for (int step = 0; step < walkLimit; ++step) {
        const QByteArray head = readAt(device, at, 8);
        if (head.size() < 8)
            return false;
        const QByteArray type = head.left(4);
        if (type == "ICCP")
            return true;
        if (type == "VP8 " || type == "VP8L" || type == "ALPH" || type == "ANIM")
            return false;
        const qint64 size = qFromLittleEndian<quint32>(head.constData() + 4);
        at += 8 + size + (size & 1);
    }
    return false;
}

// The ICC tag (34675) among the first directory's entries.
bool tiffEmbedsProfile(QIODevice& device)
{
    const QByteArray header = readAt(device, 0, 8);
    if (header.size() < 8)
        return false;
    const bool little = header.startsWith("II*");
    if (!little && !header.startsWith(QByteArrayLiteral("MM\0*")))
        return false;
    auto number = [little](const QByteArray& bytes, int at, int width) -> quint32 {
        const char* p = bytes.constData() + at;
        if (width == 2)
            return little ? qFromLittleEndian<quint16>(p) : qFromBigEndian<quint16>(p);
        return little ? qFromLittleEndian<quint32>(p) : qFromBigEndian<quint32>(p);
    };
    const qint64 directory = number(header, 4, 4);
    const QByteArray count = readAt(device, directory, 2);
    if (count.size() < 2)
        return false;
    const int entries = int(std::min<quint32>(number(count, 0, 2), walkLimit));
    const QByteArray table = readAt(device, directory + 2, qint64(entries) * 12);
    for (int entry = 0; entry < table.size() / 12; ++entry) {
        if (number(table, entry * 12, 2) == 34675)
            return true;
    }
    return false;
}

} // namespace

bool embedsIccProfile(QIODevice& device)
{
    if (!device.isOpen() || device.isSequential())
        return false;
    const qint64 start = device.pos();
    // Told by the file's own signature: the reader forgets the format name once it has read.
    const QByteArray magic = readAt(device, 0, 12);
    bool found = false;
    if (magic.startsWith("\xFF\xD8"))
        found = jpegEmbedsProfile(device);
    else if (magic.startsWith("\x89PNG"))
        found = pngEmbedsProfile(device);
    else if (magic.startsWith("RIFF"))
        found = webpEmbedsProfile(device);
    else if (magic.startsWith("II*") || magic.startsWith(QByteArrayLiteral("MM\0*")))
        found = tiffEmbedsProfile(device);
    device.seek(start);
    return found;
}

QImage toSrgb(QImage decoded, QImageReader& reader)
{
    if (decoded.isNull())
        return decoded;
    const QColorSpace space = decoded.colorSpace();
    if (space.isValid()) {
        if (space != QColorSpace(QColorSpace::SRgb))
            decoded.convertToColorSpace(QColorSpace::SRgb);
        return decoded;
    }
    // Qt leaves the colour space unset both for a file without a profile and for one whose
    // profile it rejected (warning in its own category). Only the second is worth a line in our
    // log, and only pictures without a usable colour space pay for looking; the program's own
    // decoders report their containers' profiles themselves.
    if (QIODevice* device = reader.device(); device && embedsIccProfile(*device)) {
        logWarning(QStringLiteral("Colour profile of %1 cannot be used, showing the picture as sRGB")
                       .arg(QFileInfo(reader.fileName()).fileName()));
    }
    return decoded;
}

} // namespace tb::SrgbConversion
