#pragma once

#include <QUrl>
#include <QWidget>

#include <functional>
#include <optional>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QProgressBar;
class QPushButton;

namespace tb {

class Analytics;
class FileRevealer;
class SettingsStore;
class SlideshowManager;
class UpdaterControllerWrapper;
class UserDialogs;

// The main window's column of controls, top to bottom: adding media, live mode, the show's
// settings, the keyboard hints, Start, export, the screen-saver status and the version. Most
// controls write one setting and follow it when it changes elsewhere (a loaded slideshow, a
// settings panel); the rest ask the window through signals.
class ControlsColumn final : public QWidget {
    Q_OBJECT
public:
    struct Services {
        SettingsStore& settings;
        SlideshowManager& slideshowManager;
        FileRevealer& fileRevealer;
        UpdaterControllerWrapper& updater;
        UserDialogs& dialogs;
        Analytics& analytics;
    };

    // selectedFolder gives the folder of the last dialog run, when it chose exactly one.
    ControlsColumn(Services services, std::function<std::optional<QUrl>()> selectedFolder, QWidget* parent = nullptr);

    QComboBox* sortPicker() const { return sortBy; }
    QPushButton* startButton() const { return start; }
    void setTotalFilesAdded(int total);
    // The export button reads "Cancel Export" while a movie is written; the bar shows how far.
    void showExport(bool exporting, bool showProgress, double progress, const QString& progressText);
    // The live-mode switch: on watches the dialog's single folder, or explains why it can't.
    void switchLiveMode(bool on);
    bool isLiveModeSwitchOn() const;

Q_SIGNALS:
    void selectFilesRequested();
    void startRequested();
    void advancedOptionsRequested();
    void audioOptionsRequested();
    void exportRequested();
    void helpRequested();

private:
    void followSetting(const QString& key);
    void showRunning(bool running);
    void showLiveMode();
    void showScreenSaverStatus();
    void showKeyboardShortcuts();

    Services services;
    std::function<std::optional<QUrl>()> selectedFolder;
    QLabel* totals = nullptr;
    QCheckBox* liveMode = nullptr;
    QPushButton* exportVideo = nullptr;
    QProgressBar* exportBar = nullptr;
    QWidget* watchedRow = nullptr;
    QLabel* watchedPath = nullptr;
    QComboBox* sortBy = nullptr;
    QComboBox* displayMode = nullptr;
    QComboBox* transition = nullptr;
    QDoubleSpinBox* delay = nullptr;
    QCheckBox* loop = nullptr;
    QCheckBox* shuffle = nullptr;
    QPushButton* start = nullptr;
    QWidget* runningWarning = nullptr;
    QWidget* screenSaverStatus = nullptr;
    QLabel* screenSaverText = nullptr;
};

} // namespace tb
