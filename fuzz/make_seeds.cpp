// Writes the fuzzers' first corpora: a few small valid pictures in each fuzzed format (and
// profile-carrying JPEG, PNG, TIFF and WebP), and slideshow documents and bookmark blobs.
// Usage: make_fuzz_seeds <picture corpus folder> <document corpus folder>
#include "documents/DocumentCodec.h"
#include "media/Bookmark.h"
#include "media/TestPictures.h"

#include <QColorSpace>
#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace {

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// A document with every optional field filled, one without any, and a bookmark of a real file.
int writeDocumentSeeds(const QDir& out)
{
    tb::SlideshowDocument full;
    full.version = QStringLiteral("1.0");
    full.metadata = {QDateTime::currentDateTimeUtc(), QStringLiteral("1.0"), 2, 1,
                     QStringLiteral("Tallowbrook for Linux")};
    full.settings.slideshowDelay = 2.5;
    full.settings.transitionType = QStringLiteral("Ken Burns");
    full.settings.imageScalingMode = QStringLiteral("Fit (maintain aspect ratio)");
    full.settings.selectedSortOption = QStringLiteral("-");
    full.settings.isManualMode = true;
    full.settings.crossfadeDuration = 1.5;
    full.settings.overlayText = QStringLiteral("Trip / 2026");
    full.settings.overlayFontColorData = QByteArray("#FFFFFFFF");
    tb::SavedImageInfo image{QStringLiteral("5C9A4C0E-7D0B-4E57-9D3C-3F0E3F8B2A11"),
                             QStringLiteral("a.jpg"),
                             QStringLiteral("/home/ann/pics/a.jpg"),
                             QStringLiteral("pics/a.jpg"),
                             false,
                             QDateTime::currentDateTimeUtc(),
                             QByteArray("blob"),
                             true,
                             4.5};
    full.images = {image, image};
    full.audioTracks = {{QStringLiteral("0E7A1F4B-2C3D-4E5F-8A9B-0C1D2E3F4A5B"), QStringLiteral("s.mp3"),
                         QStringLiteral("/home/ann/s.mp3"), QStringLiteral("../s.mp3"), 61.5, QByteArray("b")}};
    full.audioSettings = {0.8, true, 0};
    full.liveModeSettings = tb::SavedLiveModeSettings{true, QStringLiteral("/home/ann/in"), QStringLiteral("next")};
    tb::SlideshowDocument bare = full;
    bare.settings = {};
    bare.images = {};
    bare.audioTracks = {};
    bare.liveModeSettings.reset();
    int written = writeFile(out.filePath(QStringLiteral("full.slideshow")), tb::encodeSlideshowDocument(full));
    written += writeFile(out.filePath(QStringLiteral("bare.slideshow")), tb::encodeSlideshowDocument(bare));
    if (const auto bookmark = tb::Bookmark::create(QCoreApplication::applicationFilePath(), nullptr))
        written += writeFile(out.filePath(QStringLiteral("bookmark.bin")), bookmark->toData());
    return written;
}

} // namespace

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
    // Pictures whose profiles Qt reads itself, for the look for a profile it rejected.
    for (const char* extension : {"jpg", "png", "tiff", "webp"}) {
        QImage tagged = tb::test::twoColourPicture(16, 16);
        tagged.setColorSpace(QColorSpace::AdobeRgb);
        written += tb::test::writePicture(tagged, out.filePath(QStringLiteral("adobe.") + QLatin1String(extension)));
    }
    const int documents = writeDocumentSeeds(QDir(QCoreApplication::arguments().value(2, QStringLiteral("."))));
    return written > 0 && documents == 3 ? 0 : 1;
}
