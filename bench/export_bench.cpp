// Renders a movie from photos the way "Export as Video" does, with no window, and reports the
// time it took and the process's peak resident memory.
// Usage: export_bench [--preset=P] [--params=x264/x265 params] [--inter-params=x264 options]
//                     [--raw=frames.bgra] [--raw-yuv=frames.yuv]
//                     <out.mp4|out.mov> <width> <height> <delay> <none|fade|kenburns> <audio file or -> <photo>...
// --raw and --raw-yuv write the uncompressed frames (one per timestamp) instead of encoding: BGRA as
// the exporter makes them, and yuv420p as the encoder would get them, the reference a movie's
// quality is measured against.
#include "core/Logger.h"
#include "core/RandomSource.h"
#include "export/FrameKernels.h"
#include "export/VideoExporter.h"
#include "export/VideoWriter.h"
#include "media/ClipProbe.h"
#include "platform/LinuxProcessMemory.h"

#include <QElapsedTimer>
#include <QGuiApplication>

#include <cstdio>
#include <memory>

#include <sys/resource.h>

namespace {

// Every frame as it would be encoded, written out whole, one per timestamp: as the exporter made
// it (BGRA) and/or as the movie writer hands it to the encoder (yuv420p).
class RawFrames final : public tb::MovieSink {
public:
    RawFrames(const QString& bgraPath, const QString& yuvPath)
        : bgra(bgraPath.isEmpty() ? nullptr : std::fopen(qPrintable(bgraPath), "wb")),
          yuv(yuvPath.isEmpty() ? nullptr : std::fopen(qPrintable(yuvPath), "wb")),
          opened((bgraPath.isEmpty() || bgra) && (yuvPath.isEmpty() || yuv))
    {
    }
    ~RawFrames() override
    {
        for (std::FILE* file : {bgra, yuv})
            if (file)
                std::fclose(file);
    }
    bool isOpen() const { return opened; }
    bool appendFrame(const tb::Picture& picture, qint64) override
    {
        const QImage image = picture->convertToFormat(QImage::Format_ARGB32);
        if (bgra)
            for (int y = 0; y < image.height(); ++y)
                if (std::fwrite(image.constScanLine(y), 4, size_t(image.width()), bgra) != size_t(image.width()))
                    return false;
        if (yuv) {
            const int w = image.width();
            const int h = image.height();
            planes.resize(size_t(w * h + 2 * (w / 2) * (h / 2)));
            std::uint8_t* const data[3] = {planes.data(), planes.data() + w * h,
                                           planes.data() + w * h + (w / 2) * (h / 2)};
            const int strides[3] = {w, w / 2, w / 2};
            tb::FrameKernels::toYuv420(image, data, strides);
            if (std::fwrite(planes.data(), 1, planes.size(), yuv) != planes.size())
                return false;
        }
        return !cancelled;
    }
    void finishVideo() override {}
    bool appendAudio(const float*, int, qint64) override { return true; }
    bool finish(QString& error) override
    {
        for (std::FILE* file : {bgra, yuv})
            if (file && std::fflush(file) != 0) {
                error = QStringLiteral("could not write the frames");
                return false;
            }
        return true;
    }
    void cancel() override { cancelled = true; }

private:
    std::FILE* bgra;
    std::FILE* yuv;
    bool opened;
    std::vector<std::uint8_t> planes;
    std::atomic_bool cancelled = false;
};

class SeededRandom final : public tb::RandomSource {
public:
    std::uint64_t next64() override { return generator.generate64(); }

private:
    QRandomGenerator64 generator{20261123};
};

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    QStringList args = QCoreApplication::arguments().mid(1);
    tb::ExportRequest request;
    QString rawPath;
    QString rawYuvPath;
    while (!args.isEmpty() && args.first().startsWith(QLatin1String("--"))) {
        const QString option = args.takeFirst();
        const QString value = option.section(QLatin1Char('='), 1);
        if (option.startsWith(QLatin1String("--preset=")))
            request.encoderPreset = value;
        else if (option.startsWith(QLatin1String("--params=")))
            request.encoderParams = value;
        else if (option.startsWith(QLatin1String("--inter-params=")))
            request.encoderInterParams = value;
        else if (option.startsWith(QLatin1String("--raw=")))
            rawPath = value;
        else if (option.startsWith(QLatin1String("--raw-yuv=")))
            rawYuvPath = value;
    }
    if (args.size() < 7)
        return 2;
    request.outputPath = args[0];
    request.width = args[1].toInt();
    request.height = args[2].toInt();
    request.delay = args[3].toDouble();
    request.transitionType = args[4] == QLatin1String("fade")       ? tb::TransitionType::fade
                             : args[4] == QLatin1String("kenburns") ? tb::TransitionType::kenBurns
                                                                    : tb::TransitionType::none;
    request.containerFormat =
        args[0].endsWith(QLatin1String(".mov")) ? tb::ContainerFormat::mov : tb::ContainerFormat::mp4;
    if (args[5] != QLatin1String("-"))
        request.audioTracks = {tb::AudioTrack::fromFile(QUrl::fromLocalFile(args[5]), tb::clipDuration(args[5]))};
    for (const QString& photo : args.mid(6))
        request.images.append(tb::makeItem(QUrl::fromLocalFile(photo)));
    SeededRandom random; // the same motion in every run, so a raw run is the reference of an encoded one
    request.kenBurnsTargets = tb::makeKenBurnsTargets(int(request.images.size()), random);

    tb::LinuxProcessMemory memory;
    tb::VideoExporter::SinkFactory sink;
    if (!rawPath.isEmpty() || !rawYuvPath.isEmpty())
        sink = [&](const tb::VideoWriterSettings&, tb::ExportError& error) -> std::unique_ptr<tb::MovieSink> {
            auto frames = std::make_unique<RawFrames>(rawPath, rawYuvPath);
            if (frames->isOpen())
                return frames;
            error = {3, QStringLiteral("cannot open the raw frame files"), {}};
            return nullptr;
        };
    tb::VideoExporter exporter(memory, sink);
    QElapsedTimer clock;
    clock.start();
    const tb::ExportResult result = exporter.exportMovie(request, [](double) {});
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    if (result.outcome != tb::ExportOutcome::completed) {
        std::fprintf(stderr, "export failed: %s\n", qPrintable(result.description));
        return 1;
    }
    std::printf("%.1f s, peak %ld MiB", seconds, usage.ru_maxrss / 1024);
    return 0;
}
