#pragma once

#include "IdentifiableImage.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace tb {

class Queue;
class SettingsStore;
class UserDialogs;

// Turns what the user names (files and folders from the dialog, or dropped) into items at the end
// of the queue. Items are built on a pool thread and reach the queue in batches of 50 on the
// GUI thread, so tens of thousands of files never stall the window. Runs are not queued: a
// second run starts at once beside the first.
class FileIntake final : public QObject {
    Q_OBJECT
public:
    FileIntake(Queue& queue, SettingsStore& settings, UserDialogs& dialogs, QObject* parent = nullptr);
    ~FileIntake() override;

    // "Select files or folders": the dialog, the recursion decision, the count ahead, the run.
    void selectFiles();
    // Files and folders dropped on the window: the recursion decision, then a run. The dialog's
    // count ahead and chosen URLs stay as they are.
    void handleDrop(const QList<QUrl>& urls);
    // Expands folders and starts a run; single files are taken as they are.
    void processURLs(const QList<QUrl>& urls, bool recursive);
    // Appends the folder's supported files (and, recursively, its subfolders'). Hidden entries
    // are skipped; an unreadable folder logs and adds nothing.
    static void processDirectory(const QString& folder, QList<QUrl>& result, bool recursive);
    // The run: items are built on a pool thread, appended in batches, then completion runs.
    void loadFiles(const QList<QUrl>& urls, std::function<void()> completion = {});
    // The remembered answer, or the "Include Subfolders?" question when a chosen folder has
    // subfolders; true (recursive) when none has.
    bool decideRecursion(const QList<QUrl>& urls);
    // Turns thumbnails off with a one-time "Info" alert above the threshold.
    void thumbnailCheck();

    bool isLoading() const { return loading; }
    int totalPhotosAdded() const { return totalAdded; }
    void setTotalPhotosAdded(int total);
    int totalPhotosToBeAdded() const { return toBeAdded; }
    const QStringList& selectedFileNames() const { return fileNames; }
    const std::optional<QUrl>& selectedFolderURL() const { return selectedFolder; }
    void clearSelectedFolderURL() { selectedFolder.reset(); }
    bool displayThumbnails() const { return thumbnailsWanted; }
    bool thumbnailAlertAlreadyDisplayed() const { return alertShown; }
    void resetThumbnailAlert() { alertShown = false; }

    static constexpr int thumbnailsEnabledTreshold = 2000; // spelled so on purpose
    static constexpr int batchSize = 50;

Q_SIGNALS:
    // After each batch appended to the queue.
    void itemsAdded(int count);
    void loadingChanged(bool loading);
    void toast(const QString& message);

private:
    // A run on the pool thread; with expandFolders set, folders among the URLs are walked there
    // first (recursively when it is true).
    void run(const QList<QUrl>& urls, std::optional<bool> expandFolders, std::function<void()> completion);
    static bool isFolder(const QUrl& url);
    static bool hasSubfolder(const QString& folder);
    void countAhead(const QList<QUrl>& urls);

    Queue& queue;
    SettingsStore& settings;
    UserDialogs& dialogs;
    bool loading = false;
    int totalAdded = 0;
    int toBeAdded = 0;
    QStringList fileNames;
    QList<QUrl> urlsToLoad;
    std::optional<QUrl> selectedFolder;
    bool thumbnailsWanted = true;
    bool alertShown = false;
    // Tells pool workers that nobody waits for their items any more.
    std::shared_ptr<std::atomic_bool> alive = std::make_shared<std::atomic_bool>(true);
};

} // namespace tb
