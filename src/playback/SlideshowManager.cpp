#include "SlideshowManager.h"

namespace tb {

void SlideshowManager::setSlideshowRunning(bool value)
{
    if (running == value)
        return;
    running = value;
    Q_EMIT isSlideshowRunningChanged(running);
}

void SlideshowManager::setLiveModeActive(bool value)
{
    if (liveMode == value)
        return;
    liveMode = value;
    Q_EMIT isLiveModeActiveChanged(liveMode);
}

void SlideshowManager::setWatchedFolder(std::optional<QUrl> value)
{
    if (folder == value)
        return;
    folder = std::move(value);
    Q_EMIT watchedFolderChanged();
}

} // namespace tb
