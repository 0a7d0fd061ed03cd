#include "DisplaySettingsTab.h"

#include "core/SettingsStore.h"
#include "media/MediaTypes.h"
#include "modes/DisplayManager.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QSignalBlocker>

namespace tb {

DisplaySettingsTab::DisplaySettingsTab(SettingsStore& settings, DisplayManager& displays, QWidget* parent)
    : SettingsTab(settings, parent), displays(displays)
{
    QFormLayout* rows = addRows();

    screenPicker = new QComboBox(this);
    screenPicker->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    addRow(rows, QStringLiteral("Slideshow Display:"), screenPicker);
    addNote(rows, QStringLiteral("Select which display the slideshow will play on."));
    connect(screenPicker, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            this->settings.set(Settings::selectedDisplayID, screenPicker->itemData(index).toInt());
    });
    connect(&displays, &DisplayManager::availableScreensChanged, this, &DisplaySettingsTab::fillScreens);
    fillScreens();
    follow({Settings::selectedDisplayID.name}, [this] { showScreen(); });

    QList<std::pair<QString, QString>> scalings;
    for (ImageScalingMode mode : {ImageScalingMode::fit, ImageScalingMode::fill, ImageScalingMode::bestFit})
        scalings.append({imageScalingModeRaw(mode), imageScalingModeRaw(mode)});
    addPicker(rows, QStringLiteral("Image Scaling:"), Settings::imageScalingMode, scalings,
              imageScalingModeRaw(ImageScalingMode::bestFit));
    scalingNote = addNote(rows, QString());

    addSwitch(rows, QStringLiteral("Start in Windowed Mode:"), Settings::startInWindowedMode);
    addNote(rows, QStringLiteral("Start the slideshow in a resizable window instead of fullscreen. Press \"F\" to "
                                 "toggle fullscreen at any time."));

    // Usable outside a grid mode too: the choice waits for the next grid show.
    addSwitch(rows, QStringLiteral("Sync Grid Transitions:"), Settings::syncGridTransitions);
    syncNote = addNote(rows, QString());
    follow({Settings::displayMode.name}, [this] { showModeNotes(); });
}

void DisplaySettingsTab::fillScreens()
{
    {
        const QSignalBlocker quiet(screenPicker);
        screenPicker->clear();
        screenPicker->addItem(QStringLiteral("Default (App Window's Screen)"), 0);
        for (const ScreenInfo& screen : displays.availableScreens())
            screenPicker->addItem(screen.name, screen.id);
    }
    showScreen();
}

// A stored screen that is not connected now shows no entry: the show falls back to the window's
// screen, but the choice is kept for when the screen comes back.
void DisplaySettingsTab::showScreen()
{
    const QSignalBlocker quiet(screenPicker);
    screenPicker->setCurrentIndex(screenPicker->findData(settings.value(Settings::selectedDisplayID)));
}

void DisplaySettingsTab::showModeNotes()
{
    const GridOption mode = gridOptionFromRaw(settings.value(Settings::displayMode));
    const bool grid = mode != GridOption::none;
    scalingNote->setText(
        grid ? QStringLiteral("Image scaling only applies to single photo view mode. Current mode is ") +
                   gridOptionLabel(mode)
             : QStringLiteral("Image scaling applies to single photo view mode."));
    syncNote->setText(grid ? QStringLiteral("When enabled, all grid cells update at the same time. When disabled, "
                                            "cells update one at a time in a staggered pattern.")
                           : QStringLiteral("Sync transitions only apply to grid view modes. Select a grid mode to "
                                            "enable this option."));
    for (QLabel* note : {scalingNote, syncNote})
        note->setAccessibleName(note->text());
}

} // namespace tb
