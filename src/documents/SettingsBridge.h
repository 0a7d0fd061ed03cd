#pragma once

#include "SlideshowSettings.h"

namespace tb {

class SettingsStore;

// The two ways between the settings store and a document's settings.

// What a saved document records of the store. Some keys are read plainly (absent reads 0 or
// false), some get document defaults, and the background colour and windowed-mode choice are
// never written. selectedSortOption is the main window's current sort label.
SlideshowSettings readSettingsForSaving(const SettingsStore& store, const QString& selectedSortOption);

// Writes a loaded document's settings into the store. Missing optional values take their
// defaults, except the overlay image, the overlay text colour, the background colour and the
// remembered subfolder answer, which are left as they are.
void applyLoadedSettings(SettingsStore& store, const SlideshowSettings& settings);

} // namespace tb
