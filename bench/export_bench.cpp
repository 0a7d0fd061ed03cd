// Renders a movie from photos the way "Export as Video" does, with no window, and reports the
// time it took and the process's peak resident memory.
// Usage: export_bench [--preset=P] [--params=x264/x265 params] [--inter-params=x264 options] [--raw=frames.bgra]
//                     <out.mp4|out.mov> <width> <height> <delay> <none|fade|kenburns> <audio file or -> <photo>...
// --raw writes the uncompressed frames (BGRA, one per timestamp) to that path instead of encoding,
// as the reference a movie's quality is measured against.
#include "core/Logger.h"
#include "core/RandomSource.h"
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

// Every frame as it would be encoded, written out whole, one per timestamp.
class RawFrames final : public tb::MovieSink {
public:
    explicit RawFrames(const QString& path) : file(std::fopen(qPrintable(path), "wb")) {}
    ~RawFrames() override
    {
        if (file)
            std::fclose(file);
    }
    bool isOpen() const { return file != nullptr; }
    bool appendFrame(const tb::Picture& picture, qint64) override
    {
        const QImage image = picture->convertToFormat(QImage::Format_ARGB32);
        for (int y = 0; y < image.height(); ++y)
            if (std::fwrite(image.constScanLine(y), 4, size_t(image.width()), file) != size_t(image.width()))
                return false;
        return !cancelled;
    }
    void finishVideo() override {}
    bool appendAudio(const float*, int, qint64) override { return true; }
    bool finish(QString& error) override
    {
        if (std::fflush(file) == 0)
            return true;
        error = QStringLiteral("could not write the frames");
        return false;
    }
    void cancel() override { cancelled = true; }

private:
    std::FILE* file;
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
    if (!rawPath.isEmpty())
        sink = [&rawPath](const tb::VideoWriterSettings&, tb::ExportError& error) -> std::unique_ptr<tb::MovieSink> {
            auto frames = std::make_unique<RawFrames>(rawPath);
            if (frames->isOpen())
                return frames;
            error = {3, QStringLiteral("cannot open ") + rawPath, {}};
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
