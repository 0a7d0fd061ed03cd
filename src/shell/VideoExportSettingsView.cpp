#include "VideoExportSettingsView.h"

#include "ColorButton.h"
#include "IconLine.h"
#include "audio/AudioManager.h"
#include "core/SettingsStore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace tb {

namespace {

template <typename Control> Control* named(Control* control, const QString& name)
{
    control->setAccessibleName(name);
    return control;
}

QLabel* line(QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    return label;
}

} // namespace

VideoExportSettingsView::VideoExportSettingsView(SettingsStore& settings, RandomSource& random, Inputs inputs,
                                                 std::function<void(const ExportSettings&)> onExport, QWidget* parent)
    : QDialog(parent),
      settings(settings),
      random(random),
      inputs(std::move(inputs)),
      included(includedImages(this->inputs.queue)),
      onExport(std::move(onExport))
{
    setWindowTitle(QStringLiteral("Video Export Settings"));
    setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(this);
    auto* title = new QLabel(QStringLiteral("Video Export Settings"), this);
    QFont bold = title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.3);
    title->setFont(bold);
    layout->addWidget(title);

    auto* form = new QFormLayout;
    delay = named(new QDoubleSpinBox(this), QStringLiteral("Delay (in sec):"));
    delay->setRange(0.1, 9999.0);
    delay->setSingleStep(0.1);
    delay->setDecimals(1);
    delay->setValue(settings.value(Settings::slideshowDelay));
    form->addRow(QStringLiteral("Delay (in sec):"), delay);

    transitionPicker = named(new QComboBox(this), QStringLiteral("Transition:"));
    for (auto type : {TransitionType::none, TransitionType::fade, TransitionType::kenBurns})
        transitionPicker->addItem(transitionTypeRaw(type), int(type));
    transitionPicker->setCurrentIndex(
        transitionPicker->findData(int(transitionTypeFromRaw(settings.value(Settings::transitionType)))));
    form->addRow(QStringLiteral("Transition:"), transitionPicker);

    shuffle = named(new QCheckBox(this), QStringLiteral("Shuffle Mode:"));
    shuffle->setChecked(settings.value(Settings::randomOrder));
    form->addRow(QStringLiteral("Shuffle Mode:"), shuffle);

    resolution = named(new QComboBox(this), QStringLiteral("Resolution:"));
    for (auto size : {VideoResolution::hd, VideoResolution::fullHD, VideoResolution::fourK})
        resolution->addItem(videoResolutionLabel(size), int(size));
    resolution->setCurrentIndex(resolution->findData(int(VideoResolution::fullHD)));
    form->addRow(QStringLiteral("Resolution:"), resolution);

    format = named(new QComboBox(this), QStringLiteral("Format:"));
    for (auto container : {ContainerFormat::mov, ContainerFormat::mp4})
        format->addItem(containerFormatRaw(container), int(container));
    format->setCurrentIndex(format->findData(int(ContainerFormat::mp4)));
    form->addRow(QStringLiteral("Format:"), format);

    background = named(new ColorButton(QStringLiteral("Background Color"), this), QStringLiteral("Background Color:"));
    background->setColor(settings.loadColor(Settings::backgroundColorData, Qt::black));
    connect(background, &ColorButton::colorChosen, this,
            [this](const QColor& colour) { this->settings.saveColor(Settings::backgroundColorData, colour); });
    auto* reset = named(new QPushButton(QStringLiteral("Reset to default (black)"), this),
                        QStringLiteral("Reset to default (black)"));
    connect(reset, &QPushButton::clicked, this, [this] {
        background->setColor(Qt::black);
        this->settings.saveColor(Settings::backgroundColorData, Qt::black);
    });
    auto* colourRow = new QHBoxLayout;
    colourRow->addWidget(background);
    colourRow->addWidget(reset);
    colourRow->addStretch(1);
    form->addRow(QStringLiteral("Background Color:"), colourRow);
    layout->addLayout(form);

    duration = line(this);
    audio = line(this);
    warning = line(this);
    layout->addWidget(duration);
    layout->addWidget(audio);
    warningLine = iconLine(this, icon(this, "dialog-warning", QStyle::SP_MessageBoxWarning), warning);
    layout->addWidget(warningLine);

    auto* buttons = new QHBoxLayout;
    auto* cancel = named(new QPushButton(QStringLiteral("Cancel"), this), QStringLiteral("Cancel"));
    exportButton = named(new QPushButton(QStringLiteral("Export"), this), QStringLiteral("Export"));
    exportButton->setDefault(true);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(exportButton, &QPushButton::clicked, this, &VideoExportSettingsView::exportPlan);
    buttons->addStretch(1);
    buttons->addWidget(cancel);
    buttons->addWidget(exportButton);
    layout->addLayout(buttons);

    connect(delay, &QDoubleSpinBox::valueChanged, this, &VideoExportSettingsView::showLines);
    connect(transitionPicker, &QComboBox::currentIndexChanged, this, &VideoExportSettingsView::showLines);
    connect(&this->inputs.audio, &AudioManager::audioTracksChanged, this, &VideoExportSettingsView::showLines);
    connect(&this->inputs.audio, &AudioManager::isLoopingChanged, this, &VideoExportSettingsView::showLines);
    showLines();
}

TransitionType VideoExportSettingsView::transition() const
{
    return TransitionType(transitionPicker->currentData().toInt());
}

QString VideoExportSettingsView::durationText() const { return duration->text(); }
QString VideoExportSettingsView::warningText() const { return warning->text(); }
QString VideoExportSettingsView::audioText() const { return audio->text(); }
bool VideoExportSettingsView::canExport() const { return exportButton->isEnabled(); }

void VideoExportSettingsView::showLines()
{
    const FramePlan plan(int(included.size()), delay->value(), transition());
    duration->setText(QStringLiteral("Video duration: ") + formatDuration(plan.videoDuration));
    audio->setText(exportAudioLine(inputs.audio.audioTracks(), inputs.audio.isLooping()));
    warning->setText(exportWarning(int(included.size()), int(inputs.queue.size() - included.size())));
    warningLine->setVisible(!warning->text().isEmpty());
    for (QLabel* label : {duration, audio, warning})
        label->setAccessibleName(label->text());
    exportButton->setEnabled(!included.isEmpty());
}

void VideoExportSettingsView::exportPlan()
{
    ExportSettings plan;
    plan.delay = delay->value();
    plan.transitionType = transition();
    plan.shuffleMode = shuffle->isChecked();
    plan.resolution = videoResolutionSize(VideoResolution(resolution->currentData().toInt()));
    plan.images = makeExportOrder(included, plan.shuffleMode, random, inputs.startingImageId);
    plan.containerFormat = ContainerFormat(format->currentData().toInt());
    onExport(plan);
    accept();
}

} // namespace tb
