#include "FileIntake.h"

#include "MediaTypes.h"
#include "Queue.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

namespace tb {

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

} // namespace

FileIntake::FileIntake(Queue& queue, SettingsStore& settings, UserDialogs& dialogs, QObject* parent)
    : QObject(parent), queue(queue), settings(settings), dialogs(dialogs)
{
}

FileIntake::~FileIntake() { alive->store(false); }

bool FileIntake::isFolder(const QUrl& url) { return QFileInfo(url.toLocalFile()).isDir(); }

bool FileIntake::hasSubfolder(const QString& folder)
{
    const auto entries = listFolder(folder, nullptr);
    return entries && std::any_of(entries->begin(), entries->end(), [](const QFileInfo& e) { return e.isDir(); });
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
    selectedFolder = urls.size() == 1 && isFolder(urls.first()) ? std::optional<QUrl>(urls.first()) : std::nullopt;
    const bool recursive = decideRecursion(urls);
    countAhead(urls);
    processURLs(urls, recursive);
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
    if (local.isEmpty())
        return;
    processURLs(local, decideRecursion(local));
}

bool FileIntake::decideRecursion(const QList<QUrl>& urls)
{
    const bool remembered = settings.value(Settings::rememberFolderRecursion);
    const bool anySubfolders = std::any_of(
        urls.begin(), urls.end(), [](const QUrl& url) { return isFolder(url) && hasSubfolder(url.toLocalFile()); });
    if (anySubfolders && !remembered) {
        const QuestionAnswer answer = dialogs.question(
            AlertStyle::Information, QStringLiteral("Include Subfolders?"),
            QStringLiteral("The selected folder contains subfolders. Would you like to include images from all "
                           "subfolders, or only from the selected folder?"),
            {QStringLiteral("All Subfolders"), QStringLiteral("This Folder Only")},
            QStringLiteral("Remember my choice"));
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

void FileIntake::countAhead(const QList<QUrl>& urls)
{
    int total = 0;
    for (const QUrl& url : urls) {
        const QString path = url.toLocalFile();
        if (isFolder(url)) {
            QString error;
            const auto entries = listFolder(path, &error);
            if (!entries) {
                logError(QStringLiteral("Error reading contents of directory: ") + error);
                continue;
            }
            const int n = supportedCount(*entries);
            logInfo(QStringLiteral("Directory: %1, Image file count: %2").arg(QFileInfo(path).fileName()).arg(n));
            total += n;
        } else if (isSupportedExtension(QFileInfo(path).suffix())) {
            ++total;
        }
    }
    toBeAdded = total;
}

void FileIntake::processURLs(const QList<QUrl>& urls, bool recursive)
{
    // Folders are walked on the worker too: listing a tree of 20,000 files takes longer than
    // the window may stand still.
    run(urls, recursive, [this] { thumbnailCheck(); });
}

void FileIntake::processDirectory(const QString& folder, QList<QUrl>& result, bool recursive)
{
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
        if (entry.isDir() && recursive)
            processDirectory(entry.filePath(), result, true);
        else if (isSupportedExtension(entry.suffix()))
            result.append(QUrl::fromLocalFile(entry.filePath()));
    }
}

void FileIntake::loadFiles(const QList<QUrl>& urls, std::function<void()> completion)
{
    run(urls, std::nullopt, std::move(completion));
}

void FileIntake::run(const QList<QUrl>& chosen, std::optional<bool> expandFolders, std::function<void()> completion)
{
    loading = true;
    Q_EMIT loadingChanged(true);
    fileNames.clear();

    QPointer<FileIntake> self(this);
    auto stillWanted = alive;
    // Results go through the application object, which outlives every window; each runs only
    // if this intake still exists. Posts from one worker arrive in the order they were made.
    auto post = [self](auto fn) {
        QMetaObject::invokeMethod(
            qApp,
            [self, fn] {
                if (self)
                    fn(*self);
            },
            Qt::QueuedConnection);
    };
    // The worker touches nothing of the window: it builds items and posts them in batches.
    (void)QtConcurrent::run([post, stillWanted, chosen, expandFolders, completion = std::move(completion)] {
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
                post([batch, names](FileIntake& intake) {
                    intake.queue.append(batch);
                    intake.fileNames.append(names);
                    intake.setTotalPhotosAdded(intake.totalAdded + int(batch.size()));
                    Q_EMIT intake.itemsAdded(int(batch.size()));
                });
                batch.clear();
                names.clear();
            }
        }
        post([completion](FileIntake& intake) {
            if (thumbnailsEnabledTreshold >= intake.totalAdded)
                intake.thumbnailsWanted = true;
            intake.thumbnailCheck();
            intake.loading = false;
            Q_EMIT intake.loadingChanged(false);
            Q_EMIT intake.toast(QStringLiteral("%1 files added").arg(intake.fileNames.size()));
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
