#pragma once

#include "SettingsTab.h"

namespace tb {

// Where live mode puts the photos that appear in the watched folder during a show.
class LiveModeSettingsTab final : public SettingsTab {
    Q_OBJECT
public:
    explicit LiveModeSettingsTab(SettingsStore& settings, QWidget* parent = nullptr);
};

} // namespace tb
