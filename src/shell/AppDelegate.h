#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

namespace tb {

class Analytics;
class CommandBus;
class DocumentReader;
class Scheduler;
class SettingsStore;
class UpdaterControllerWrapper;
class UserDialogs;

// Receives what the desktop tells the program: documents to open, the program hidden or
// shown, windows minimised or restored, and the end of the program.
class AppDelegate final : public QObject {
    Q_OBJECT
public:
    // The updater is made here, first of all, over the build's feed.
    AppDelegate(Analytics& analytics, SettingsStore& settings, CommandBus& commands, DocumentReader& documents,
                Scheduler& scheduler, UserDialogs& dialogs, QObject* parent = nullptr);
    ~AppDelegate() override;

    UpdaterControllerWrapper& updaterControllerWrapper() { return *updater; }

    // Starts observing the application and its windows.
    void applicationDidFinishLaunching();
    // A request to open files, from the command line or from a second launch.
    void openUrls(const QList<QUrl>& urls);
    void applicationWillTerminate();

    // The program hidden and shown again as a whole: the analytics session ends and begins.
    void applicationStateChanged(Qt::ApplicationState state);
    void appDidHide();
    void appDidUnhide();
    // Ends the analytics session only when no window is left on screen.
    void windowDidMiniaturize();
    void windowDidDeminiaturize();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool hidden = false;
    Analytics& analytics;
    SettingsStore& settings;
    CommandBus& commands;
    DocumentReader& documents;
    UserDialogs& dialogs;
    UpdaterControllerWrapper* updater;
};

// True when at least one of the windows is visible and not minimised.
bool anyWindowShown();

} // namespace tb
