#pragma once

#include <QDialog>

class QTabWidget;

namespace tb {

class DisplayManager;
class IdleWatching;
class SettingsStore;
class UserDialogs;

// The panel of advanced options: five tabs of settings, each bound to the settings store, so a
// change here shows at once in the main window and the other way round.
class AdvancedOptionsView final : public QDialog {
    Q_OBJECT
public:
    struct Services {
        SettingsStore& settings;
        DisplayManager& displays;
        UserDialogs& dialogs;
        IdleWatching& idleWatcher;
    };

    explicit AdvancedOptionsView(Services services, QWidget* parent = nullptr);

    QTabWidget* tabs() const { return tabWidget; }

private:
    QTabWidget* tabWidget = nullptr;
};

} // namespace tb
