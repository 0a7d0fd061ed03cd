// Writes a few small valid pictures in each of the fuzzed formats, as the fuzzer's first corpus.
#include "media/TestPictures.h"

#include <QCoreApplication>
#include <QDir>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QDir out(QCoreApplication::arguments().value(1, QStringLiteral(".")));
    int written = 0;
    for (const char* extension : {"heic", "avif", "jxl"}) {
        for (QSize size : {QSize(8, 8), QSize(33, 17), QSize(64, 48)}) {
            const QString name = QStringLiteral("%1x%2.%3").arg(size.width()).arg(size.height()).arg(extension);
            written +=
                tb::test::writePicture(tb::test::twoColourPicture(size.width(), size.height()), out.filePath(name));
        }
    }
    return written > 0 ? 0 : 1;
}
