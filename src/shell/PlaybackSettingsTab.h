#pragma once

#include "SettingsTab.h"

namespace tb {

class ColorButton;

// How a show moves on: manual stepping, the cross-fade's length, the colour behind pictures and
// how clips play.
class PlaybackSettingsTab final : public SettingsTab {
    Q_OBJECT
public:
    explicit PlaybackSettingsTab(SettingsStore& settings, QWidget* parent = nullptr);

private:
    ColorButton* background = nullptr;
};

} // namespace tb
