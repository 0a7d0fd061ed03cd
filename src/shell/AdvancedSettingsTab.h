#pragma once

#include "SettingsTab.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QSpinBox;

namespace tb {

class IdleWatching;

// The rest: the thumbnail alert, the remembered subfolder answer and the screen saver.
class AdvancedSettingsTab final : public SettingsTab {
    Q_OBJECT
public:
    AdvancedSettingsTab(SettingsStore& settings, IdleWatching& idleWatcher, QWidget* parent = nullptr);

private:
    void showSubfolderPreference();
    void showScreenSaver();
    void setIdleMinutes(int minutes);

    IdleWatching& idleWatcher;
    QLabel* subfolderPreference = nullptr;
    QPushButton* resetSubfolders = nullptr;
    QCheckBox* screenSaver = nullptr;
    QWidget* minutesLine = nullptr;
    QSpinBox* minutes = nullptr;
};

} // namespace tb
