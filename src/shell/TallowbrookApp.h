#pragma once

#include "AppDelegate.h"
#include "AppServices.h"
#include "CommandBus.h"
#include "QtUserDialogs.h"
#include "SingleInstance.h"
#include "analytics/Beacon.h"
#include "audio/QtAudioPlayers.h"
#include "core/IdleTimeChain.h"
#include "core/QtScheduler.h"
#include "core/RandomSource.h"
#include "core/SettingsStore.h"
#include "documents/SlideshowLoadService.h"
#include "media/MetadataService.h"
#include "media/PictureService.h"
#include "media/SharedThumbnails.h"
#include "modes/DisplayManager.h"
#include "modes/IdleWatcher.h"
#include "platform/DBusIdleTimeSource.h"
#include "platform/DBusSleepInhibitor.h"
#include "platform/LinuxFileRevealer.h"
#include "platform/LinuxFileSystems.h"
#include "platform/LinuxProcessMemory.h"
#include "platform/MprisPlayer.h"
#include "platform/QtFolderWatchers.h"
#include "platform/X11IdleTimeSource.h"
#include "playback/SlideshowManager.h"

#include <QStringList>

#include <memory>

namespace tb {

// The program: owns the process-wide services and starts them in their order.
class TallowbrookApp {
public:
    TallowbrookApp();
    ~TallowbrookApp();

    // Hands the paths to an already running program instead, when there is one; returns false
    // then, and the process should end.
    bool start(const QStringList& arguments);

    AppServices& services() { return appServices; }

private:
    // Starts the analytics client when a server address is set.
    void startAnalytics();
    void activateSomeWindow();

    SettingsStore settings;
    QtScheduler scheduler;
    SystemRandomSource random;
    // The analytics client draws event ids on whichever thread records, so it has a source of its
    // own.
    SystemRandomSource analyticsRandom;
    Beacon analytics;
    LinuxFileRevealer revealer;
    QtUserDialogs dialogs;
    CommandBus commands;
    MetadataService metadata;
    std::unique_ptr<DocumentReader> documents;
    SlideshowManager slideshowManager;
    QtAudioPlayers audioPlayers;
    LinuxFileSystems fileSystems;
    QtFolderWatchers folderWatchers;
    LinuxProcessMemory processMemory;
    SharedThumbnails sharedThumbnails;
    std::unique_ptr<PictureService> pictures;
    DBusSleepInhibitor sleepInhibitor;
    MprisPlayer mediaRemote;
    DisplayManager displays;
    DBusIdleTimeSource desktopIdleTime;
    X11IdleTimeSource x11IdleTime;
    // The desktop knows best (it sees Wayland input too); the X server is the fallback.
    IdleTimeChain idleTime{{&desktopIdleTime, &x11IdleTime}};
    // Started by each main window as it appears and by the settings panel; stopped at the end.
    IdleWatcher idleWatcher{scheduler, settings, idleTime, [this] { commands.post(Command::idleThresholdReached); }};
    bool running = false; // this process is the program, not a second launch handing over
    AppDelegate delegate;
    AppServices appServices;
    SingleInstance instance;
};

} // namespace tb
