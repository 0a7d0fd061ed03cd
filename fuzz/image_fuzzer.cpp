// libFuzzer target for the program's own picture decoders (HEIC, AVIF, JPEG XL) and the look
// for an embedded colour profile: any bytes, read as each format through QImageReader and
// brought to sRGB, must give a picture or nothing, never a crash.
#include "core/Logger.h"
#include "media/SrgbConversion.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImageReader>

#include <cstddef>
#include <cstdint>
#include <memory>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    static QCoreApplication app(*argc, *argv);
    // Warnings about unusable colour profiles go nowhere.
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    // Keep a forged size from asking for more than the fuzzer's memory limit allows.
    QImageReader::setAllocationLimit(64);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    for (const char* format : {"heic", "jxl", ""}) {
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        QImageReader reader(&buffer, format);
        reader.setAutoTransform(true);
        (void)reader.size();
        buffer.seek(0);
        reader.setScaledSize(QSize(64, 48));
        (void)tb::SrgbConversion::toSrgb(reader.read(), reader);
    }
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    (void)tb::SrgbConversion::embedsIccProfile(buffer);
    return 0;
}
