// A running show in live mode while a batch of files is copied into its watched folder, with the
// main window's thumbnail grid shown: how many syncs the copy causes, how long after the last
// file is written every new item is in the queue, and the longest stall of the GUI thread (a
// 10 ms probe timer) from the first copy to the end.
// Usage: live_bench <watched folder> <folder of files to copy in>
// The watched folder's own files are the show's queue at the start.
#include "QuietServices.h"
#include "StallProbe.h"
#include "audio/SlideshowAudio.h"
#include "core/FileRevealer.h"
#include "core/Logger.h"
#include "core/QtScheduler.h"
#include "core/RandomSource.h"
#include "core/SettingsStore.h"
#include "core/SleepInhibitor.h"
#include "media/LiveFolder.h"
#include "media/MetadataService.h"
#include "media/PictureClient.h"
#include "media/PictureService.h"
#include "media/Queue.h"
#include "platform/QtFolderWatchers.h"
#include "playback/SlideshowManager.h"
#include "playback/SlideshowView.h"
#include "shell/QueueModel.h"
#include "shell/QueueView.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <thread>

namespace {

class Silence final : public tb::SlideshowAudio {
public:
    int trackCount() const override { return 0; }
    bool isPlaying() const override { return false; }
    void prepareForNewSlideshow() override {}
    void play() override {}
    void pausePlayer() override {}
    void stopPlayer() override {}
};

QList<tb::IdentifiableImage> itemsOf(const QString& folder)
{
    QList<tb::IdentifiableImage> items;
    for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files, QDir::Name))
        items.append(tb::makeItem(QUrl::fromLocalFile(file.absoluteFilePath())));
    return items;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    std::atomic_int syncs = 0;
    auto logger = std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {});
    logger->addListener([&syncs](tb::LogLevel, const QString& message) {
        if (message.startsWith(QLatin1String("[Live Mode] Checking folder for changes")))
            ++syncs;
    });
    tb::Logger::installShared(std::move(logger));
    const QString watched = QApplication::arguments().value(1);
    const QString incoming = QApplication::arguments().value(2);
    const QStringList arriving = QDir(incoming).entryList(QDir::Files, QDir::Name);

    QTemporaryDir dir;
    tb::SettingsStore settings(dir.filePath(QStringLiteral("settings.conf")));
    tb::QtScheduler scheduler;
    tb::SystemRandomSource random;
    tb::SlideshowManager manager;
    Silence audio;
    NoHold hold;
    NoReveal revealer;
    tb::MetadataService metadata;
    tb::QtFolderWatchers folderWatchers;
    tb::PictureService service(QSize(1920, 1080), nullptr, nullptr, nullptr);
    tb::PictureClient showPictures(service);
    tb::PictureClient gridPictures(service);

    auto queue = std::make_shared<tb::Queue>();
    queue->append(itemsOf(watched));
    const qsizetype expected = queue->size() + arriving.size();
    tb::QueueModel model(*queue, gridPictures);
    tb::QueueView grid(model, settings);
    grid.resize(900, 700);
    grid.show();

    tb::SlideshowConfiguration config;
    config.isManualMode = true; // the queue alone changes
    // As the main window does in thumbnail mode: the grid takes the new items in.
    config.onNewImagesAdded = [&](const QList<tb::IdentifiableImage>&) {
        QTimer::singleShot(0, queue.get(), [&] { queue->renewRefreshID(); });
    };
    manager.setLiveModeActive(true);
    manager.setWatchedFolder(QUrl::fromLocalFile(watched));
    manager.setSlideshowRunning(true);
    tb::SlideshowView player(
        queue, config,
        {scheduler, random, manager, audio, showPictures, hold, settings, revealer, metadata, folderWatchers});

    StallProbe probe;
    QElapsedTimer clock;
    std::atomic<qint64> lastWritten = 0;
    qint64 allIn = 0;
    std::thread copier;
    QTimer::singleShot(1000, [&] { // the grid is laid out and its first thumbnails made
        player.onAppear();
        clock.start();
        probe.start();
        copier = std::thread([&] {
            for (const QString& name : arriving)
                QFile::copy(incoming + QLatin1Char('/') + name, watched + QLatin1Char('/') + name);
            lastWritten = clock.nsecsElapsed();
        });
    });
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, [&] {
        if (queue->size() >= expected && !player.liveFolder().isSyncing() && lastWritten > 0) {
            allIn = clock.nsecsElapsed();
            app.quit();
        } else if (clock.isValid() && clock.elapsed() > 300'000) {
            app.quit();
        }
    });
    check.start(1);
    app.exec();
    copier.join();
    std::printf("live queue_before=%lld copied=%lld in_queue=%lld syncs=%d copy_ms=%.0f "
                "all_in_after_last_file_ms=%.0f worst_gui_stall_ms=%.1f\n",
                qlonglong(expected - arriving.size()), qlonglong(arriving.size()), qlonglong(queue->size()),
                syncs.load(), double(lastWritten) / 1e6, double(allIn - lastWritten) / 1e6, probe.worstMs());
    return queue->size() == expected ? 0 : 1;
}
