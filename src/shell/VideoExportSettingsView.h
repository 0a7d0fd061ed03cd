#pragma once

#include "export/ExportPlan.h"

#include <QDialog>

#include <functional>
#include <optional>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QPushButton;
class QWidget;

namespace tb {

class AudioManager;
class ColorButton;
class RandomSource;
class SettingsStore;

// The panel that turns the queue into a movie's plan: delay, transition, shuffle, size, container
// and background colour, with the movie's estimated length, the sound track it will carry and
// what it leaves out. It opens with the show's own delay, transition and shuffle, which it never
// writes back; only the colour is saved, at each change.
class VideoExportSettingsView final : public QDialog {
    Q_OBJECT
public:
    struct Inputs {
        QList<IdentifiableImage> queue;
        const AudioManager& audio;
        std::optional<QUuid> startingImageId;
    };

    VideoExportSettingsView(SettingsStore& settings, RandomSource& random, Inputs inputs,
                            std::function<void(const ExportSettings&)> onExport, QWidget* parent = nullptr);

    QString durationText() const;
    QString warningText() const;
    QString audioText() const;
    bool canExport() const;

private:
    void showLines();
    void exportPlan();
    TransitionType transition() const;

    SettingsStore& settings;
    RandomSource& random;
    Inputs inputs;
    QList<IdentifiableImage> included;
    std::function<void(const ExportSettings&)> onExport;
    QDoubleSpinBox* delay = nullptr;
    QComboBox* transitionPicker = nullptr;
    QCheckBox* shuffle = nullptr;
    QComboBox* resolution = nullptr;
    QComboBox* format = nullptr;
    ColorButton* background = nullptr;
    QLabel* duration = nullptr;
    QLabel* audio = nullptr;
    QLabel* warning = nullptr;
    QWidget* warningLine = nullptr;
    QPushButton* exportButton = nullptr;
};

} // namespace tb
