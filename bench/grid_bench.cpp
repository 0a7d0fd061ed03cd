// Scrolls the thumbnail grid of the main window quickly over a queue of large photos and
// reports how fast thumbnails reach the cells, how well the cells on screen are served while
// scrolling, how long after the scroll stops the last screen is complete, and the longest stall
// of the GUI thread (a 10 ms probe timer).
// Usage: grid_bench <folder of photos> <scroll speed in pixels per second> [shared thumbnail folder]
// With a shared thumbnail folder the grid reads and writes the desktop's shared thumbnails there.
#include "StallProbe.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"
#include "media/PictureClient.h"
#include "media/PictureService.h"
#include "media/Queue.h"
#include "media/SharedThumbnails.h"
#include "shell/QueueModel.h"
#include "shell/QueueView.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrent/QtConcurrentMap>

#include <cstdio>

namespace {

// Share of the cells on screen that show their thumbnail.
double servedOnScreen(const tb::QueueView& view, const tb::QueueModel& model)
{
    int shown = 0;
    int total = 0;
    const QRect area = view.viewport()->rect();
    for (int y = 40; y < area.height(); y += 80)
        for (int x = 40; x < area.width(); x += 80) {
            const QModelIndex index = view.indexAt(QPoint(x, y));
            if (!index.isValid())
                continue;
            ++total;
            shown += model.hasThumbnail(index.row());
        }
    return total ? double(shown) / total : 1.0;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    const QString folder = QApplication::arguments().value(1);
    const double pixelsPerSecond = QApplication::arguments().value(2, QStringLiteral("4000")).toDouble();
    QTemporaryDir dir;
    tb::SettingsStore settings(dir.filePath(QStringLiteral("settings.conf")));
    QList<tb::IdentifiableImage> items;
    for (const QFileInfo& file : QDir(folder).entryInfoList({QStringLiteral("*.jpg")}, QDir::Files, QDir::Name))
        items.append(tb::makeItem(QUrl::fromLocalFile(file.absoluteFilePath())));
    tb::Queue queue;
    queue.append(items);
    const QString sharedRoot = QApplication::arguments().value(3);
    tb::SharedThumbnails shared(sharedRoot);
    tb::PictureService service(QSize(1920, 1080), nullptr, nullptr, sharedRoot.isEmpty() ? nullptr : &shared);
    tb::PictureClient caches(service);
    if (pixelsPerSecond <= 0) {
        // Speed 0: only make every item's thumbnail, as a whole scroll would, on two threads.
        QThreadPool pool;
        pool.setMaxThreadCount(2);
        QElapsedTimer made;
        made.start();
        QtConcurrent::blockingMap(&pool, items, [&](const tb::IdentifiableImage& item) {
            caches.thumbnail(item.url(), false, QSize(tb::QueueModel::cellSide, tb::QueueModel::cellSide));
        });
        const double seconds = double(made.nsecsElapsed()) / 1e9;
        std::printf("thumbnails=%lld seconds=%.1f per_s=%.1f\n", qlonglong(items.size()), seconds,
                    double(items.size()) / seconds);
        return 0;
    }
    tb::QueueModel model(queue, caches);
    tb::QueueView view(model, settings);
    view.resize(900, 700);
    view.show();

    QElapsedTimer clock;
    StallProbe probe;

    // Scroll from top to bottom at the given speed, one step per 60 Hz frame; sample how much
    // of the screen is served every frame.
    QScrollBar* bar = view.verticalScrollBar();
    double position = 0;
    double servedSum = 0;
    int samples = 0;
    qint64 scrollEndNs = 0;
    int deliveredAtEnd = 0;
    QTimer frame;
    frame.setTimerType(Qt::PreciseTimer);
    QTimer::singleShot(500, [&] { // the layout is made in batches first
        clock.start();
        probe.start();
        frame.start(16);
    });
    QObject::connect(&frame, &QTimer::timeout, [&] {
        servedSum += servedOnScreen(view, model);
        ++samples;
        if (scrollEndNs == 0) {
            position += pixelsPerSecond * 0.016;
            bar->setValue(int(position));
            if (position >= bar->maximum()) {
                scrollEndNs = clock.nsecsElapsed();
                deliveredAtEnd = model.thumbnailsDelivered();
            }
        } else if (servedOnScreen(view, model) >= 1.0 || clock.nsecsElapsed() - scrollEndNs > 60'000'000'000) {
            app.quit();
        }
    });
    app.exec();
    const double scrollS = double(scrollEndNs) / 1e9;
    const double settleMs = double(clock.nsecsElapsed() - scrollEndNs) / 1e6;
    std::printf("grid items=%lld scroll_s=%.1f thumbnails_during_scroll=%d per_s=%.1f on_screen_served=%.0f%% "
                "last_screen_complete_ms=%.0f requests=%d worst_gui_stall_ms=%.1f\n",
                qlonglong(queue.size()), scrollS, deliveredAtEnd, deliveredAtEnd / scrollS,
                100.0 * servedSum / std::max(samples, 1), settleMs, model.thumbnailRequests(), probe.worstMs());
    return 0;
}
