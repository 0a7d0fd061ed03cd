#pragma once

#include "core/QtScheduler.h"
#include "core/RandomSource.h"
#include "core/RecordingAnalytics.h"
#include "core/SettingsStore.h"
#include "platform/LinuxFileRevealer.h"

namespace tb {

// The process-wide services, made once at start and handed to every main window.
class AppServices {
public:
    SettingsStore& settings() { return settingsStore; }
    Scheduler& scheduler() { return qtScheduler; }
    RandomSource& random() { return randomSource; }
    Analytics& analytics() { return recordingAnalytics; }
    FileRevealer& fileRevealer() { return revealer; }

private:
    SettingsStore settingsStore;
    QtScheduler qtScheduler;
    SystemRandomSource randomSource;
    // Events stay in memory until the network client is wired in.
    RecordingAnalytics recordingAnalytics;
    LinuxFileRevealer revealer;
};

} // namespace tb
