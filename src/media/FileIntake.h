#pragma once

#include "IdentifiableImage.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QThreadPool>
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
// of the queue. Folders are looked into, walked, and items built on worker threads this intake
// owns; items reach the queue in batches of 50 on the GUI thread, so tens of thousands of files
// never stall the window. Runs are not queued: a second run starts at once beside the first,
// with counts and a toast of its own.
class FileIntake final : public QObject {
    Q_OBJECT
public:
    FileIntake(Queue& queue, SettingsStore& settings, UserDialogs& dialogs, QObject* parent = nullptr);
    // Stops the runs under way and waits for their workers.
    ~FileIntake() override;

    // "Select files or folders": the dialog, then on a worker the look into the chosen folders
    // (subfolders, and the count ahead), then the recursion decision and the run.
    void selectFiles();
    // Files and folders dropped on the window: the same without the count ahead. The dialog's
    // count ahead and chosen URLs stay as they are.
    void handleDrop(const QList<QUrl>& urls);
    // Starts a run: folders among the URLs are walked (recursively or not); single files are
    // taken as they are.
    void processURLs(const QList<QUrl>& urls, bool recursive);
    // The run of these files, then completion.
    void loadFiles(const QList<QUrl>& urls, std::function<void()> completion = {});
    // Appends the folder's supported files (and, recursively, its subfolders'). Hidden entries
    // are skipped, and so are links to folders (links to files are taken); a folder met twice
    // is walked once. An unreadable folder logs and adds nothing.
    static void processDirectory(const QString& folder, QList<QUrl>& result, bool recursive);
    // The remembered answer, or the "Include Subfolders?" question when a chosen folder has
    // subfolders; true (recursive) when none has. Nothing when the question was closed without
    // an answer: then nothing is added and nothing remembered.
    std::optional<bool> decideRecursion(bool anySubfolders);
    // Turns thumbnails off with a one-time "Info" alert above the threshold.
    void thumbnailCheck();

    // While any run, or any look into folders before one, is under way.
    bool isLoading() const { return activeRuns > 0; }
    int totalPhotosAdded() const { return totalAdded; }
    void setTotalPhotosAdded(int total);
    int totalPhotosToBeAdded() const { return toBeAdded; }
    // The file names the latest run has added so far.
    QStringList selectedFileNames() const;
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
    // What a look into the named folders found, on a worker.
    struct Probe {
        bool anySubfolders = false;
        int countAhead = 0;
    };
    struct Run;
    static Probe probe(const QList<QUrl>& urls, bool countAhead);
    // Looks into the URLs on a worker, then decides and runs on the GUI thread.
    void take(const QList<QUrl>& urls, bool fromDialog);
    void run(const QList<QUrl>& urls, std::optional<bool> expandFolders, std::function<void()> completion);
    // Runs fn with this intake on the GUI thread, if it still exists by then.
    void onGuiThread(std::function<void(FileIntake&)> fn);
    void beginWork();
    void endWork();

    Queue& queue;
    SettingsStore& settings;
    UserDialogs& dialogs;
    int activeRuns = 0;
    int totalAdded = 0;
    int toBeAdded = 0;
    std::shared_ptr<Run> latestRun;
    QList<QUrl> urlsToLoad;
    std::optional<QUrl> selectedFolder;
    bool thumbnailsWanted = true;
    bool alertShown = false;
    // Tells workers that nobody waits for their items any more.
    std::shared_ptr<std::atomic_bool> alive = std::make_shared<std::atomic_bool>(true);
    QThreadPool workers;
};

} // namespace tb
