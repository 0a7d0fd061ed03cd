#pragma once

#include "SlideshowSettings.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QString>

#include <optional>

namespace tb {

struct SlideshowMetadata {
    QDateTime createdDate;
    QString appVersion;
    int totalImages = 0;
    int totalAudioTracks = 0;
    QString createdBy;
    bool operator==(const SlideshowMetadata&) const = default;
};

struct SavedImageInfo {
    QString id; // upper-case UUID text; a restored item gets a new id
    QString filename;
    QString originalPath;
    std::optional<QString> relativePath;
    bool isGIF = false;
    std::optional<QDateTime> creationDate;
    std::optional<QByteArray> bookmarkData;
    std::optional<bool> isVideo; // absent in older documents: not a clip
    std::optional<double> videoDuration;
    bool operator==(const SavedImageInfo&) const = default;
};

struct SavedAudioTrack {
    QString id;
    QString filename;
    QString originalPath;
    std::optional<QString> relativePath;
    std::optional<double> duration;
    std::optional<QByteArray> bookmarkData;
    bool operator==(const SavedAudioTrack&) const = default;
};

struct SavedAudioSettings {
    double volume = 0;
    bool isLooping = false;
    int currentTrackIndex = 0;
    bool operator==(const SavedAudioSettings&) const = default;
};

struct SavedLiveModeSettings {
    bool isActive = false;
    std::optional<QString> watchedFolderPath;
    std::optional<QString> newPhotosBehavior;
    bool operator==(const SavedLiveModeSettings&) const = default;
};

// A saved arrangement: the queue, the playlist and the settings, as references to files.
struct SlideshowDocument {
    QString version;
    SlideshowMetadata metadata;
    SlideshowSettings settings;
    QList<SavedImageInfo> images;
    QList<SavedAudioTrack> audioTracks;
    SavedAudioSettings audioSettings;
    std::optional<SavedLiveModeSettings> liveModeSettings;
    bool operator==(const SlideshowDocument&) const = default;
};

} // namespace tb

Q_DECLARE_METATYPE(tb::SlideshowDocument)
