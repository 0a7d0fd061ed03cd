// libFuzzer target for the program's own picture decoders (HEIC, AVIF, JPEG XL): any bytes,
// read as each format through QImageReader, must give a picture or nothing, never a crash.
#include <QBuffer>
#include <QCoreApplication>
#include <QImageReader>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    static QCoreApplication app(*argc, *argv);
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
        (void)reader.read();
    }
    return 0;
}
