#pragma once

#include "IdentifiableImage.h"
#include "core/Scheduler.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QThreadPool>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace tb {

class FolderWatch;
class FolderWatchers;
class Queue;

// Keeps a running show in step with one folder: the folder is the whole truth of the show, so
// its new files join the queue and queue items that are not in it (vanished files, and items
// from anywhere else) leave. A burst of changes waits for a quiet `syncDebounceDelay` and then
// makes one sync; the folder is listed and new items are built on a worker this object owns,
// and the changes are handed to the player on the GUI thread. A sync that is due while an
// earlier one still builds its items waits for it, so no file enters twice.
class LiveFolder final : public QObject {
    Q_OBJECT
public:
    struct Hooks {
        // New items, in natural file-name order ("img2" before "img10").
        std::function<void(const QList<IdentifiableImage>&)> add;
        // The cleaned absolute paths of queue items that are not in the folder.
        std::function<void(const QSet<QString>&)> remove;
    };
    // Builds an item for a new file; blocking is fine, it runs on the worker.
    using ItemMaker = std::function<IdentifiableImage(const QUrl&)>;

    LiveFolder(const Queue& queue, Scheduler& scheduler, FolderWatchers& watchers, Hooks hooks,
               ItemMaker makeItem = tb::makeItem, QObject* parent = nullptr);
    // Stops watching and waits for the worker, which gives up between two items.
    ~LiveFolder() override;

    // Replaces any earlier watch. Nothing is synced until the folder first changes.
    void startWatching(const QUrl& folder);
    // Also drops a pending sync and whatever a sync under way would still bring.
    void stopWatching();
    const std::optional<QUrl>& watchedFolder() const { return watched; }
    bool isSyncing() const { return syncing; }

    // What live mode takes from a folder: one level, hidden files too, the files whose
    // extension is a live-mode one. Sets `error` to the system's text when it cannot be read.
    static QSet<QString> list(const QString& folder, QString& error);

    static constexpr double syncDebounceDelay = 0.3;

private:
    using Token = std::shared_ptr<std::atomic_bool>;

    void folderChanged();
    void sync();
    void listed(const QSet<QString>& files, const QString& error);
    void finishSync();
    // Runs fn on the GUI thread if the watch that asked for it still stands.
    void whileWanted(const Token& token, std::function<void()> fn);

    const Queue& queue;
    Scheduler& scheduler;
    FolderWatchers& watchers;
    Hooks hooks;
    ItemMaker makeItem;
    std::unique_ptr<FolderWatch> folderMonitor;
    std::optional<QUrl> watched;
    TaskId syncDebounceTimer = 0;
    bool syncing = false;
    bool syncAgain = false;
    // One per watch: false once the watch is replaced or stopped, so work in flight for it stops
    // and its results are dropped.
    Token wanted = std::make_shared<std::atomic_bool>(false);
    QThreadPool workers;
};

} // namespace tb
