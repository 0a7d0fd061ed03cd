// Encodes a slideshow-like movie with the movie writer and prints the time it took, or writes the
// same frames uncompressed to standard output as the reference for a quality measure.
// Pictures are held still for 4.2 s each and dissolve into the next over 0.8 s, as an export with
// the default delay of 5 s does. Without photos a noisy gradient stands in for each.
// Usage: writer_bench encode <out> <mp4|mov> <width> <height> <seconds> <preset> [photo...]
//        writer_bench raw - <mp4|mov> <width> <height> <seconds> - [photo...]   (BGRA frames)
#include "export/VideoWriter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int soloFrames = 126;      // 4.2 s
constexpr int transitionFrames = 24; // 0.8 s

QImage letterboxed(const QString& file, QSize size)
{
    QImageReader reader(file);
    reader.setAutoTransform(true);
    const QImage photo = reader.read();
    QImage frame(size, QImage::Format_ARGB32_Premultiplied);
    frame.fill(Qt::black);
    if (photo.isNull())
        return frame;
    const QImage scaled = photo.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter painter(&frame);
    painter.drawImage((size.width() - scaled.width()) / 2, (size.height() - scaled.height()) / 2, scaled);
    return frame;
}

QImage synthetic(int index, QSize size)
{
    QImage frame(size, QImage::Format_ARGB32_Premultiplied);
    QRandomGenerator random(quint32(index + 1));
    const int hue = (index * 97) % 360;
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(frame.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const QColor base = QColor::fromHsv(hue, 80 + 120 * x / size.width(), 60 + 160 * y / size.height());
            const int grain = int(random.bounded(24)) - 12;
            line[x] = qRgb(std::clamp(base.red() + grain, 0, 255), std::clamp(base.green() + grain, 0, 255),
                           std::clamp(base.blue() + grain, 0, 255));
        }
    }
    return frame;
}

tb::Picture dissolve(const QImage& from, const QImage& to, double progress)
{
    auto frame = std::make_shared<QImage>(from);
    QPainter painter(frame.get());
    painter.setOpacity(progress);
    painter.drawImage(0, 0, to);
    return frame;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.size() < 7 || (args[0] != QLatin1String("encode") && args[0] != QLatin1String("raw"))) {
        std::fprintf(stderr, "usage: writer_bench encode|raw <out> <mp4|mov> <width> <height> <seconds> <preset> "
                             "[photo...]\n");
        return 2;
    }
    const bool raw = args[0] == QLatin1String("raw");
    const QSize size(args[3].toInt(), args[4].toInt());
    const int totalFrames = int(args[5].toDouble() * tb::VideoWriter::frameRate);
    const QStringList photos = args.mid(7);

    // Every picture the run needs, made before the clock starts.
    const int pictureCount = totalFrames / (soloFrames + transitionFrames) + 2;
    std::vector<tb::Picture> pictures;
    for (int i = 0; i < pictureCount; ++i)
        pictures.push_back(std::make_shared<const QImage>(
            photos.isEmpty() ? synthetic(i, size) : letterboxed(photos[i % photos.size()], size)));
    const auto frameAt = [&](int index) {
        const int cycle = index / (soloFrames + transitionFrames);
        const int step = index % (soloFrames + transitionFrames);
        if (step < soloFrames)
            return pictures[size_t(cycle)];
        const double progress = (step - soloFrames + 0.5) / transitionFrames;
        return dissolve(*pictures[size_t(cycle)], *pictures[size_t(cycle + 1)], progress);
    };

    if (raw) {
        for (int i = 0; i < totalFrames; ++i) {
            const tb::Picture frame = frameAt(i);
            if (std::fwrite(frame->constBits(), 1, size_t(frame->sizeInBytes()), stdout) !=
                size_t(frame->sizeInBytes()))
                return 1;
        }
        return 0;
    }

    tb::VideoWriterSettings settings;
    settings.path = args[1];
    settings.width = size.width();
    settings.height = size.height();
    settings.format = args[2] == QLatin1String("mov") ? tb::ContainerFormat::mov : tb::ContainerFormat::mp4;
    settings.preset = args[6];
    QElapsedTimer clock;
    clock.start();
    tb::ExportError error;
    auto writer = tb::VideoWriter::open(settings, error);
    if (!writer) {
        std::fprintf(stderr, "%s (%s)\n", qPrintable(error.description), qPrintable(error.detail));
        return 1;
    }
    for (int i = 0; i < totalFrames; ++i) {
        if (!writer->appendFrame(frameAt(i), i))
            break;
    }
    QString text;
    const bool written = writer->finish(text);
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    if (!written) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
        return 1;
    }
    const double megabits = double(QFileInfo(settings.path).size()) * 8 / 1e6;
    std::printf("preset=%s frames=%d seconds=%.2f fps=%.2f mbit_per_s=%.1f converted=%d\n", qPrintable(settings.preset),
                totalFrames, seconds, totalFrames / seconds,
                megabits / (double(totalFrames) / tb::VideoWriter::frameRate), writer->convertedPictures());
    return 0;
}
