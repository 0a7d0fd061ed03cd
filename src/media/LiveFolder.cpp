#include "LiveFolder.h"

#include "MediaTypes.h"
#include "Queue.h"
#include "QueueEditing.h"
#include "core/FolderWatchers.h"
#include "core/Logger.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace tb {

LiveFolder::LiveFolder(const Queue& queue, Scheduler& scheduler, FolderWatchers& watchers, Hooks hooks,
                       ItemMaker makeItem, QObject* parent)
    : QObject(parent),
      queue(queue),
      scheduler(scheduler),
      watchers(watchers),
      hooks(std::move(hooks)),
      makeItem(std::move(makeItem))
{
    // One sync at a time needs one thread; a second would only wait.
    workers.setMaxThreadCount(1);
}

LiveFolder::~LiveFolder()
{
    wanted->store(false);
    scheduler.cancel(syncDebounceTimer);
    workers.waitForDone();
}

void LiveFolder::startWatching(const QUrl& folder)
{
    if (folderMonitor)
        stopWatching();
    watched = folder;
    wanted = std::make_shared<std::atomic_bool>(true);
    folderMonitor = watchers.watch(folder.toLocalFile(), [this] { folderChanged(); });
    logInfo(QStringLiteral("Started watching folder: ") + folder.toLocalFile());
}

void LiveFolder::stopWatching()
{
    wanted->store(false);
    folderMonitor.reset();
    watched.reset();
    scheduler.cancel(syncDebounceTimer);
    syncDebounceTimer = 0;
    syncing = false;
    syncAgain = false;
    logInfo(QStringLiteral("Stopped watching folder"));
}

void LiveFolder::folderChanged()
{
    scheduler.cancel(syncDebounceTimer);
    syncDebounceTimer = scheduler.after(syncDebounceDelay, [this] {
        syncDebounceTimer = 0;
        sync();
    });
}

void LiveFolder::whileWanted(const Token& token, std::function<void()> fn)
{
    if (!*token)
        return;
    QMetaObject::invokeMethod(
        this,
        [this, token, fn = std::move(fn)] {
            if (token == wanted && *token)
                fn();
        },
        Qt::QueuedConnection);
}

void LiveFolder::sync()
{
    if (!watched)
        return;
    if (syncing) {
        syncAgain = true;
        return;
    }
    syncing = true;
    const QString folder = watched->toLocalFile();
    logInfo(QStringLiteral("[Live Mode] Checking folder for changes: ") + QFileInfo(folder).fileName());
    workers.start([this, token = wanted, folder] {
        QString error;
        QSet<QString> files = list(folder, error);
        whileWanted(token, [this, files = std::move(files), error] { listed(files, error); });
    });
}

QSet<QString> LiveFolder::list(const QString& folder, QString& error)
{
    namespace fs = std::filesystem;
    QSet<QString> files;
    std::error_code failure;
    fs::directory_iterator entries(QFile::encodeName(folder).toStdString(), failure);
    const QString prefix = QDir::cleanPath(folder) + QLatin1Char('/');
    for (; !failure && entries != fs::directory_iterator(); entries.increment(failure)) {
        std::error_code ignored;
        if (entries->is_directory(ignored))
            continue; // a folder named like a photo is still a folder
        const QString name = QFile::decodeName(QByteArray::fromStdString(entries->path().filename().string()));
        if (liveModeExtensions().contains(QFileInfo(name).suffix().toLower()))
            files.insert(prefix + name);
    }
    if (failure) {
        error = QString::fromStdString(failure.message());
        return {};
    }
    return files;
}

void LiveFolder::listed(const QSet<QString>& files, const QString& error)
{
    if (!error.isEmpty()) {
        logError(QStringLiteral("[Live Mode] Error syncing images with folder: ") + error);
        finishSync();
        return;
    }
    QSet<QString> inQueue;
    inQueue.reserve(queue.size());
    for (const IdentifiableImage& item : queue.items())
        inQueue.insert(QDir::cleanPath(item.filePath()));
    QStringList added;
    for (const QString& file : files)
        if (!inQueue.contains(file))
            added.append(file);
    QSet<QString> deleted;
    for (const QString& path : inQueue)
        if (!files.contains(path))
            deleted.insert(path);

    const Token token = wanted;
    if (!added.isEmpty()) {
        logInfo(QStringLiteral("[Live Mode] Adding %1 new images to slideshow").arg(added.size()));
        workers.start([this, token, added]() mutable {
            // All in one folder: the file browser's order of the paths is that of the names.
            const QCollator natural = fileNameCollator();
            std::sort(added.begin(), added.end(),
                      [&natural](const QString& a, const QString& b) { return natural.compare(a, b) < 0; });
            QList<IdentifiableImage> items;
            items.reserve(added.size());
            for (const QString& file : added) {
                if (!*token)
                    return;
                items.append(makeItem(QUrl::fromLocalFile(file)));
            }
            whileWanted(token, [this, items = std::move(items)] {
                const Token current = wanted;
                hooks.add(items);
                if (current == wanted)
                    finishSync();
            });
        });
    }
    if (!deleted.isEmpty()) {
        logInfo(QStringLiteral("[Live Mode] Removing %1 deleted images from slideshow").arg(deleted.size()));
        hooks.remove(deleted);
    }
    // The player may have ended the watch while it took the removals in.
    if (added.isEmpty() && token == wanted)
        finishSync();
}

void LiveFolder::finishSync()
{
    syncing = false;
    if (syncAgain) {
        syncAgain = false;
        sync();
    }
}

} // namespace tb
