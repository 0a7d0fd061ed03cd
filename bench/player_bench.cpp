// Runs the real player window on pictures and measures it.
//   player_bench crossfade <first> <second>   frame times during a 2 s cross-fade
//   player_bench memory <picture>...           resident memory over a sequential show
//   player_bench arrows <picture>...           resident memory while the right arrow is held
//                                              (400 presses at 25 a second), then after Escape
//   player_bench advance <first> <second>      time from an advance to the new picture on screen
// Run under a display (bench/run_player.sh starts Xvfb at 1920x1080).
#include "QuietServices.h"
#include "audio/AudioManager.h"
#include "audio/QtAudioPlayers.h"
#include "core/FileRevealer.h"
#include "core/Logger.h"
#include "core/QtScheduler.h"
#include "core/RandomSource.h"
#include "core/SettingsStore.h"
#include "core/SleepInhibitor.h"
#include "media/IdentifiableImage.h"
#include "media/MetadataService.h"
#include "media/PictureClient.h"
#include "media/PictureService.h"
#include "media/Queue.h"
#include "platform/LinuxProcessMemory.h"
#include "platform/QtFolderWatchers.h"
#include "playback/PictureProvider.h"
#include "playback/PlayerWindow.h"
#include "playback/SlideshowManager.h"
#include "playback/SlideshowView.h"

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

// Waits, running the event loop, until the condition holds or the time is up.
bool waitFor(const std::function<bool()>& condition, int ms)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return condition();
}

// The slide on screen has fully taken over.
bool settled(tb::PlayerWindow& window)
{
    QQuickItem* root = window.rootObject();
    auto* slide = root ? root->property("currentSlide").value<QQuickItem*>() : nullptr;
    return slide && slide->opacity() >= 1.0;
}

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.size() < 2)
        return 2;
    const QString mode = args[0];
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
    NoHold hold;
    NoReveal revealer;
    tb::MetadataService metadata;
    tb::QtFolderWatchers folderWatchers;

    auto queue = std::make_shared<tb::Queue>();
    QList<tb::IdentifiableImage> images;
    for (const QString& file : args.mid(1))
        images.append(tb::makeItem(QUrl::fromLocalFile(file)));

    tb::SlideshowConfiguration config;
    config.transitionType = mode == QLatin1String("crossfade") ? tb::TransitionType::fade : tb::TransitionType::none;
    config.crossfadeDuration = 2.0;
    config.imageScalingMode = tb::ImageScalingMode::fit;
    config.isManualMode = mode != QLatin1String("memory");
    config.loopSlideshow = mode == QLatin1String("arrows");
    const auto resident = [&memory] { return memory.residentMiB().value_or(0); };
    const double start = resident();
    config.slideshowDelay = 0.05;
    manager.setSlideshowRunning(true);
    queue->append(images);
    auto* player = new tb::SlideshowView(
        queue, config, {scheduler, random, manager, audio, caches, hold, settings, revealer, metadata, folderWatchers});
    // As the program makes it: the window deletes itself once the show has ended.
    QPointer<tb::PlayerWindow> shown =
        new tb::PlayerWindow(player, std::move(pictures), tb::PictureProvider::backlog, settings, screen, false, false);
    tb::PlayerWindow& window = *shown;
    player->setClosePlayer([shown] {
        if (shown)
            shown->closeLater();
    });
    window.present();
    player->onAppear();
    if (mode != QLatin1String("memory") && !waitFor([&] { return settled(window); }, 30000)) {
        std::fprintf(stderr, "the first picture never showed\n");
        return 1;
    }

    if (mode == QLatin1String("crossfade")) {
        // Give the second picture time to be ready, as a running show's preloading does.
        caches.preload({images[1]});
        waitFor([&] { return service.pictures.isCached(images[1].url()); }, 30000);
        QList<qint64> swaps;
        QElapsedTimer clock;
        clock.start();
        QObject::connect(&window, &QQuickWindow::frameSwapped, [&] { swaps.append(clock.nsecsElapsed()); });
        player->goForwardByArrow();
        const qint64 fadeStart = clock.nsecsElapsed();
        waitFor([] { return false; }, 2300);
        QList<double> gaps;
        for (qsizetype i = 1; i < swaps.size(); ++i)
            if (swaps[i - 1] >= fadeStart && swaps[i] <= fadeStart + qint64(2.0e9))
                gaps.append(double(swaps[i] - swaps[i - 1]) / 1e6);
        if (gaps.isEmpty())
            return 1;
        const double mean = std::accumulate(gaps.begin(), gaps.end(), 0.0) / double(gaps.size());
        std::printf("crossfade frames=%lld mean_ms=%.1f worst_ms=%.1f\n", qlonglong(gaps.size()), mean,
                    *std::max_element(gaps.begin(), gaps.end()));
    } else if (mode == QLatin1String("advance")) {
        for (const char* state : {"cold", "preloaded"}) {
            if (QLatin1String(state) == QLatin1String("preloaded")) {
                player->goBackByArrow();
                waitFor([&] { return settled(window); }, 30000);
                caches.preload({images[1]});
                waitFor([&] { return service.pictures.isCached(images[1].url()); }, 30000);
            } else {
                caches.clearPictures();
            }
            QElapsedTimer clock;
            clock.start();
            player->goForwardByArrow();
            waitFor([&] { return settled(window); }, 30000);
            std::printf("advance %s ms=%.1f\n", state, double(clock.nsecsElapsed()) / 1e6);
        }
    } else {
        double peak = start;
        QTimer sampler;
        QObject::connect(&sampler, &QTimer::timeout, [&] { peak = std::max(peak, resident()); });
        sampler.start(50);
        // A held key repeats about 25 times a second.
        int presses = 0;
        QTimer key;
        if (mode == QLatin1String("arrows")) {
            QObject::connect(&key, &QTimer::timeout, [&] {
                if (++presses <= 400)
                    player->handleKey(Qt::Key_Right);
                else if (presses == 401)
                    player->handleKey(Qt::Key_Escape);
            });
            key.start(40);
        }
        waitFor([&] { return !manager.isSlideshowRunning(); }, 30 * 60 * 1000);
        waitFor([&] { return shown.isNull(); }, 30000);
        waitFor([] { return false; }, 2000);
        std::printf("%s pictures=%lld start_mib=%.0f peak_mib=%.0f end_mib=%.0f\n", qPrintable(mode),
                    qlonglong(images.size()), start, peak, resident());
    }
    return 0;
}
