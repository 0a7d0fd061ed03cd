#pragma once

namespace tb {

class Analytics;
class AudioPlayers;
class CommandBus;
class DisplayManager;
class FileRevealer;
class FileSystems;
class FolderWatchers;
class IdleWatching;
class MediaRemote;
class MetadataService;
class PictureService;
class ProcessMemory;
class RandomSource;
class Scheduler;
class SettingsStore;
class SleepInhibitor;
class SlideshowManager;
class UpdaterControllerWrapper;
class UserDialogs;

// The process-wide services every main window shares. main() builds the real ones; tests build
// their own doubles.
struct AppServices {
    SettingsStore& settings;
    Scheduler& scheduler;
    RandomSource& random;
    Analytics& analytics;
    FileRevealer& fileRevealer;
    const FileSystems& fileSystems;
    UserDialogs& dialogs;
    CommandBus& commands;
    MetadataService& metadata;
    UpdaterControllerWrapper& updater;
    SlideshowManager& slideshowManager;
    // Each main window has a playlist of its own; they all play through these.
    AudioPlayers& audioPlayers;
    PictureService& pictures;
    SleepInhibitor& sleepInhibitor;
    DisplayManager& displays;
    IdleWatching& idleWatcher;
    FolderWatchers& folderWatchers;
    ProcessMemory& processMemory;
    // The running show's media keys and remote controls.
    MediaRemote& mediaRemote;
};

} // namespace tb
