#pragma once

#include "core/FileRevealer.h"
#include "core/ManualScheduler.h"
#include "core/RandomSource.h"
#include "core/RecordingAnalytics.h"
#include "core/SettingsStore.h"
#include "media/MetadataService.h"
#include "shell/AppServices.h"
#include "shell/CommandBus.h"
#include "shell/ContentView.h"
#include "shell/UpdaterControllerWrapper.h"
#include "support/ScriptedUserDialogs.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tb::test {

struct RecordingRevealer final : FileRevealer {
    void reveal(const QString& filePath) override { revealed.append(filePath); }
    QStringList revealed;
};

class CountingRandom final : public RandomSource {
public:
    std::uint64_t next64() override { return state += 0x9E3779B97F4A7C15ull; }
    std::uint64_t state = 0;
};

// The services of a running program, with doubles where the real ones would reach outside.
struct ShellFixture : ::testing::Test {
    QTemporaryDir dir;
    SettingsStore settings{dir.filePath(QStringLiteral("Tallowbrook.conf"))};
    ManualScheduler scheduler;
    CountingRandom random;
    RecordingAnalytics analytics;
    RecordingRevealer revealer;
    ScriptedUserDialogs dialogs;
    CommandBus commands;
    MetadataService metadata;
    UpdaterControllerWrapper updater;
    AppServices services{settings, scheduler, random, analytics, revealer, dialogs, commands, metadata, updater};
    std::vector<std::unique_ptr<ContentView>> windows;

    // A window that has not appeared yet: it subscribes to commands when shown.
    ContentView& addWindow()
    {
        windows.push_back(std::make_unique<ContentView>(services));
        return *windows.back();
    }

    ContentView& openWindow()
    {
        ContentView& window = addWindow();
        window.show();
        return window;
    }

    QStringList promptTitles() const
    {
        QStringList titles;
        for (const auto& prompt : dialogs.prompts)
            titles.append(prompt.title);
        return titles;
    }
};

} // namespace tb::test
