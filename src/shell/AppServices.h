#pragma once

namespace tb {

class Analytics;
class CommandBus;
class DocumentReader;
class FileRevealer;
class MetadataService;
class RandomSource;
class Scheduler;
class SettingsStore;
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
};

} // namespace tb
