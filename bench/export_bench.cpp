// Renders a movie from photos the way "Export as Video" does, with no window, and reports the
// time it took and the process's peak resident memory.
// Usage: export_bench <out.mp4|out.mov> <width> <height> <delay> <none|fade|kenburns> <audio file or -> <photo>...
#include "core/Logger.h"
#include "core/RandomSource.h"
#include "export/VideoExporter.h"
#include "media/ClipProbe.h"
#include "platform/LinuxProcessMemory.h"

#include <QElapsedTimer>
#include <QGuiApplication>

#include <cstdio>

#include <sys/resource.h>

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.size() < 7)
        return 2;
    tb::ExportRequest request;
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
    tb::SystemRandomSource random;
    request.kenBurnsTargets = tb::makeKenBurnsTargets(int(request.images.size()), random);

    tb::LinuxProcessMemory memory;
    tb::VideoExporter exporter(memory);
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
