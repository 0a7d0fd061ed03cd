#pragma once

#include "SettingsTab.h"

class QComboBox;
class QLabel;

namespace tb {

class DisplayManager;

// Where and how a show is drawn: its screen, the scaling of single photos, windowed start and
// the grid's timing.
class DisplaySettingsTab final : public SettingsTab {
    Q_OBJECT
public:
    DisplaySettingsTab(SettingsStore& settings, DisplayManager& displays, QWidget* parent = nullptr);

private:
    void fillScreens();
    void showScreen();
    void showModeNotes();

    DisplayManager& displays;
    QComboBox* screenPicker = nullptr;
    QLabel* scalingNote = nullptr;
    QLabel* syncNote = nullptr;
};

} // namespace tb
