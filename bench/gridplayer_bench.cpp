// Runs the real grid player window, 3x3 with every cell changing at each tick, and measures it.
//   gridplayer_bench <ticks> <picture>...
// prints the frame times while the grid runs (the window redrawn continuously, so a stall shows),
// the time from each tick to all nine new cells on screen, and resident memory at the start, its
// peak and at the end. Run under a display (bench/run_gridplayer.sh starts Xvfb at 1920x1080).
#include "audio/AudioManager.h"
#include "audio/QtAudioPlayers.h"
#include "core/Logger.h"
#include "core/QtScheduler.h"
#include "core/RandomSource.h"
#include "core/SettingsStore.h"
#include "media/IdentifiableImage.h"
#include "media/PictureClient.h"
#include "media/PictureService.h"
#include "media/Queue.h"
#include "platform/LinuxProcessMemory.h"
#include "playback/GridView.h"
#include "playback/PictureProvider.h"
#include "playback/PlayerWindow.h"
#include "playback/SlideshowManager.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPointer>
#include <QQuickItem>
#include <QScreen>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <numeric>

namespace {

bool settled(tb::PlayerWindow& window)
{
    QVariant result;
    QQuickItem* root = window.rootObject();
    return root && QMetaObject::invokeMethod(root, "settled", Q_RETURN_ARG(QVariant, result)) && result.toBool();
}

double mean(const QList<double>& values)
{
    return values.isEmpty() ? 0 : std::accumulate(values.begin(), values.end(), 0.0) / double(values.size());
}

double percentile(QList<double> values, double p)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[qsizetype(std::min<double>(double(values.size()) - 1, p * double(values.size())))];
}

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.size() < 2)
        return 2;
    const int ticks = args[0].toInt();
    tb::PlayerWindow::chooseRenderer(); // as the program does

    QTemporaryDir dir;
    tb::SettingsStore settings(dir.filePath(QStringLiteral("settings.conf")));
    tb::QtScheduler scheduler;
    tb::SystemRandomSource random;
    tb::SlideshowManager manager;
    tb::QtAudioPlayers audioPlayers;
    tb::AudioManager audio{audioPlayers}; // with no tracks, as most shows run
    QScreen* screen = QGuiApplication::primaryScreen();
    tb::LinuxProcessMemory memory;
    tb::PictureService service(screen->size() * screen->devicePixelRatio() * 1.25, nullptr, &memory);
    auto pictures = std::make_unique<tb::PictureClient>(service);
    tb::PictureClient& caches = *pictures;

    auto queue = std::make_shared<tb::Queue>();
    QList<tb::IdentifiableImage> images;
    for (const QString& file : args.mid(1))
        images.append(tb::makeItem(QUrl::fromLocalFile(file)));
    queue->append(images);
    const auto resident = [&memory] { return memory.residentMiB().value_or(0); };
    const double start = resident();

    tb::GridConfiguration config;
    config.delay = 1.0;
    config.rows = 3;
    config.columns = 3;
    config.syncGridTransitions = true;
    config.loopSlideshow = true;
    manager.setSlideshowRunning(true);
    auto* player = new tb::GridView(queue, config, {scheduler, random, manager, audio, caches, settings});
    QPointer<tb::PlayerWindow> shown = new tb::PlayerWindow(
        player, std::move(pictures), tb::PictureProvider::cellBacklog, settings, screen, false, false);
    tb::PlayerWindow& window = *shown;
    player->setClosePlayer([shown] {
        if (shown)
            shown->closeLater();
    });

    QElapsedTimer clock;
    clock.start();
    QList<double> toShown;
    qint64 tickAt = -1;
    qint64 lastTick = 0;
    int tickCount = 0;
    QObject::connect(player, &tb::GridView::cellsChanged, [&] {
        tickAt = clock.nsecsElapsed();
        lastTick = tickAt;
        ++tickCount;
    });
    QObject::connect(&window, &QQuickWindow::afterAnimating, [&] {
        if (tickAt >= 0 && settled(window)) {
            toShown.append(double(clock.nsecsElapsed() - tickAt) / 1e6);
            tickAt = -1;
        }
    });
    QList<double> frames;
    qint64 lastSwap = -1;
    QObject::connect(&window, &QQuickWindow::frameSwapped, [&] {
        const qint64 now = clock.nsecsElapsed();
        if (lastSwap >= 0) {
            frames.append(double(now - lastSwap) / 1e6);
            if (frames.last() > 33) // over budget: say when it happened
                std::printf("grid long frame %.1f ms, %.0f ms after a tick\n", frames.last(),
                            double(now - lastTick) / 1e6);
        }
        lastSwap = now;
        window.update(); // keep drawing: a frame that is late shows as a long gap
    });
    double peak = start;
    QTimer sampler;
    QObject::connect(&sampler, &QTimer::timeout, [&] { peak = std::max(peak, resident()); });
    sampler.start(50);

    window.present();
    player->onAppear();
    while (tickCount <= ticks && !shown.isNull())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    const double beforeEnd = resident();
    player->handleKey(Qt::Key_Escape);
    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 2000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);

    // The first tick's cells race the window's first frames; from then on the grid is steady.
    if (!toShown.isEmpty())
        toShown.removeFirst();
    std::printf("grid 3x3 sync ticks=%d frames=%lld mean_ms=%.1f p99_ms=%.1f worst_ms=%.1f\n", tickCount - 1,
                qlonglong(frames.size()), mean(frames), percentile(frames, 0.99),
                frames.isEmpty() ? 0 : *std::max_element(frames.begin(), frames.end()));
    std::printf("grid tick_to_nine_cells mean_ms=%.0f median_ms=%.0f worst_ms=%.0f (n=%lld)\n", mean(toShown),
                percentile(toShown, 0.5), toShown.isEmpty() ? 0 : *std::max_element(toShown.begin(), toShown.end()),
                qlonglong(toShown.size()));
    std::printf("grid memory start_mib=%.0f peak_mib=%.0f before_escape_mib=%.0f end_mib=%.0f\n", start, peak,
                beforeEnd, resident());
    return 0;
}
