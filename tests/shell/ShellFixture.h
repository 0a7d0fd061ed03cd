#pragma once

#include "core/FileRevealer.h"
#include "core/ManualScheduler.h"
#include "core/RandomSource.h"
#include "core/RecordingAnalytics.h"
#include "core/SettingsStore.h"
#include "media/MetadataService.h"
#include "media/PictureService.h"
#include "media/Queue.h"
#include "modes/DisplayManager.h"
#include "modes/IdleWatching.h"
#include "platform/LinuxProcessMemory.h"
#include "playback/SlideshowManager.h"
#include "shell/AppServices.h"
#include "shell/CommandBus.h"
#include "shell/ContentView.h"
#include "shell/UpdaterControllerWrapper.h"
#include "support/AudioDoubles.h"
#include "support/PlaybackDoubles.h"
#include "support/ScriptedUserDialogs.h"

#include <QImage>
#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tb::test {

// Counts the times the settings make the idle watcher start again.
struct CountingIdleWatcher final : IdleWatching {
    void restart() override { ++restarts; }
    int restarts = 0;
};

// Controls are found the way a screen reader finds them: by their accessible name.
template <typename Widget> Widget* named(const QWidget& root, const QString& name)
{
    for (auto* widget : root.findChildren<Widget*>())
        if (widget->accessibleName() == name)
            return widget;
    return nullptr;
}

struct RecordingRevealer final : FileRevealer {
    void reveal(const QString& filePath) override { revealed.append(filePath); }
    QStringList revealed;
};

// The services of a running program, with doubles where the real ones would reach outside.
struct ShellFixture : ::testing::Test {
    QTemporaryDir dir;
    SettingsStore settings{dir.filePath(QStringLiteral("Tallowbrook.conf"))};
    ManualScheduler scheduler;
    SeededRandom random;
    RecordingAnalytics analytics;
    RecordingRevealer revealer;
    ScriptedUserDialogs dialogs;
    CommandBus commands;
    MetadataService metadata;
    // A build without a feed: the commands point at the package manager and nothing is fetched.
    UpdaterControllerWrapper updater{QString(),
                                     scheduler,
                                     dialogs,
                                     QStringLiteral("1.2.0"),
                                     UpdaterControllerWrapper::defaultTransferTimeout,
                                     [](const QUrl&) {}};
    SlideshowManager slideshowManager;
    FakeAudioPlayers audioPlayers;
    PictureService pictures;
    FakeInhibitor inhibitor;
    DisplayManager displays;
    CountingIdleWatcher idleWatcher;
    FakeFileSystems fileSystems;
    FakeFolderWatchers folderWatchers;
    LinuxProcessMemory processMemory;
    RecordingMediaRemote mediaRemote;
    AppServices services{settings, scheduler,   random,         analytics,        revealer,     fileSystems, dialogs,
                         commands, metadata,    updater,        slideshowManager, audioPlayers, pictures,    inhibitor,
                         displays, idleWatcher, folderWatchers, processMemory,    mediaRemote};
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

    // A flat-coloured PNG in the test's folder, whatever its name says; returns its path.
    QString savePicture(const QString& name, QColor colour = Qt::red, QSize size = {64, 48})
    {
        QImage picture(size, QImage::Format_RGB32);
        picture.fill(colour);
        const QString path = dir.filePath(name);
        EXPECT_TRUE(picture.save(path, "PNG"));
        return path;
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
