#include "PlaybackSettingsTab.h"

#include "ColorButton.h"
#include "IconLine.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QToolButton>

#include <cmath>

namespace tb {

PlaybackSettingsTab::PlaybackSettingsTab(SettingsStore& settings, QWidget* parent) : SettingsTab(settings, parent)
{
    QFormLayout* rows = addRows();

    QCheckBox* manual = addSwitch(rows, QStringLiteral("Manual mode:"), Settings::isManualMode);
    connect(manual, &QCheckBox::toggled, this, [](bool on) {
        logInfo(on ? QStringLiteral("[AdvancedOptions] Manual mode enabled")
                   : QStringLiteral("[AdvancedOptions] Manual mode disabled"));
    });
    addNote(rows, QStringLiteral("When enabled, photos advance only with arrow keys. Automatic timing is disabled."));

    // An absent crossfadeDuration shows as 1 s here, its default for this tab; the main window
    // starts shows with 2 s then.
    addSlider(rows, QStringLiteral("Crossfade Duration:"),
              {Settings::crossfadeDuration, 1, 10, 1.0,
               [](double seconds) { return QStringLiteral("%1s").arg(std::lround(seconds)); }, 160});
    addNote(rows, QStringLiteral("Duration of crossfade transition between photos (1 - 10 seconds). Affects both "
                                 "Cross-fade and Ken Burns transitions."));

    auto* colourLine = new QWidget(this);
    auto* colourLayout = new QHBoxLayout(colourLine);
    colourLayout->setContentsMargins(0, 0, 0, 0);
    background = new ColorButton(QStringLiteral("Background Color"), colourLine);
    background->setAccessibleName(QStringLiteral("Background Color:"));
    auto* reset = new QToolButton(colourLine);
    reset->setIcon(icon(this, "edit-undo", QStyle::SP_BrowserReload));
    reset->setToolTip(QStringLiteral("Reset to default (black)"));
    reset->setAccessibleName(reset->toolTip());
    reset->setAutoRaise(true);
    colourLayout->addWidget(background);
    colourLayout->addWidget(reset);
    colourLayout->addStretch(1);
    addRow(rows, QStringLiteral("Background Color:"), colourLine);
    addNote(rows, QStringLiteral("Visible behind images during a slideshow."));
    connect(background, &ColorButton::colorChosen, this,
            [this](const QColor& colour) { this->settings.saveColor(Settings::backgroundColorData, colour); });
    connect(reset, &QToolButton::clicked, this,
            [this] { this->settings.saveColor(Settings::backgroundColorData, Qt::black); });
    follow({Settings::backgroundColorData.name},
           [this] { background->setColor(this->settings.loadColor(Settings::backgroundColorData, Qt::black)); });

    // The players cut a clip for any value but fullVideo.
    addPicker(rows, QStringLiteral("Video Playback:"), Settings::videoPlaybackMode,
              {{QStringLiteral("Play full video"), QStringLiteral("fullVideo")},
               {QStringLiteral("Use slideshow delay"), QStringLiteral("useDelay")}},
              QStringLiteral("useDelay"));
    addNote(rows, QStringLiteral("\"Play full video\" plays each video to its end before the slideshow advances. "
                                 "\"Use slideshow delay\" cuts videos off at the configured delay time."));

    addSwitch(rows, QStringLiteral("Mute Video Audio:"), Settings::muteVideoAudio);
    addNote(rows, QStringLiteral("When enabled, video audio is muted. Slideshow audio (if any) continues playing."));
}

} // namespace tb
