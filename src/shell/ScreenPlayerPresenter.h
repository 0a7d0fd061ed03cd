#pragma once

#include "playback/PlayerWindow.h"
#include "playback/SessionControl.h"

#include <QPointer>

class QScreen;
class QWidget;

namespace tb {

struct AppServices;

// Opens a show's window for one main window: picks the screen, builds the player in a
// PlayerWindow and shows it. A main window closing takes its running show with it.
class ScreenPlayerPresenter final : public PlayerPresenter {
public:
    ScreenPlayerPresenter(AppServices& services, QWidget* mainWindow);
    ~ScreenPlayerPresenter() override;

    void present(const ShowRequest& request, std::shared_ptr<Queue> queue) override;

    PlayerWindow* currentWindow() const { return window; }

private:
    QScreen* chooseScreen(int selectedDisplayID) const;

    AppServices& services;
    QWidget* mainWindow;
    QPointer<PlayerWindow> window;
};

} // namespace tb
