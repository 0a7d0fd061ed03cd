#include "AdvancedSettingsTab.h"

#include "core/SettingsStore.h"
#include "modes/IdleWatching.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>

namespace tb {

namespace {

// The minutes the switch stores when turned on, whatever stood there before.
constexpr int screenSaverMinutes = 5;

} // namespace

AdvancedSettingsTab::AdvancedSettingsTab(SettingsStore& settings, IdleWatching& idleWatcher, QWidget* parent)
    : SettingsTab(settings, parent), idleWatcher(idleWatcher)
{
    QFormLayout* rows = addRows();

    addSwitch(rows, QStringLiteral("Show thumbnail alert:"), Settings::dontShowThumbnailAlert, true);
    addNote(rows, QStringLiteral("Display alert about thumbnail performance when adding many files."));

    auto* subfolderLine = new QWidget(this);
    auto* subfolderLayout = new QHBoxLayout(subfolderLine);
    subfolderLayout->setContentsMargins(0, 0, 0, 0);
    subfolderPreference = new QLabel(subfolderLine);
    resetSubfolders = new QPushButton(QStringLiteral("Reset"), subfolderLine);
    resetSubfolders->setAccessibleName(resetSubfolders->text());
    resetSubfolders->setAutoDefault(false);
    subfolderLayout->addWidget(subfolderPreference);
    subfolderLayout->addWidget(resetSubfolders);
    subfolderLayout->addStretch(1);
    addRow(rows, QStringLiteral("Subfolder preference:"), subfolderLine);
    addNote(rows, QStringLiteral("When adding a folder that contains subfolders, choose whether to include images from "
                                 "subfolders. Reset to be asked again."));
    // Forgetting the answer brings the question back for the next folder added.
    connect(resetSubfolders, &QPushButton::clicked, this, [this] {
        this->settings.set(Settings::rememberFolderRecursion, false);
        this->settings.remove(QLatin1String(Settings::folderRecursionDepth.name));
    });
    follow({Settings::rememberFolderRecursion.name, Settings::folderRecursionDepth.name},
           [this] { showSubfolderPreference(); });

    auto* screenSaverLine = new QWidget(this);
    auto* screenSaverLayout = new QHBoxLayout(screenSaverLine);
    screenSaverLayout->setContentsMargins(0, 0, 0, 0);
    screenSaver = new QCheckBox(screenSaverLine);
    screenSaver->setAccessibleName(QStringLiteral("Screen saver mode:"));
    minutesLine = new QWidget(screenSaverLine);
    auto* minutesLayout = new QHBoxLayout(minutesLine);
    minutesLayout->setContentsMargins(0, 0, 0, 0);
    minutes = new QSpinBox(minutesLine);
    minutes->setRange(1, 9999);
    minutes->setFixedWidth(50);
    minutes->setButtonSymbols(QAbstractSpinBox::NoButtons);
    // A number is taken when typing ends, not at each digit of "15".
    minutes->setKeyboardTracking(false);
    auto* after = new QLabel(QStringLiteral("After"), minutesLine);
    auto* inactivity = new QLabel(QStringLiteral("minutes of inactivity"), minutesLine);
    minutes->setAccessibleName(inactivity->text());
    minutesLayout->addWidget(after);
    minutesLayout->addWidget(minutes);
    minutesLayout->addWidget(inactivity);
    screenSaverLayout->addWidget(screenSaver);
    screenSaverLayout->addWidget(minutesLine);
    screenSaverLayout->addStretch(1);
    addRow(rows, QStringLiteral("Screen saver mode:"), screenSaverLine);
    addNote(rows, QStringLiteral("Automatically start the slideshow after the specified period of inactivity. Any key "
                                 "press or mouse movement will stop it."));
    connect(screenSaver, &QCheckBox::toggled, this, [this](bool on) { setIdleMinutes(on ? screenSaverMinutes : 0); });
    connect(minutes, &QSpinBox::valueChanged, this, &AdvancedSettingsTab::setIdleMinutes);
    follow({Settings::screensaverIdleMinutes.name}, [this] { showScreenSaver(); });
}

void AdvancedSettingsTab::showSubfolderPreference()
{
    const bool remembered = settings.value(Settings::rememberFolderRecursion);
    // Intake reads any remembered depth but -1 as "this folder only".
    subfolderPreference->setText(!remembered ? QStringLiteral("Ask every time")
                                 : settings.value(Settings::folderRecursionDepth) == -1
                                     ? QStringLiteral("All Subfolders")
                                     : QStringLiteral("This Folder Only"));
    subfolderPreference->setAccessibleName(subfolderPreference->text());
    resetSubfolders->setVisible(remembered);
}

void AdvancedSettingsTab::showScreenSaver()
{
    const int stored = settings.value(Settings::screensaverIdleMinutes);
    const QSignalBlocker quietSwitch(screenSaver);
    const QSignalBlocker quietMinutes(minutes);
    screenSaver->setChecked(stored > 0);
    minutesLine->setVisible(stored > 0);
    minutes->setValue(std::max(stored, 1));
}

// The watcher counts with the minutes it read when it started, so it starts again.
void AdvancedSettingsTab::setIdleMinutes(int idleMinutes)
{
    settings.set(Settings::screensaverIdleMinutes, idleMinutes);
    idleWatcher.restart();
}

} // namespace tb
