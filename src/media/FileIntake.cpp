#include "FileIntake.h"

#include "MediaTypes.h"
#include "Queue.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>

#include <sys/stat.h>

namespace tb {

// One run's own state: the names it added, for its toast.
struct FileIntake::Run {
    QStringList names;
};

namespace {

// A listing of a folder's direct children, hidden ones included, or why it failed.
std::optional<QFileInfoList> listFolder(const QString& folder, QString* error)
{
    QDir dir(folder);
    if (!dir.exists() || !QFileInfo(folder).isReadable()) {
        if (error)
            *error = QStringLiteral("The folder “%1” couldn’t be opened.").arg(QFileInfo(folder).fileName());
        return std::nullopt;
    }
    return dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
}

int supportedCount(const QFileInfoList& entries)
{
    return int(std::count_if(entries.begin(), entries.end(),
                             [](const QFileInfo& entry) { return isSupportedExtension(entry.suffix()); }));
}

// Only real folders are looked into: a link to a folder could lead back up the tree.
bool isRealFolder(const QFileInfo& entry) { return entry.isDir() && !entry.isSymLink(); }

bool isFolder(const QUrl& url) { return QFileInfo(url.toLocalFile()).isDir(); }

// Device and inode: one folder reached twice (a bind mount inside itself) is walked once.
std::optional<std::pair<quint64, quint64>> folderIdentity(const QString& folder)
{
    struct stat info {};
    if (::stat(QFile::encodeName(folder).constData(), &info) != 0)
        return std::nullopt;
    return std::pair<quint64, quint64>(quint64(info.st_dev), quint64(info.st_ino));
}

void walk(const QString& folder, QList<QUrl>& result, bool recursive, QSet<std::pair<quint64, quint64>>& seen)
{
    if (const auto identity = folderIdentity(folder)) {
        if (seen.contains(*identity))
            return;
        seen.insert(*identity);
    }
    QString error;
    const auto entries = listFolder(folder, &error);
    if (!entries) {
        logError(QStringLiteral("Error reading contents of directory: ") + error);
        return;
    }
    logInfo(QStringLiteral("Processing directory: %1 (%2 image files detected)")
                .arg(QFileInfo(folder).fileName())
                .arg(supportedCount(*entries)));
    for (const QFileInfo& entry : *entries) {
        if (entry.isHidden())
            continue;
        if (isRealFolder(entry)) {
            if (recursive)
                walk(entry.filePath(), result, true, seen);
        } else if (isSupportedExtension(entry.suffix())) {
            result.append(QUrl::fromLocalFile(entry.filePath()));
        }
    }
}

} // namespace

FileIntake::FileIntake(Queue& queue, SettingsStore& settings, UserDialogs& dialogs, QObject* parent)
    : QObject(parent), queue(queue), settings(settings), dialogs(dialogs)
{
    // Two runs side by side each get a thread; a third waits for one.
    workers.setMaxThreadCount(2);
}

FileIntake::~FileIntake()
{
    alive->store(false);
    workers.waitForDone();
}

QStringList FileIntake::selectedFileNames() const { return latestRun ? latestRun->names : QStringList(); }

void FileIntake::onGuiThread(std::function<void(FileIntake&)> fn)
{
    // Through the application object, which outlives every window; posts from one worker
    // arrive in the order they were made.
    QPointer<FileIntake> self(this);
    QMetaObject::invokeMethod(
        qApp,
        [self, fn = std::move(fn)] {
            if (self)
                fn(*self);
        },
        Qt::QueuedConnection);
}

void FileIntake::beginWork()
{
    if (activeRuns++ == 0)
        Q_EMIT loadingChanged(true);
}

void FileIntake::endWork()
{
    if (--activeRuns == 0)
        Q_EMIT loadingChanged(false);
}

void FileIntake::selectFiles()
{
    OpenPanelOptions panel;
    panel.title = QStringLiteral("Select files or folders");
    panel.allowsMultipleSelection = true;
    panel.canChooseFiles = true;
    panel.canChooseDirectories = true;
    panel.nameFilters = {QStringLiteral("Photos and clips (*.jpg *.jpeg *.png *.heic *.gif *.webp *.avif *.jxl *.tif "
                                        "*.tiff *.mp4 *.m4v *.mov *.avi)")};
    const QStringList chosen = dialogs.openPanel(panel);
    if (chosen.isEmpty())
        return;
    QList<QUrl> urls;
    for (const QString& path : chosen)
        urls.append(QUrl::fromLocalFile(path));
    urlsToLoad = urls;
    // The dialog has just shown what it chose: one look at it here costs nothing.
    selectedFolder = urls.size() == 1 && isFolder(urls.first()) ? std::optional<QUrl>(urls.first()) : std::nullopt;
    take(urls, true);
}

void FileIntake::handleDrop(const QList<QUrl>& urls)
{
    QList<QUrl> local;
    for (const QUrl& url : urls) {
        if (url.isLocalFile())
            local.append(url);
        else
            logError(QStringLiteral("Error loading dropped item: ") + url.toString());
    }
    if (!local.isEmpty())
        take(local, false);
}

FileIntake::Probe FileIntake::probe(const QList<QUrl>& urls, bool countAhead)
{
    Probe found;
    for (const QUrl& url : urls) {
        const QString path = url.toLocalFile();
        if (!isFolder(url)) {
            if (countAhead && isSupportedExtension(QFileInfo(path).suffix()))
                ++found.countAhead;
            continue;
        }
        QString error;
        const auto entries = listFolder(path, &error);
        if (!entries) {
            if (countAhead)
                logError(QStringLiteral("Error reading contents of directory: ") + error);
            continue;
        }
        found.anySubfolders = found.anySubfolders || std::any_of(entries->begin(), entries->end(), isRealFolder);
        if (countAhead) {
            const int n = supportedCount(*entries);
            logInfo(QStringLiteral("Directory: %1, Image file count: %2").arg(QFileInfo(path).fileName()).arg(n));
            found.countAhead += n;
        }
    }
    return found;
}

void FileIntake::take(const QList<QUrl>& urls, bool fromDialog)
{
    beginWork();
    workers.start([this, urls, fromDialog] {
        const Probe found = probe(urls, fromDialog);
        onGuiThread([urls, fromDialog, found](FileIntake& intake) {
            if (fromDialog)
                intake.toBeAdded = found.countAhead;
            if (const std::optional<bool> recursive = intake.decideRecursion(found.anySubfolders))
                intake.processURLs(urls, *recursive);
            intake.endWork(); // after the run began, so the spinner does not flicker
        });
    });
}

std::optional<bool> FileIntake::decideRecursion(bool anySubfolders)
{
    const bool remembered = settings.value(Settings::rememberFolderRecursion);
    if (anySubfolders && !remembered) {
        const QuestionAnswer answer = dialogs.question(
            AlertStyle::Information, QStringLiteral("Include Subfolders?"),
            QStringLiteral("The selected folder contains subfolders. Would you like to include images from all "
                           "subfolders, or only from the selected folder?"),
            {QStringLiteral("All Subfolders"), QStringLiteral("This Folder Only")},
            QStringLiteral("Remember my choice"));
        if (answer.dismissed)
            return std::nullopt;
        const bool all = answer.button == 0;
        if (answer.checkBoxChecked) {
            settings.set(Settings::rememberFolderRecursion, true);
            settings.set(Settings::folderRecursionDepth, all ? -1 : 0);
        }
        return all;
    }
    if (!remembered)
        return true;
    return settings.value(Settings::folderRecursionDepth) == -1;
}

void FileIntake::processURLs(const QList<QUrl>& urls, bool recursive)
{
    run(urls, recursive, [this] { thumbnailCheck(); });
}

void FileIntake::processDirectory(const QString& folder, QList<QUrl>& result, bool recursive)
{
    QSet<std::pair<quint64, quint64>> seen;
    walk(folder, result, recursive, seen);
}

void FileIntake::loadFiles(const QList<QUrl>& urls, std::function<void()> completion)
{
    run(urls, std::nullopt, std::move(completion));
}

void FileIntake::run(const QList<QUrl>& chosen, std::optional<bool> expandFolders, std::function<void()> completion)
{
    beginWork();
    auto state = std::make_shared<Run>();
    latestRun = state;
    auto stillWanted = alive;
    // The worker touches nothing of the window: it builds items and posts them in batches.
    workers.start([this, state, stillWanted, chosen, expandFolders, completion = std::move(completion)] {
        QList<QUrl> urls;
        if (expandFolders) {
            for (const QUrl& url : chosen) {
                if (isFolder(url))
                    processDirectory(url.toLocalFile(), urls, *expandFolders);
                else
                    urls.append(url); // what the dialog lets through, or whatever is dropped, enters the queue
            }
        } else {
            urls = chosen;
        }
        QList<IdentifiableImage> batch;
        QStringList names;
        for (qsizetype i = 0; i < urls.size() && stillWanted->load(); ++i) {
            batch.append(makeItem(urls[i]));
            names.append(batch.last().filename());
            if (batch.size() == batchSize || i == urls.size() - 1) {
                onGuiThread([batch, names, state](FileIntake& intake) {
                    intake.queue.append(batch);
                    state->names.append(names);
                    intake.setTotalPhotosAdded(intake.totalAdded + int(batch.size()));
                    Q_EMIT intake.itemsAdded(int(batch.size()));
                });
                batch.clear();
                names.clear();
            }
        }
        onGuiThread([completion, state](FileIntake& intake) {
            if (thumbnailsEnabledTreshold >= intake.totalAdded)
                intake.thumbnailsWanted = true;
            intake.thumbnailCheck();
            Q_EMIT intake.toast(QStringLiteral("%1 files added").arg(state->names.size()));
            intake.endWork();
            if (completion)
                completion();
        });
    });
}

void FileIntake::setTotalPhotosAdded(int total)
{
    if (total == totalAdded)
        return;
    totalAdded = total;
    logInfo(QStringLiteral("Total photos added: %1").arg(total));
}

void FileIntake::thumbnailCheck()
{
    const bool dontShow = settings.value(Settings::dontShowThumbnailAlert);
    if (totalAdded <= thumbnailsEnabledTreshold || alertShown || dontShow)
        return;
    thumbnailsWanted = false;
    alertShown = true;
    // Shown from the event loop, once the run's own work is done. It only comes while the
    // setting is off, so its box starts unticked.
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QuestionAnswer answer = dialogs.question(
                AlertStyle::Information, QStringLiteral("Info"),
                QStringLiteral("Total number of added photos is more than %1 - thumbnails will not be displayed "
                               "(better performance).")
                    .arg(thumbnailsEnabledTreshold),
                {QStringLiteral("OK")}, QStringLiteral("Don't show this message again"));
            settings.set(Settings::dontShowThumbnailAlert, answer.checkBoxChecked);
        },
        Qt::QueuedConnection);
}

} // namespace tb
