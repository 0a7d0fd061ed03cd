#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>

namespace tb::test {

// A picture whose left half is red and right half blue, so size, colour and turning can be read
// back from a decode.
QImage twoColourPicture(int width, int height);

// Writes the picture in the format its extension names, with the encoders the program's
// decoders read: Qt's writers, libheif (HEIC, AVIF) and libjxl (JPEG XL). GIF is a fixture,
// since no writer here makes one. False when no encoder for the format is available.
bool writePicture(const QImage& picture, const QString& path);

// How a HEIC or AVIF test file describes its colours: by nclx code points (primaries 0: no nclx
// box), or by ICC profile bytes, written as they are, broken or not.
struct HeifColour {
    int primaries = 0;
    int transfer = 0;
    QByteArray profile;
};
bool writeHeif(const QImage& picture, const QString& path, const HeifColour& colour);

// The small animated GIF kept in tests/fixtures.
QString gifFixture();

// A file holding exactly `bytes`, with its folders made; the path back.
QString writeBytes(const QString& path, const QByteArray& bytes = {});
QByteArray readBytes(const QString& path);

// A clip made by the FFmpeg command line from `input` (its -f, -i and codec arguments).
bool makeClip(const QString& path, const QStringList& input, int seconds = 1);

} // namespace tb::test
