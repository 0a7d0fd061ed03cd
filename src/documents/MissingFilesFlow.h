#pragma once

#include "SlideshowDocument.h"
#include "audio/AudioTrack.h"
#include "media/IdentifiableImage.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace tb {

class UserDialogs;

// What an opening has found so far. Relocated items stand behind the restored ones, in the
// order of the missing lists, so they lose their place in the document.
struct OpeningFiles {
    QList<IdentifiableImage> images;
    QList<AudioTrack> tracks;
    QList<SavedImageInfo> missingImages; // shortened as files are located
    QList<SavedAudioTrack> missingAudio;
};

// The conversation about a document's missing files: load what is there, point to where the
// files went, or give up. Files are found again by their name alone. Runs with modal dialogs on
// the GUI thread; nothing reaches the main window until the caller applies the result.
class MissingFilesFlow {
public:
    enum class Next : int {
        cancel = 0,                // the user gave up: nothing changes
        restartRestoration = 1,    // the locate panel was cancelled: restore again from scratch
        folderAccessThenApply = 2, // continue with the available files in the first round
        apply = 3,                 // continue with the available files in a later round
        applyAllFound = 4,         // everything located: apply, then showAllFound()
    };
    enum class Answer : int { continueWithAvailable = 0, locate = 1, cancel = 2 };

    explicit MissingFilesFlow(UserDialogs& dialogs);

    // Runs rounds until the user decides; `files` gains what is relocated. After
    // restartRestoration `files` is as it came in. The document is the one being opened.
    Next run(const SlideshowDocument& document, OpeningFiles& files);
    // The success alert of applyAllFound, for after the document was applied.
    void showAllFound();

    // One round's question. A later round differs only in the line it logs on cancel.
    Answer showMissingFilesAlert(const OpeningFiles& files, bool laterRound);
    // Asks for the files or their folder and moves what it finds from the missing lists to the
    // items. False when the panel was cancelled.
    bool locateMissingFiles(OpeningFiles& files);

    // What the locate panel lets the user pick. Movies in MPEG-4 and QuickTime containers are
    // left out on purpose: a clip can be located only through its folder.
    static QStringList locateNameFilters();
    // How a missing entry is named to the user and matched: the last part of its saved path.
    static QString displayName(const SavedImageInfo& saved);
    static QString displayName(const SavedAudioTrack& saved);

private:
    UserDialogs& dialogs;
};

} // namespace tb
