#include "SessionControl.h"

#include "SlideshowManager.h"
#include "SlideshowStartedEvent.h"
#include "audio/SlideshowAudio.h"
#include "core/Analytics.h"
#include "core/Logger.h"
#include "core/RandomSource.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "media/Queue.h"

#include <numeric>

namespace tb {

SessionControl::SessionControl(std::shared_ptr<Queue> queue, Services services)
    : queue(std::move(queue)), services(services)
{
}

void SessionControl::startCommand()
{
    if (queue->isEmpty()) {
        services.dialogs.alert(AlertStyle::Information, QStringLiteral("No files added"),
                               QStringLiteral("Please add files before running the slideshow."));
        return;
    }
    if (services.settings.value(Settings::randomOrder) && shuffled.isEmpty())
        buildShuffleOrder();
    startSlideshow(false);
}

void SessionControl::screensaverStart()
{
    if (queue->isEmpty() || services.manager.isSlideshowRunning())
        return;
    buildShuffleOrder();
    logInfo(QStringLiteral("[IdleWatcher] Starting slideshow in screensaver mode."));
    startSlideshow(true);
}

void SessionControl::buildShuffleOrder()
{
    QList<int> order(queue->size());
    std::iota(order.begin(), order.end(), 0);
    services.random.shuffle(order);
    if (const auto& start = queue->startingImageId()) {
        for (int position = 0; position < order.size(); ++position) {
            if (queue->at(order[position]).id() == *start) {
                std::swap(order[0], order[position]);
                break;
            }
        }
    }
    shuffled = order;
    shuffledIndex = 0;
}

void SessionControl::setLiveModeReports(std::function<void(const QList<IdentifiableImage>&)> added,
                                        std::function<void(int)> removed)
{
    onNewImagesAdded = std::move(added);
    onImagesRemoved = std::move(removed);
}

void SessionControl::startSlideshow(bool screensaverMode)
{
    SettingsStore& settings = services.settings;
    // First, so that a second request finds the show running.
    services.manager.setSlideshowRunning(true);
    const int tracks = services.audio.trackCount();
    if (tracks > 0)
        services.audio.prepareForNewSlideshow();

    ShowRequest request;
    request.screensaverMode = screensaverMode;
    const int displayModeRaw = settings.value(Settings::displayMode);
    request.grid = gridOptionFromRaw(displayModeRaw);
    request.selectedDisplayID = settings.value(Settings::selectedDisplayID);
    request.startInWindowedMode = settings.value(Settings::startInWindowedMode);
    request.floatOnTop = settings.value(Settings::floatOnTop);
    request.syncGridTransitions = settings.value(Settings::syncGridTransitions);

    SlideshowConfiguration& c = request.single;
    c.slideshowDelay = settings.value(Settings::slideshowDelay);
    c.randomOrder = settings.value(Settings::randomOrder);
    c.loopSlideshow = settings.value(Settings::loopSlideshow);
    const QString transition = settings.value(Settings::transitionType);
    c.transitionType = transitionTypeFromRaw(transition);
    c.isManualMode = settings.value(Settings::isManualMode);
    c.crossfadeDuration = settings.value(Settings::crossfadeDuration, Settings::mainWindowCrossfadeDuration);
    c.imageScalingMode = imageScalingModeFromRaw(settings.value(Settings::imageScalingMode));
    c.startingImageId = queue->startingImageId();
    c.screensaverMode = screensaverMode;
    c.onNewImagesAdded = onNewImagesAdded;
    c.onImagesRemoved = onImagesRemoved;

    services.analytics.recordEvent(QStringLiteral("slideshowStarted"),
                                   slideshowStartedSegmentation(int(queue->size()), c.slideshowDelay, c.loopSlideshow,
                                                                c.randomOrder, transition, c.crossfadeDuration,
                                                                displayModeRaw, services.manager.isLiveModeActive(),
                                                                tracks, settings.value(Settings::overlayEnabled)),
                                   1);

    services.presenter.present(request, queue);

    if (tracks > 0)
        services.audio.play();
}

} // namespace tb
