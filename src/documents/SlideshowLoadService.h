#pragma once

#include "DocumentReader.h"
#include "SlideshowDocument.h"
#include "audio/AudioTrack.h"
#include "media/IdentifiableImage.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

namespace tb {

class Analytics;
class BookmarkResolver;

struct SlideshowLoadError {
    enum class Kind {
        loadFailed = 0,
        // Kept for completeness: another version is only a warning, so nothing reports this.
        incompatibleVersion = 1,
        fileNotFound = 2,
    };
    Kind kind = Kind::loadFailed;
    QString detail; // the message, or the version

    QString description() const;
};

// What restoring found, in document order, and the saved records of what it did not.
template <typename Item, typename Saved> struct Restored {
    QList<Item> items;
    QList<Saved> missing;

    QStringList missingNames() const
    {
        QStringList names;
        for (const Saved& saved : missing)
            names.append(saved.filename);
        return names;
    }
};
using RestoredImages = Restored<IdentifiableImage, SavedImageInfo>;
using RestoredTracks = Restored<AudioTrack, SavedAudioTrack>;

// Reads slideshow documents and finds their files again: by bookmark first, then by the
// original path, the path relative to the base folder, and the file name in the base folder.
// Every step is logged, as users send these logs when a file went missing.
class SlideshowLoadService final : public DocumentReader {
public:
    explicit SlideshowLoadService(Analytics& analytics);

    // Reads and decodes the file; a bad document changes nothing anywhere.
    std::variant<SlideshowDocument, SlideshowLoadError> loadDocument(const QString& filePath);
    // As loadDocument, with the error as its description.
    std::variant<SlideshowDocument, QString> read(const QString& filePath) override;

    // Run on any thread. One resolver per document: items that moved out of one folder cost one
    // search for all of them.
    static RestoredImages restoreImages(const SlideshowDocument& document, const std::optional<QString>& baseFolder,
                                        BookmarkResolver& resolver);
    static RestoredTracks restoreAudioTracks(const SlideshowDocument& document,
                                             const std::optional<QString>& baseFolder, BookmarkResolver& resolver);

private:
    Analytics& analytics;
};

} // namespace tb
