#include "MissingFilesFlow.h"

#include "core/Logger.h"
#include "core/UserDialogs.h"
#include "media/ClipProbe.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QSet>
#include <QUrl>
#include <QUuid>

#include <algorithm>

namespace tb {

namespace {

QString lastPathComponent(const QString& savedPath, const QString& fallback)
{
    const QString name = QFileInfo(savedPath).fileName();
    return name.isEmpty() ? fallback : name;
}

bool nothingMissing(const OpeningFiles& files) { return files.missingImages.isEmpty() && files.missingAudio.isEmpty(); }

QString missingFilesText(const OpeningFiles& files, qsizetype available)
{
    if (available == 0)
        return QStringLiteral("All files are missing from their original locations. This might be due to:\n\n"
                              "• Files were moved or renamed\n• External drives were disconnected\n"
                              "• Sandboxing restrictions\n\nYou can try to locate the files manually.");
    QStringList names;
    for (const SavedImageInfo& saved : files.missingImages)
        names.append(MissingFilesFlow::displayName(saved));
    for (const SavedAudioTrack& saved : files.missingAudio)
        names.append(MissingFilesFlow::displayName(saved));
    QStringList shown;
    for (const QString& name : names.first(std::min<qsizetype>(names.size(), 3)))
        shown.append(QStringLiteral("• ") + name);
    const QString tail = names.size() > 3 ? QStringLiteral("• ... and %1 more").arg(names.size() - 3) : QString();
    return QString::number(names.size()) +
           QStringLiteral(" files could not be found from their original locations.\n") + QString::number(available) +
           QStringLiteral(" files are available and can be loaded.\n\nYou can continue loading the slideshow with "
                          "the available files.\n\nMissing files:\n") +
           shown.join(QLatin1Char('\n')) + QLatin1Char('\n') + tail;
}

// A chosen folder stands for what lies directly in it, hidden or not and of any type; a chosen
// file for itself. The user's order of choice decides which of two equal names wins.
QStringList candidatesFrom(const QStringList& chosen)
{
    QStringList candidates;
    for (const QString& path : chosen) {
        const QFileInfo info(path);
        if (!info.isDir()) {
            candidates.append(info.absoluteFilePath());
            continue;
        }
        if (!info.isReadable()) {
            logWarning(QStringLiteral("Cannot list the folder chosen for missing files: ") + path);
            continue;
        }
        const QFileInfoList children =
            QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
        for (const QFileInfo& child : children)
            candidates.append(child.absoluteFilePath());
    }
    return candidates;
}

// The first candidate of exactly this name, case included.
std::optional<QFileInfo> match(const QString& name, const QStringList& candidates)
{
    for (const QString& candidate : candidates) {
        const QFileInfo info(candidate);
        if (info.fileName() == name)
            return info;
    }
    return std::nullopt;
}

// Only what the file itself tells is kept, and even a clip comes in as a still: the document's
// entry may describe another file than the one that carries its name now.
IdentifiableImage relocatedImage(const QFileInfo& file)
{
    const QString filePath = file.absoluteFilePath();
    return IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(filePath), file.fileName(), file.absolutePath(),
                             fileCreationDate(filePath), file.suffix().toLower() == QLatin1String("gif"), false,
                             std::nullopt);
}

} // namespace

MissingFilesFlow::MissingFilesFlow(UserDialogs& dialogs) : dialogs(dialogs) {}

QString MissingFilesFlow::displayName(const SavedImageInfo& saved)
{
    return lastPathComponent(saved.originalPath, saved.filename);
}

QString MissingFilesFlow::displayName(const SavedAudioTrack& saved)
{
    return lastPathComponent(saved.originalPath, saved.filename);
}

MissingFilesFlow::Next MissingFilesFlow::run(const SlideshowDocument&, OpeningFiles& files)
{
    if (nothingMissing(files))
        return Next::folderAccessThenApply;
    const OpeningFiles restored = files;
    for (bool laterRound = false;; laterRound = true) {
        switch (showMissingFilesAlert(files, laterRound)) {
        case Answer::cancel:
            return Next::cancel;
        case Answer::continueWithAvailable:
            return laterRound ? Next::apply : Next::folderAccessThenApply;
        case Answer::locate:
            break;
        }
        if (!locateMissingFiles(files)) {
            // Restoring starts over from the document, so nothing located so far may leak into it.
            files = restored;
            return Next::restartRestoration;
        }
        if (nothingMissing(files))
            return Next::applyAllFound;
    }
}

MissingFilesFlow::Answer MissingFilesFlow::showMissingFilesAlert(const OpeningFiles& files, bool laterRound)
{
    const qsizetype available = files.images.size() + files.tracks.size();
    const QStringList buttons =
        available == 0 ? QStringList{QStringLiteral("Try to Locate Files"), QStringLiteral("Cancel")}
                       : QStringList{QStringLiteral("Continue with Available Files"),
                                     QStringLiteral("Try to Locate Missing Files"), QStringLiteral("Cancel")};
    const QuestionAnswer answer = dialogs.question(AlertStyle::Warning, QStringLiteral("Some Files Could Not Be Found"),
                                                   missingFilesText(files, available), buttons);
    // Closing the alert answers with its last button, Cancel.
    const QString pressed = buttons.value(answer.button, buttons.last());
    if (pressed == QLatin1String("Continue with Available Files"))
        return Answer::continueWithAvailable;
    if (pressed != QLatin1String("Cancel"))
        return Answer::locate;
    logInfo(laterRound ? QStringLiteral("User cancelled after partial relocation")
                       : QStringLiteral("User cancelled loading slideshow due to missing files"));
    return Answer::cancel;
}

bool MissingFilesFlow::locateMissingFiles(OpeningFiles& files)
{
    OpenPanelOptions panel;
    panel.title = QStringLiteral("Locate Missing Files");
    panel.message = QStringLiteral("Please select the missing files or a folder containing them");
    panel.nameFilters = locateNameFilters();
    panel.canChooseFiles = true;
    panel.canChooseDirectories = true;
    panel.allowsMultipleSelection = true;
    const QStringList chosen = dialogs.openPanel(panel);
    if (chosen.isEmpty())
        return false;
    const QStringList candidates = candidatesFrom(chosen);

    QList<SavedImageInfo> stillMissingImages;
    for (const SavedImageInfo& saved : std::as_const(files.missingImages)) {
        const QString name = displayName(saved);
        if (const auto found = match(name, candidates)) {
            files.images.append(relocatedImage(*found));
            logInfo(QStringLiteral("Relocated image: ") + name);
        } else {
            stillMissingImages.append(saved);
        }
    }
    files.missingImages = stillMissingImages;

    QList<SavedAudioTrack> stillMissingAudio;
    for (const SavedAudioTrack& saved : std::as_const(files.missingAudio)) {
        const QString name = displayName(saved);
        if (const auto found = match(name, candidates)) {
            const QString filePath = found->absoluteFilePath();
            files.tracks.append(AudioTrack::fromFile(QUrl::fromLocalFile(filePath), clipDuration(filePath)));
            logInfo(QStringLiteral("Relocated audio: ") + name);
        } else {
            stillMissingAudio.append(saved);
        }
    }
    files.missingAudio = stillMissingAudio;
    return true;
}

void MissingFilesFlow::showAllFound()
{
    dialogs.alert(AlertStyle::Information, QStringLiteral("Files Successfully Located"),
                  QStringLiteral("All missing files have been found and the slideshow has been loaded."));
}

QStringList MissingFilesFlow::locateNameFilters()
{
    QStringList patterns;
    QSet<QString> seen;
    auto add = [&](const QStringList& suffixes) {
        for (const QString& suffix : suffixes) {
            const QString pattern = QStringLiteral("*.") + suffix;
            if (!seen.contains(pattern)) {
                seen.insert(pattern);
                patterns.append(pattern);
            }
        }
    };
    // JPEG, PNG, HEIC, GIF, then four types named by their extension, each with its other
    // spellings; AVI; audio of every kind the system knows, then five audio types named outright
    // in case the system's list lacks them.
    add({QStringLiteral("jpg"), QStringLiteral("jpeg")});
    add({QStringLiteral("png")});
    add({QStringLiteral("heic")});
    add({QStringLiteral("gif")});
    add({QStringLiteral("webp")});
    add({QStringLiteral("avif")});
    add({QStringLiteral("jxl")});
    add({QStringLiteral("tiff"), QStringLiteral("tif")});
    add({QStringLiteral("avi")});
    const QMimeDatabase mimeTypes;
    for (const QMimeType& type : mimeTypes.allMimeTypes())
        if (type.name().startsWith(QLatin1String("audio/")))
            add(type.suffixes());
    add({QStringLiteral("mp3"), QStringLiteral("wav"), QStringLiteral("aac"), QStringLiteral("aiff"),
         QStringLiteral("m4a")});
    // One filter, not one per type: the dialog shows a single filter at a time, and every type
    // is allowed together.
    return {QStringLiteral("Pictures and audio (%1)").arg(patterns.join(QLatin1Char(' ')))};
}

} // namespace tb
