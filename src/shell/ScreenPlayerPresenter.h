#pragma once

#include "playback/PlayerWindow.h"
#include "playback/SessionControl.h"

#include <QPointer>

class QScreen;
class QWidget;

namespace tb {

class DisplayManager;
class FileRevealer;
class FolderWatchers;
class MediaRemote;
class MetadataService;
class PictureService;
class RandomSource;
class Scheduler;
class SettingsStore;
class SleepInhibitor;
class SlideshowAudio;
class SlideshowManager;

// Opens a show's window for one main window: picks the screen, builds the player with its own
// share of the picture service in a PlayerWindow, and shows it. A main window closing takes its
// running show with it.
class ScreenPlayerPresenter final : public PlayerPresenter {
public:
    struct Services {
        Scheduler& scheduler;
        RandomSource& random;
        SlideshowManager& manager;
        SlideshowAudio& audio;
        PictureService& pictures;
        SleepInhibitor& sleepInhibitor;
        SettingsStore& settings;
        DisplayManager& displays;
        FileRevealer& revealer;
        MetadataService& metadata;
        FolderWatchers& folderWatchers;
        MediaRemote& remote;
    };

    ScreenPlayerPresenter(Services services, QWidget* mainWindow);
    ~ScreenPlayerPresenter() override;

    void present(const ShowRequest& request, std::shared_ptr<Queue> queue) override;

    PlayerWindow* currentWindow() const { return window; }

private:
    QScreen* chooseScreen(int selectedDisplayID) const;

    Services services;
    QWidget* mainWindow;
    QPointer<PlayerWindow> window;
};

} // namespace tb
