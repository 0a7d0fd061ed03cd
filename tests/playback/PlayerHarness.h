#pragma once

#include "core/ManualScheduler.h"
#include "core/SettingsStore.h"
#include "media/MetadataService.h"
#include "media/Queue.h"
#include "playback/GridView.h"
#include "playback/SlideshowManager.h"
#include "playback/SlideshowView.h"
#include "support/LogCapture.h"
#include "support/PlaybackDoubles.h"

#include <QTemporaryDir>

#include <memory>

namespace tb::test {

// What either kind of player touches, as doubles: the clock, the dice, the running flag, the
// playlist, the pictures, the settings and the queue; `closes` counts the window's closings.
struct ShowDoubles {
    QTemporaryDir dir;
    ManualScheduler scheduler;
    SeededRandom random;
    SlideshowManager manager;
    FakeAudio audio;
    FakeCaches caches;
    SettingsStore settings{dir.filePath(QStringLiteral("settings.conf"))};
    std::shared_ptr<Queue> queue = std::make_shared<Queue>();
    int closes = 0;

    explicit ShowDoubles(std::uint64_t seed) : random(seed) {}
};

// One single-photo player with doubles for everything it touches.
struct PlayerHarness : ShowDoubles {
    FakeInhibitor inhibitor;
    FakeRevealer revealer;
    MetadataService metadata;
    FakeFolderWatchers folderWatchers;
    std::unique_ptr<SlideshowView> player;

    explicit PlayerHarness(std::uint64_t seed = 1) : ShowDoubles(seed) {}

    SlideshowView& start(int count, SlideshowConfiguration configuration, bool withWindow = true)
    {
        return start(makeQueue(count), std::move(configuration), withWindow);
    }

    SlideshowView& start(QList<IdentifiableImage> items, SlideshowConfiguration configuration, bool withWindow = true)
    {
        queue->replaceAll(std::move(items));
        manager.setSlideshowRunning(true);
        player = std::make_unique<SlideshowView>(queue, std::move(configuration),
                                                 PlayerServices{scheduler, random, manager, audio, caches, inhibitor,
                                                                settings, revealer, metadata, folderWatchers});
        if (withWindow)
            player->setClosePlayer([this] { ++closes; });
        player->onAppear();
        return *player;
    }

    // The shuffle invariant: the item on screen is the one at the shuffled position.
    bool shuffleInvariantHolds() const
    {
        const auto& order = player->shuffledIndices();
        return player->shuffledIndex() >= 0 && player->shuffledIndex() < order.size() &&
               order[player->shuffledIndex()] == player->currentIndex();
    }
};

// One grid player with doubles for everything it touches.
struct GridHarness : ShowDoubles {
    std::unique_ptr<GridView> player;

    explicit GridHarness(std::uint64_t seed = 1) : ShowDoubles(seed) {}

    GridView& start(int count, GridConfiguration configuration, std::optional<int> startAt = std::nullopt)
    {
        queue->replaceAll(makeQueue(count));
        if (startAt)
            configuration.startingImageId = queue->at(*startAt).id();
        manager.setSlideshowRunning(true);
        player = std::make_unique<GridView>(queue, configuration,
                                            GridServices{scheduler, random, manager, audio, caches, settings});
        player->setClosePlayer([this] { ++closes; });
        player->onAppear();
        return *player;
    }
};

} // namespace tb::test
