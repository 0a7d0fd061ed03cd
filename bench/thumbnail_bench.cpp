// Makes the queue's 300-pixel thumbnails of the given pictures, on one or more threads, and
// prints milliseconds per thumbnail and thumbnails per second.
// Usage: thumbnail_bench <threads> <picture>...
#include "core/Logger.h"
#include "media/ThumbnailGenerator.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThreadPool>
#include <QUrl>
#include <QtConcurrent/QtConcurrentMap>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    // Only the figures go to standard output.
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: thumbnail_bench <threads> <picture>...\n");
        return 2;
    }
    QThreadPool pool;
    pool.setMaxThreadCount(args[0].toInt());
    const QStringList files = args.mid(1);

    tb::ThumbnailGenerator generator;
    std::atomic<int> made{0};
    QElapsedTimer clock;
    clock.start();
    QtConcurrent::blockingMap(&pool, files, [&](const QString& file) {
        if (generator.generateThumbnail(QUrl::fromLocalFile(file), QSize(150, 150)))
            ++made;
    });
    const double ms = double(clock.nsecsElapsed()) / 1e6;
    std::printf("threads=%d thumbnails=%d total_ms=%.0f ms_per_thumbnail=%.1f per_second=%.2f\n", args[0].toInt(),
                made.load(), ms, ms / files.size(), files.size() * 1000.0 / ms);
    return made.load() == files.size() ? 0 : 1;
}
