#include "ScreenPlayerPresenter.h"

#include "core/Logger.h"
#include "media/PictureClient.h"
#include "modes/DisplayManager.h"
#include "playback/GridView.h"
#include "playback/MediaRemoteLink.h"
#include "playback/PictureProvider.h"
#include "playback/PlayerWindow.h"
#include "playback/SlideshowView.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace tb {

ScreenPlayerPresenter::ScreenPlayerPresenter(Services services, QWidget* mainWindow)
    : services(services), mainWindow(mainWindow)
{
}

ScreenPlayerPresenter::~ScreenPlayerPresenter()
{
    // A main window closing ends its show through the show's own stop path.
    if (window) {
        window->close();
        delete window;
    }
}

QScreen* ScreenPlayerPresenter::chooseScreen(int selectedDisplayID) const
{
    if (selectedDisplayID != 0) {
        if (QScreen* screen = services.displays.screen(selectedDisplayID)) {
            logInfo(QStringLiteral("Slideshow starting on selected display ID: %1.").arg(selectedDisplayID));
            return screen;
        }
        logWarning(
            QStringLiteral("Selected display ID %1 not found. Falling back to main screen.").arg(selectedDisplayID));
        return QGuiApplication::primaryScreen();
    }
    logInfo(QStringLiteral("Slideshow starting on default screen (same as app window)."));
    if (mainWindow && mainWindow->screen())
        return mainWindow->screen();
    return QGuiApplication::primaryScreen();
}

void ScreenPlayerPresenter::present(const ShowRequest& request, std::shared_ptr<Queue> queue)
{
    QScreen* screen = chooseScreen(request.selectedDisplayID);
    auto pictures = std::make_unique<PictureClient>(services.pictures);
    ShowPlayer* player = nullptr;
    int pictureBacklog = PictureProvider::backlog;
    if (request.grid != GridOption::none) {
        const SlideshowConfiguration& single = request.single;
        GridConfiguration grid{single.slideshowDelay,     single.randomOrder,          single.loopSlideshow,
                               single.isManualMode,       single.startingImageId,      gridRows(request.grid),
                               gridColumns(request.grid), request.syncGridTransitions, single.screensaverMode};
        player = new GridView(std::move(queue), grid,
                              GridServices{services.scheduler, services.random, services.manager, services.audio,
                                           *pictures, services.settings});
        pictureBacklog = PictureProvider::cellBacklog;
    } else {
        player = new SlideshowView(std::move(queue), request.single,
                                   PlayerServices{services.scheduler, services.random, services.manager, services.audio,
                                                  *pictures, services.sleepInhibitor, services.settings,
                                                  services.revealer, services.metadata, services.folderWatchers});
    }
    window = new PlayerWindow(player, std::move(pictures), pictureBacklog, services.settings, screen,
                              request.startInWindowedMode, request.floatOnTop);
    QPointer<PlayerWindow> target = window;
    player->setClosePlayer([target] {
        if (target)
            target->closeLater();
    });
    window->hideIdleCursor(services.scheduler);
    window->present();
    player->onAppear();
    // Media keys and the desktop's media applets reach the show while it runs; the player owns it.
    new MediaRemoteLink(*player, services.remote);
}

} // namespace tb
