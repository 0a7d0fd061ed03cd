#pragma once

#include "media/IdentifiableImage.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace tb {

class FileSystems;
class UserDialogs;

// Asks the user, once per folder and run, to pick the folder that holds a document's files when
// they lie on a network volume. Picking grants nothing beyond the file permissions: a picked
// folder counts as open when the program can read it. Nothing here ever stops a document from
// loading. Used on the GUI thread only.
class FolderAccessHelper {
public:
    FolderAccessHelper(UserDialogs& dialogs, const FileSystems& fileSystems);
    ~FolderAccessHelper();
    FolderAccessHelper(const FolderAccessHelper&) = delete;
    FolderAccessHelper& operator=(const FolderAccessHelper&) = delete;

    // The folder of the first file that lies on a network volume, or nothing when none does.
    // Files in several folders are treated as if all lay in the first one's.
    std::optional<QString> detectNetworkVolumeFolder(const QList<QUrl>& urls);
    // Asks for access to the folder; the folder the user picked (any folder, not only the one
    // suggested), or nothing when the user skipped or cancelled.
    std::optional<QString> requestFolderAccess(const QString& folder);
    // Before a document's images are applied: asks for their network folder unless it is open.
    void secureAccessForLoad(const QList<IdentifiableImage>& images);
    void stopAccessingAll();

    // The folders opened in this run, each once.
    const QStringList& activeSecurityScopedURLs() const { return openFolders; }

private:
    UserDialogs& dialogs;
    const FileSystems& fileSystems;
    QStringList openFolders;
};

} // namespace tb
