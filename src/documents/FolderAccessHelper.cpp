#include "FolderAccessHelper.h"

#include "core/FileSystems.h"
#include "core/Logger.h"
#include "core/UserDialogs.h"
#include "media/Bookmark.h"

#include <QDir>
#include <QFileInfo>

namespace tb {

namespace {

QString folderOf(const QString& filePath) { return QFileInfo(filePath).absolutePath(); }

} // namespace

FolderAccessHelper::FolderAccessHelper(UserDialogs& dialogs, const FileSystems& fileSystems)
    : dialogs(dialogs), fileSystems(fileSystems)
{
}

FolderAccessHelper::~FolderAccessHelper() { stopAccessingAll(); }

std::optional<QString> FolderAccessHelper::detectNetworkVolumeFolder(const QList<QUrl>& urls)
{
    QStringList folders;
    for (const QUrl& url : urls) {
        const QString path = url.toLocalFile();
        if (!path.isEmpty() && fileSystems.isNetworkPath(path))
            folders.append(folderOf(path));
    }
    if (folders.isEmpty())
        return std::nullopt;
    const QString candidate = folders.first();
    if (folders.count(candidate) == folders.size())
        logInfo(QStringLiteral("📁 Detected network volume files in common folder: ") + candidate);
    return candidate;
}

std::optional<QString> FolderAccessHelper::requestFolderAccess(const QString& folder)
{
    const QString title = QStringLiteral("Network Drive Access Required");
    const QString text = QStringLiteral("Your slideshow contains files from a network drive (NAS).\n\nTo display "
                                        "images properly, please grant access to the folder:\n") +
                         QFileInfo(folder).fileName() +
                         QStringLiteral("\n\nYou'll be asked to select this folder in the next dialog.");
    const QuestionAnswer answer = dialogs.question(AlertStyle::Information, title, text,
                                                   {QStringLiteral("Grant Access"), QStringLiteral("Skip")});
    // Closing the question is a skip: it answers with the last button.
    if (answer.button != 0) {
        logInfo(QStringLiteral("⏭️ User skipped folder access request"));
        return std::nullopt;
    }

    OpenPanelOptions panel;
    panel.title = title;
    panel.message = QStringLiteral("Select the folder containing your slideshow images");
    panel.prompt = QStringLiteral("Grant Access");
    panel.canChooseFiles = false;
    panel.canChooseDirectories = true;
    panel.canCreateDirectories = false;
    panel.allowsMultipleSelection = false;
    panel.directory = folder;
    const QStringList chosen = dialogs.openPanel(panel);
    if (chosen.isEmpty()) {
        logWarning(QStringLiteral("❌ User cancelled folder selection"));
        return std::nullopt;
    }

    const QString granted = QDir::cleanPath(chosen.first());
    logInfo(QStringLiteral("✅ User granted access to folder: ") + granted);
    if (startAccessing(granted)) {
        if (!openFolders.contains(granted))
            openFolders.append(granted);
        logInfo(QStringLiteral("🔓 Started accessing security-scoped resource: ") + granted);
    } else {
        logWarning(
            QStringLiteral("⚠️ Failed to start accessing security-scoped resource, but folder was selected"));
    }
    return granted;
}

void FolderAccessHelper::secureAccessForLoad(const QList<IdentifiableImage>& images)
{
    QList<QUrl> urls;
    urls.reserve(images.size());
    for (const IdentifiableImage& image : images)
        urls.append(image.url());
    const std::optional<QString> folder = detectNetworkVolumeFolder(urls);
    if (!folder)
        return;
    if (openFolders.contains(QDir::cleanPath(*folder))) {
        logInfo(QStringLiteral("✅ Already have folder access"));
        return;
    }
    logInfo(QStringLiteral("📁 Network volume detected, requesting folder access"));
    if (const auto granted = requestFolderAccess(*folder))
        logInfo(QStringLiteral("✅ Folder access granted: ") + *granted);
    else
        logWarning(QStringLiteral("⚠️ Folder access not granted, loading anyway (may have issues)"));
}

void FolderAccessHelper::stopAccessingAll()
{
    // Reading needs no handle on Linux, so there is nothing to give back but the record.
    for (const QString& folder : std::as_const(openFolders))
        logInfo(QStringLiteral("🔒 Stopped accessing security-scoped resource: ") + folder);
    openFolders.clear();
}

} // namespace tb
