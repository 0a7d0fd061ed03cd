#pragma once

namespace tb {

class Analytics;
class CommandBus;
class DisplayManager;
class FileRevealer;
class IdleWatching;
class MetadataService;
class PictureService;
class RandomSource;
class Scheduler;
class SettingsStore;
class SleepInhibitor;
class SlideshowAudio;
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
    UserDialogs& dialogs;
    CommandBus& commands;
    MetadataService& metadata;
    UpdaterControllerWrapper& updater;
    SlideshowManager& slideshowManager;
    SlideshowAudio& audio;
    PictureService& pictures;
    SleepInhibitor& sleepInhibitor;
    DisplayManager& displays;
    IdleWatching& idleWatcher;
};

} // namespace tb
