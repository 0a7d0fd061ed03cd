#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace tb {

// One queue item: a photo, an animated GIF or a clip. Immutable once built; a changed item is a
// new item with a new id. Items are compared by id (selection, order) or by url where that is
// what matters; the type defines no equality of its own.
class IdentifiableImage {
public:
    IdentifiableImage(QUuid id, QUrl url, QString filename, QString path, std::optional<QDateTime> creationDate,
                      bool isGIF, bool isVideo, std::optional<double> videoDuration);

    const QUuid& id() const { return idValue; }
    const QUrl& url() const { return urlValue; }
    // The file name with its extension.
    const QString& filename() const { return filenameValue; }
    // The folder that holds the file, not the file's own path.
    const QString& path() const { return pathValue; }
    const std::optional<QDateTime>& creationDate() const { return creationDateValue; }
    bool isGIF() const { return isGIFValue; }
    bool isVideo() const { return isVideoValue; }
    // Seconds; present exactly for clips.
    const std::optional<double>& videoDuration() const { return videoDurationValue; }

    QString filePath() const { return urlValue.toLocalFile(); }

private:
    QUuid idValue;
    QUrl urlValue;
    QString filenameValue;
    QString pathValue;
    std::optional<QDateTime> creationDateValue;
    bool isGIFValue;
    bool isVideoValue;
    std::optional<double> videoDurationValue;
};

// Builds the item for a local file. Never fails and never decodes the picture: whether it can
// be shown is found out when it is loaded. Blocks while a clip's duration is read.
IdentifiableImage makeItem(const QUrl& url);

// The file system's birth time of a file, where it keeps one.
std::optional<QDateTime> fileCreationDate(const QString& filePath);

} // namespace tb
