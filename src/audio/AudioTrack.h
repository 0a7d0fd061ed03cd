#pragma once

#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace tb {

// One file of the background playlist. Tags are never read: artist and title only travel
// through saved slideshows.
struct AudioTrack {
    QUuid id;
    QUrl url;
    QString filename;
    // The folder that holds the file, not the file's own path.
    QString path;
    std::optional<double> duration; // seconds
    std::optional<QString> artist;
    std::optional<QString> title;

    static AudioTrack fromFile(const QUrl& url, std::optional<double> duration)
    {
        AudioTrack track;
        track.id = QUuid::createUuid();
        track.url = url;
        track.filename = url.fileName();
        track.path = url.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash).toLocalFile();
        track.duration = duration;
        return track;
    }
};

} // namespace tb
