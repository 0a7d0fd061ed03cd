#include "SlideshowLoadService.h"

#include "DocumentCodec.h"
#include "core/Analytics.h"
#include "core/Logger.h"
#include "media/Bookmark.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace tb {

namespace {

QString yesNo(bool value) { return value ? QStringLiteral("true") : QStringLiteral("false"); }

// The lines that differ between pictures and sound.
struct Wording {
    const char* attempting;
    const char* fromBookmark;
    const char* foundAtOriginal;
    const char* notAtOriginal;
    const char* foundAtRelative;
    const char* notAtRelative;
    const char* foundByName;
    const char* notByName;
};

const Wording imageWording{"🔍 Attempting to restore image: ", "✅ Successfully restored image from bookmark: ",
                           "✅ Found file at original path: ", "❌ File not found at original path: ",
                           "✅ Found file at relative path: ", "❌ File not found at relative path: ",
                           "✅ Found file by filename: ",      "❌ File not found by filename: "};
const Wording trackWording{
    "🔍 Attempting to restore audio track: ", "✅ Successfully restored audio track from bookmark: ",
    "✅ Found audio file at original path: ", "❌ Audio file not found at original path: ",
    "✅ Found audio file at relative path: ", "❌ Audio file not found at relative path: ",
    "✅ Found audio file by filename: ",      "❌ Audio file not found by filename: "};

QString text(const char* line) { return QString::fromUtf8(line); }

// Where the file of one saved item is now, or nothing.
std::optional<QString> findFile(const Wording& words, const QString& name, const QString& originalPath,
                                const std::optional<QString>& relativePath,
                                const std::optional<QByteArray>& bookmarkData, const std::optional<QString>& baseFolder,
                                BookmarkResolver& resolver)
{
    logInfo(text(words.attempting) + name);
    if (!bookmarkData) {
        logWarning(QStringLiteral("❌ No bookmark data available for: ") + name);
    } else {
        logInfo(QStringLiteral("📋 Found bookmark data for: ") + name);
        const auto resolved = resolver.resolve(*bookmarkData);
        if (const auto* error = std::get_if<QString>(&resolved)) {
            logError(QStringLiteral("💥 Failed to resolve bookmark data for %1: %2").arg(name, *error));
        } else {
            const ResolvedBookmark& found = std::get<ResolvedBookmark>(resolved);
            logInfo(QStringLiteral("🔗 Resolved bookmark URL: ") + found.path);
            // A stale bookmark is used as it is; the document on disk is not rewritten.
            logInfo(QStringLiteral("📊 Bookmark is stale: ") + yesNo(found.isStale));
            if (!QFileInfo::exists(found.path)) {
                logWarning(QStringLiteral("📁 File doesn't exist at bookmark URL: ") + found.path);
            } else if (!startAccessing(found.path)) {
                logWarning(QStringLiteral("🔒 Failed to start accessing security-scoped resource: ") + found.path);
            } else {
                logInfo(text(words.fromBookmark) + name);
                return found.path;
            }
        }
    }

    logInfo(QStringLiteral("🔄 Trying fallback methods for: ") + name);
    auto tryPath = [](const QString& path, const char* found, const char* missing) -> std::optional<QString> {
        if (QFileInfo::exists(path)) {
            logInfo(text(found) + path);
            return path;
        }
        logWarning(text(missing) + path);
        return std::nullopt;
    };
    logInfo(QStringLiteral("📍 Checking original path: ") + originalPath);
    if (auto path = tryPath(originalPath, words.foundAtOriginal, words.notAtOriginal))
        return path;
    if (baseFolder && relativePath) {
        const QString candidate = QDir::cleanPath(QDir(*baseFolder).filePath(*relativePath));
        logInfo(QStringLiteral("📂 Checking relative path: ") + candidate);
        if (auto path = tryPath(candidate, words.foundAtRelative, words.notAtRelative))
            return path;
    }
    if (baseFolder) {
        const QString candidate = QDir(*baseFolder).filePath(name);
        logInfo(QStringLiteral("📄 Checking filename in base directory: ") + candidate);
        if (auto path = tryPath(candidate, words.foundByName, words.notByName))
            return path;
    }
    logError(QStringLiteral("💀 All fallback methods failed for: ") + name);
    return std::nullopt;
}

QString folderOf(const QString& filePath) { return QFileInfo(filePath).absolutePath(); }

// ["a.jpg", "b.jpg"]
QString listText(const QStringList& names)
{
    QStringList quoted;
    for (const QString& name : names)
        quoted.append(QLatin1Char('"') + name + QLatin1Char('"'));
    return QLatin1Char('[') + quoted.join(QStringLiteral(", ")) + QLatin1Char(']');
}

} // namespace

QString SlideshowLoadError::description() const
{
    switch (kind) {
    case Kind::loadFailed:
        return QStringLiteral("Failed to load slideshow: ") + detail;
    case Kind::incompatibleVersion:
        return QStringLiteral("Incompatible slideshow version: ") + detail;
    case Kind::fileNotFound:
        break;
    }
    return QStringLiteral("Slideshow file not found");
}

SlideshowLoadService::SlideshowLoadService(Analytics& analytics) : analytics(analytics) {}

std::variant<SlideshowDocument, SlideshowLoadError> SlideshowLoadService::loadDocument(const QString& filePath)
{
    const QString event = QStringLiteral("slideshowLoadCompleted");
    logInfo(QStringLiteral("Loading slideshow from: ") + filePath);
    if (!QFileInfo(filePath).isFile()) {
        const SlideshowLoadError error{SlideshowLoadError::Kind::fileNotFound, {}};
        analytics.recordEvent(event, {{QStringLiteral("success"), QStringLiteral("false")},
                                      {QStringLiteral("error"), error.description()}});
        return error;
    }
    QFile file(filePath);
    std::variant<SlideshowDocument, QString> decoded =
        file.open(QIODevice::ReadOnly) ? decodeSlideshowDocument(file.readAll())
                                       : std::variant<SlideshowDocument, QString>(file.errorString());
    const qint64 size = file.size();
    if (const auto* message = std::get_if<QString>(&decoded)) {
        logError(QStringLiteral("Failed to load slideshow: ") + *message);
        analytics.recordEvent(
            event, {{QStringLiteral("success"), QStringLiteral("false")}, {QStringLiteral("error"), *message}});
        return SlideshowLoadError{SlideshowLoadError::Kind::loadFailed, *message};
    }
    SlideshowDocument document = std::move(std::get<SlideshowDocument>(decoded));
    if (document.version != QLatin1String(slideshowFormatVersion))
        logWarning(QStringLiteral("Loading slideshow with version %1, current version is %2")
                       .arg(document.version, QLatin1String(slideshowFormatVersion)));
    const SlideshowMetadata& m = document.metadata;
    logInfo(QStringLiteral("Successfully loaded slideshow: %1 images, %2 audio tracks")
                .arg(m.totalImages)
                .arg(m.totalAudioTracks));
    const bool live = document.liveModeSettings && document.liveModeSettings->isActive;
    analytics.recordEvent(event, {{QStringLiteral("success"), QStringLiteral("true")},
                                  {QStringLiteral("imageCount"), QString::number(m.totalImages)},
                                  {QStringLiteral("audioTrackCount"), QString::number(m.totalAudioTracks)},
                                  {QStringLiteral("slideshowVersion"), document.version},
                                  {QStringLiteral("appVersionThatCreated"), m.appVersion},
                                  {QStringLiteral("fileSizeBytes"), QString::number(size)},
                                  {QStringLiteral("hasAudio"), yesNo(m.totalAudioTracks > 0)},
                                  {QStringLiteral("gridMode"), QString::number(document.settings.gridOptionRaw)},
                                  {QStringLiteral("transitionType"), document.settings.transitionType},
                                  {QStringLiteral("hasLiveMode"), yesNo(live)}});
    return document;
}

std::variant<SlideshowDocument, QString> SlideshowLoadService::read(const QString& filePath)
{
    auto loaded = loadDocument(filePath);
    if (auto* error = std::get_if<SlideshowLoadError>(&loaded))
        return error->description();
    return std::move(std::get<SlideshowDocument>(loaded));
}

namespace {

// What differs between restoring pictures and restoring sound.
struct RestoreKind {
    const char* plural;   // "images"
    const char* singular; // "image"
    const Wording& wording;
    const char* notRestored;
};

// Looks for each saved item in document order, logging every step; `make` builds the item from
// the file found.
template <typename Saved, typename Item, typename Make>
Restored<Item, Saved> restoreAll(const QList<Saved>& saved, const RestoreKind& kind,
                                 const std::optional<QString>& baseFolder, BookmarkResolver& resolver, Make make)
{
    Restored<Item, Saved> result;
    const qsizetype count = saved.size();
    logInfo(QStringLiteral("Starting to restore %1 %2").arg(count).arg(QLatin1String(kind.plural)));
    for (qsizetype i = 0; i < count; ++i) {
        const Saved& entry = saved[i];
        logInfo(QStringLiteral("Processing %1 %2/%3: %4")
                    .arg(QLatin1String(kind.singular))
                    .arg(i + 1)
                    .arg(count)
                    .arg(entry.filename));
        logInfo(QStringLiteral("Original path: ") + entry.originalPath);
        logInfo(QStringLiteral("Has bookmark data: ") + yesNo(entry.bookmarkData.has_value()));
        const auto found = findFile(kind.wording, entry.filename, entry.originalPath, entry.relativePath,
                                    entry.bookmarkData, baseFolder, resolver);
        if (!found) {
            result.missing.append(entry);
            logWarning(text(kind.notRestored) + entry.filename);
            continue;
        }
        result.items.append(make(entry, *found));
        logInfo(QStringLiteral("✅ Successfully restored: ") + entry.filename);
    }
    logInfo(QStringLiteral("Restored %1/%2 %3").arg(result.items.size()).arg(count).arg(QLatin1String(kind.plural)));
    return result;
}

} // namespace

RestoredImages SlideshowLoadService::restoreImages(const SlideshowDocument& document,
                                                   const std::optional<QString>& baseFolder, BookmarkResolver& resolver)
{
    RestoredImages result = restoreAll<SavedImageInfo, IdentifiableImage>(
        document.images, {"images", "image", imageWording, "❌ Failed to restore: "}, baseFolder, resolver,
        [](const SavedImageInfo& saved, const QString& path) {
            // A fresh id; the name is the document's, so a file renamed since keeps the name it had.
            return IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(path), saved.filename, folderOf(path),
                                     saved.creationDate, saved.isGIF, saved.isVideo.value_or(false),
                                     saved.videoDuration);
        });
    logInfo(QStringLiteral("Missing files: ") + listText(result.missingNames()));
    return result;
}

RestoredTracks SlideshowLoadService::restoreAudioTracks(const SlideshowDocument& document,
                                                        const std::optional<QString>& baseFolder,
                                                        BookmarkResolver& resolver)
{
    return restoreAll<SavedAudioTrack, AudioTrack>(
        document.audioTracks, {"audio tracks", "audio track", trackWording, "Could not restore audio track: "},
        baseFolder, resolver, [](const SavedAudioTrack& saved, const QString& path) {
            AudioTrack track = AudioTrack::fromFile(QUrl::fromLocalFile(path), saved.duration);
            track.filename = saved.filename;
            return track;
        });
}

} // namespace tb
