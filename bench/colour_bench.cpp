// The sRGB step beside the decode it follows, per picture: the scaled decode the player makes
// (to fit 1920x1080), the conversion after it, and for contrast the full-size decode and its
// conversion. Prints milliseconds per picture and the conversion's share of the decode.
// Usage: colour_bench <picture>...        (pictures with a profile)
//        colour_bench --profile <file>    writes the Adobe RGB profile the program's Qt makes
#include "core/Logger.h"
#include "media/ImageLoader.h"
#include "media/SrgbConversion.h"

#include <QColorSpace>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>

#include <cstdio>

namespace {

double elapsedMs(const QElapsedTimer& clock) { return double(clock.nsecsElapsed()) / 1e6; }

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.size() == 2 && args[0] == QLatin1String("--profile")) {
        QFile file(args[1]);
        const QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
        return file.open(QIODevice::WriteOnly) && file.write(profile) == profile.size() ? 0 : 1;
    }
    if (args.isEmpty()) {
        std::fprintf(stderr, "usage: colour_bench <picture>... | --profile <file>\n");
        return 2;
    }
    double decode = 0, convert = 0, fullDecode = 0, fullConvert = 0;
    int converted = 0;
    for (const QString& path : args) {
        QElapsedTimer clock;
        // The player's decode: the JPEG decoder scales to the screen while it decodes.
        QImageReader reader(path);
        reader.setAutoTransform(true);
        QSize stored = reader.size();
        const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
        const QSize screen = turned ? QSize(1080, 1920) : QSize(1920, 1080);
        reader.setScaledSize(stored.scaled(screen, Qt::KeepAspectRatio));
        clock.start();
        QImage image = reader.read();
        decode += elapsedMs(clock);
        clock.start();
        image = tb::SrgbConversion::toSrgb(std::move(image), reader);
        convert += elapsedMs(clock);
        converted += image.colorSpace() == QColorSpace(QColorSpace::SRgb) ? 1 : 0;

        QImageReader whole(path);
        clock.start();
        QImage full = whole.read();
        fullDecode += elapsedMs(clock);
        clock.start();
        full.convertToColorSpace(QColorSpace::SRgb);
        fullConvert += elapsedMs(clock);
    }
    const double n = args.size();
    std::printf("pictures=%d converted=%d decode_ms=%.1f convert_ms=%.2f share=%.1f%% full_decode_ms=%.1f "
                "full_convert_ms=%.1f\n",
                int(n), converted, decode / n, convert / n, 100.0 * convert / decode, fullDecode / n, fullConvert / n);
    return 0;
}
