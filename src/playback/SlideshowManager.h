#pragma once

#include <QObject>
#include <QUrl>

#include <optional>

namespace tb {

// Whether a show runs, shared by every main window and player. Starting sets the flag; a player
// clears it when it stops, and also stops when anyone else clears it.
class SlideshowManager final : public QObject {
    Q_OBJECT
    Q_PROPERTY(
        bool isSlideshowRunning READ isSlideshowRunning WRITE setSlideshowRunning NOTIFY isSlideshowRunningChanged)
    Q_PROPERTY(bool isLiveModeActive READ isLiveModeActive WRITE setLiveModeActive NOTIFY isLiveModeActiveChanged)
public:
    using QObject::QObject;

    bool isSlideshowRunning() const { return running; }
    void setSlideshowRunning(bool value);

    bool isLiveModeActive() const { return liveMode; }
    void setLiveModeActive(bool value);

    const std::optional<QUrl>& watchedFolder() const { return folder; }
    void setWatchedFolder(std::optional<QUrl> value);

Q_SIGNALS:
    void isSlideshowRunningChanged(bool running);
    void isLiveModeActiveChanged(bool active);
    void watchedFolderChanged();

private:
    bool running = false;
    bool liveMode = false;
    std::optional<QUrl> folder;
};

} // namespace tb
