#include "ControlsColumn.h"

#include "IconLine.h"
#include "KeyboardShortcutsView.h"
#include "UpdaterControllerWrapper.h"
#include "core/Analytics.h"
#include "core/FileRevealer.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "core/Version.h"
#include "media/MediaTypes.h"
#include "media/QueueEditing.h"
#include "playback/SlideshowManager.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace tb {

namespace {

constexpr int pickerWidth = 173;

QGroupBox* group(QWidget* parent, const QString& title)
{
    auto* box = new QGroupBox(title, parent);
    box->setFlat(true);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->setSpacing(4);
    return box;
}

QPushButton* button(QWidget* parent, const QString& text)
{
    auto* pushButton = new QPushButton(text, parent);
    pushButton->setAccessibleName(text);
    return pushButton;
}

QCheckBox* toggle(QWidget* parent, const QString& text)
{
    auto* check = new QCheckBox(text, parent);
    check->setAccessibleName(text);
    return check;
}

} // namespace

ControlsColumn::ControlsColumn(Services services, std::function<std::optional<QUrl>()> selectedFolder, QWidget* parent)
    : QWidget(parent), services(services), selectedFolder(std::move(selectedFolder))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 4, 0);
    column->setSpacing(6);

    QGroupBox* addMedia = group(this, QStringLiteral("Add media"));
    QPushButton* select = button(addMedia, QStringLiteral("Select files or folders"));
    connect(select, &QPushButton::clicked, this, &ControlsColumn::selectFilesRequested);
    addMedia->layout()->addWidget(select);
    totals = new QLabel;
    addMedia->layout()->addWidget(iconLine(addMedia, icon(this, "image-x-generic", QStyle::SP_FileIcon), totals));
    setTotalFilesAdded(0);
    column->addWidget(addMedia);

    QGroupBox* live = group(this, QStringLiteral("Live Mode"));
    auto* liveRow = new QHBoxLayout;
    liveMode = toggle(live, QStringLiteral("Live Mode"));
    connect(liveMode, &QCheckBox::toggled, this, &ControlsColumn::switchLiveMode);
    auto* liveHelp = new QToolButton(live);
    liveHelp->setIcon(icon(this, "help-contents", QStyle::SP_MessageBoxQuestion));
    liveHelp->setAccessibleName(QStringLiteral("Live Mode - help"));
    liveHelp->setAutoRaise(true);
    connect(liveHelp, &QToolButton::clicked, this, [this, liveHelp] {
        // A popover: a frameless popup below the button that closes on any click outside it.
        auto* popover = new QLabel(QStringLiteral("<b>Live Mode - help</b><br><br>When enabled, Tallowbrook actively "
                                                  "monitors the selected folder during a slideshow. Any new photos or "
                                                  "videos added to this folder while the slideshow is running will be "
                                                  "automatically included and displayed.<br><br>Note: This feature "
                                                  "only works when a single folder is selected."),
                                   this, Qt::Popup);
        popover->setObjectName(QStringLiteral("liveModeHelp"));
        popover->setAttribute(Qt::WA_DeleteOnClose);
        popover->setWordWrap(true);
        popover->setMargin(12);
        popover->setFixedWidth(300);
        popover->move(liveHelp->mapToGlobal(QPoint(0, liveHelp->height())));
        popover->show();
    });
    liveRow->addWidget(liveMode);
    liveRow->addWidget(liveHelp);
    liveRow->addStretch(1);
    static_cast<QVBoxLayout*>(live->layout())->addLayout(liveRow);
    watchedPath = new QLabel;
    watchedPath->setTextInteractionFlags(Qt::TextSelectableByMouse);
    watchedRow = new QWidget(live);
    auto* watchedLayout = new QVBoxLayout(watchedRow);
    watchedLayout->setContentsMargins(0, 0, 0, 0);
    watchedLayout->addWidget(iconLine(watchedRow, icon(this, "folder", QStyle::SP_DirIcon), watchedPath));
    QPushButton* openFolder = button(watchedRow, QStringLiteral("Open in File Manager"));
    connect(openFolder, &QPushButton::clicked, this, [this] {
        if (const auto& folder = this->services.slideshowManager.watchedFolder())
            this->services.fileRevealer.reveal(folder->toLocalFile());
    });
    watchedLayout->addWidget(openFolder);
    live->layout()->addWidget(watchedRow);
    column->addWidget(live);

    QGroupBox* settingsGroup = group(this, QStringLiteral("Settings"));
    auto* form = new QFormLayout;
    auto picker = [settingsGroup, form](const QString& label, const QStringList& items) {
        auto* combo = new QComboBox(settingsGroup);
        combo->addItems(items);
        combo->setFixedWidth(pickerWidth);
        combo->setAccessibleName(label);
        form->addRow(label, combo);
        return combo;
    };
    sortBy = picker(QStringLiteral("Sort by:"), sortOptions());
    QStringList modes;
    for (GridOption option : {GridOption::none, GridOption::sideBySide, GridOption::twoByTwo, GridOption::threeByThree})
        modes.append(gridOptionLabel(option));
    displayMode = picker(QStringLiteral("Display mode:"), modes);
    QStringList transitions;
    for (TransitionType type : {TransitionType::none, TransitionType::fade, TransitionType::kenBurns})
        transitions.append(transitionTypeRaw(type));
    transition = picker(QStringLiteral("Transition:"), transitions);
    delay = new QDoubleSpinBox(settingsGroup);
    delay->setRange(1.0, 9999.0);
    delay->setDecimals(1);
    delay->setSingleStep(1.0);
    delay->setAccessibleName(QStringLiteral("Delay (in sec):"));
    form->addRow(QStringLiteral("Delay (in sec):"), delay);
    static_cast<QVBoxLayout*>(settingsGroup->layout())->addLayout(form);
    loop = toggle(settingsGroup, QStringLiteral("Loop slideshow"));
    shuffle = toggle(settingsGroup, QStringLiteral("Shuffle mode"));
    settingsGroup->layout()->addWidget(loop);
    settingsGroup->layout()->addWidget(shuffle);
    QPushButton* advanced = button(settingsGroup, QStringLiteral("Advanced options"));
    QPushButton* audio = button(settingsGroup, QStringLiteral("Audio options"));
    connect(advanced, &QPushButton::clicked, this, &ControlsColumn::advancedOptionsRequested);
    connect(audio, &QPushButton::clicked, this, &ControlsColumn::audioOptionsRequested);
    auto* panels = new QHBoxLayout;
    panels->addWidget(advanced);
    panels->addWidget(audio);
    static_cast<QVBoxLayout*>(settingsGroup->layout())->addLayout(panels);
    column->addWidget(settingsGroup);

    // Each control writes its setting; followSetting brings it back in line with writes made
    // elsewhere.
    SettingsStore& settings = services.settings;
    connect(displayMode, &QComboBox::currentIndexChanged, this,
            [&settings](int index) { settings.set(Settings::displayMode, index); });
    connect(transition, &QComboBox::currentTextChanged, this,
            [&settings](const QString& text) { settings.set(Settings::transitionType, text); });
    connect(delay, &QDoubleSpinBox::valueChanged, this,
            [&settings](double seconds) { settings.set(Settings::slideshowDelay, seconds); });
    connect(loop, &QCheckBox::toggled, this, [&settings](bool on) { settings.set(Settings::loopSlideshow, on); });
    connect(shuffle, &QCheckBox::toggled, this, [&settings](bool on) { settings.set(Settings::randomOrder, on); });
    for (const char* key : {Settings::displayMode.name, Settings::transitionType.name, Settings::slideshowDelay.name,
                            Settings::loopSlideshow.name, Settings::randomOrder.name})
        followSetting(QLatin1String(key));
    connect(&settings, &SettingsStore::changed, this, &ControlsColumn::followSetting);

    auto* hints = new QVBoxLayout;
    hints->setSpacing(2);
    const std::tuple<const char*, QStyle::StandardPixmap, QString> hintLines[] = {
        {"media-playback-pause", QStyle::SP_MediaPause, QStringLiteral("Spacebar: pause slideshow.")},
        {"go-next", QStyle::SP_ArrowRight, QStringLiteral("Right arrow: next photo.")},
        {"go-previous", QStyle::SP_ArrowLeft, QStringLiteral("Left arrow: previous photo.")},
        {"process-stop", QStyle::SP_BrowserStop, QStringLiteral("Escape: quit slideshow.")},
    };
    for (const auto& [themeName, fallback, text] : hintLines)
        hints->addWidget(iconLine(this, icon(this, themeName, fallback), new QLabel(text)));
    auto* allShortcuts = new QToolButton(this);
    allShortcuts->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    allShortcuts->setIcon(icon(this, "input-keyboard", QStyle::SP_ComputerIcon));
    allShortcuts->setText(QStringLiteral("View all keyboard shortcuts  ›"));
    allShortcuts->setAccessibleName(QStringLiteral("View all keyboard shortcuts"));
    allShortcuts->setAutoRaise(true);
    connect(allShortcuts, &QToolButton::clicked, this, &ControlsColumn::showKeyboardShortcuts);
    hints->addWidget(allShortcuts);
    column->addLayout(hints);

    QGroupBox* run = group(this, QStringLiteral("Run slideshow"));
    start = button(run, QStringLiteral("Start"));
    start->setMinimumWidth(100);
    start->setDefault(true);
    connect(start, &QPushButton::clicked, this, &ControlsColumn::startRequested);
    run->layout()->addWidget(start);
    auto* warning = new QLabel(QStringLiteral("Slideshow is running. Stop it to start another one."));
    warning->setAccessibleName(warning->text());
    runningWarning = iconLine(run, icon(this, "dialog-warning", QStyle::SP_MessageBoxWarning), warning);
    run->layout()->addWidget(runningWarning);
    column->addWidget(run);
    connect(&services.slideshowManager, &SlideshowManager::isSlideshowRunningChanged, this,
            &ControlsColumn::showRunning);
    showRunning(services.slideshowManager.isSlideshowRunning());

    exportVideo = button(this, QStringLiteral("Export as Video"));
    connect(exportVideo, &QPushButton::clicked, this, &ControlsColumn::exportRequested);
    column->addWidget(exportVideo);
    exportBar = new QProgressBar(this);
    exportBar->setRange(0, 1000);
    exportBar->setAccessibleName(QStringLiteral("Export progress"));
    exportBar->hide();
    column->addWidget(exportBar);

    screenSaverText = new QLabel;
    screenSaverStatus = iconLine(this, icon(this, "weather-clear-night", QStyle::SP_DesktopIcon), screenSaverText);
    column->addWidget(screenSaverStatus);
    showScreenSaverStatus();

    column->addStretch(1);
    auto* foot = new QHBoxLayout;
    auto* version = new QLabel(QStringLiteral("Version ") + QApplication::applicationVersion(), this);
    version->setObjectName(QStringLiteral("version"));
    QPushButton* checkUpdates = button(this, QStringLiteral("Check for updates"));
    connect(checkUpdates, &QPushButton::clicked, this, [this] {
        this->services.analytics.recordEvent(QStringLiteral("check_for_updates_clicked"),
                                             {{QStringLiteral("version"), QString::fromLatin1(appVersion)}});
        this->services.updater.checkForUpdates();
    });
    auto* info = new QToolButton(this);
    info->setIcon(icon(this, "dialog-information", QStyle::SP_MessageBoxInformation));
    info->setToolTip(QStringLiteral("Click for more information"));
    info->setAccessibleName(info->toolTip());
    info->setAutoRaise(true);
    connect(info, &QToolButton::clicked, this, &ControlsColumn::helpRequested);
    foot->addWidget(version);
    foot->addStretch(1);
    foot->addWidget(checkUpdates);
    foot->addWidget(info);
    column->addLayout(foot);

    connect(&services.slideshowManager, &SlideshowManager::isLiveModeActiveChanged, this,
            &ControlsColumn::showLiveMode);
    connect(&services.slideshowManager, &SlideshowManager::watchedFolderChanged, this, &ControlsColumn::showLiveMode);
    showLiveMode();
}

void ControlsColumn::setTotalFilesAdded(int total)
{
    totals->setText(QStringLiteral("Total files added: %1").arg(total));
    totals->setAccessibleName(totals->text());
}

void ControlsColumn::switchLiveMode(bool on)
{
    SlideshowManager& manager = services.slideshowManager;
    if (!on) {
        manager.setLiveModeActive(false);
        manager.setWatchedFolder(std::nullopt);
        logInfo(QStringLiteral("LiveMode disabled"));
    } else if (const std::optional<QUrl> folder = selectedFolder()) {
        manager.setLiveModeActive(true);
        manager.setWatchedFolder(folder);
        logInfo(QStringLiteral("LiveMode enabled. Folder watched: ") + folder->toLocalFile());
    } else {
        services.dialogs.alert(AlertStyle::Warning, QStringLiteral("No Folder Selected"),
                               QStringLiteral("Please select a folder before enabling Live Mode."));
        manager.setLiveModeActive(false);
    }
    showLiveMode(); // the switch goes back when the manager did not change
}

void ControlsColumn::showExport(bool exporting, bool showProgress, double progress, const QString& progressText)
{
    exportVideo->setText(exporting ? QStringLiteral("Cancel Export") : QStringLiteral("Export as Video"));
    exportVideo->setAccessibleName(exportVideo->text());
    exportBar->setVisible(showProgress);
    exportBar->setValue(int(progress * 1000.0));
    exportBar->setFormat(progressText);
}

bool ControlsColumn::isLiveModeSwitchOn() const { return liveMode->isChecked(); }

void ControlsColumn::showLiveMode()
{
    const SlideshowManager& manager = services.slideshowManager;
    const QSignalBlocker quiet(liveMode);
    liveMode->setChecked(manager.isLiveModeActive());
    const auto& folder = manager.watchedFolder();
    watchedRow->setVisible(manager.isLiveModeActive() && folder.has_value());
    watchedPath->setText(QStringLiteral("Watched folder: ") + (folder ? folder->toLocalFile() : QString()));
}

void ControlsColumn::followSetting(const QString& key)
{
    const SettingsStore& settings = services.settings;
    if (key == QLatin1String(Settings::displayMode.name)) {
        const QSignalBlocker quiet(displayMode);
        displayMode->setCurrentIndex(int(gridOptionFromRaw(settings.value(Settings::displayMode))));
    } else if (key == QLatin1String(Settings::transitionType.name)) {
        const QSignalBlocker quiet(transition);
        transition->setCurrentText(transitionTypeRaw(transitionTypeFromRaw(settings.value(Settings::transitionType))));
    } else if (key == QLatin1String(Settings::slideshowDelay.name)) {
        const QSignalBlocker quiet(delay);
        delay->setValue(settings.value(Settings::slideshowDelay));
    } else if (key == QLatin1String(Settings::loopSlideshow.name)) {
        const QSignalBlocker quiet(loop);
        loop->setChecked(settings.value(Settings::loopSlideshow));
    } else if (key == QLatin1String(Settings::randomOrder.name)) {
        const QSignalBlocker quiet(shuffle);
        shuffle->setChecked(settings.value(Settings::randomOrder));
    } else if (key == QLatin1String(Settings::screensaverIdleMinutes.name)) {
        showScreenSaverStatus();
    }
}

void ControlsColumn::showRunning(bool running)
{
    start->setEnabled(!running);
    runningWarning->setVisible(running);
}

void ControlsColumn::showScreenSaverStatus()
{
    const int minutes = services.settings.value(Settings::screensaverIdleMinutes);
    screenSaverText->setText(QStringLiteral("Screen saver mode is ON (%1 min)").arg(minutes));
    screenSaverStatus->setVisible(minutes > 0);
}

void ControlsColumn::showKeyboardShortcuts()
{
    auto* dialog = new QDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(QStringLiteral("Keyboard Shortcuts"));
    auto* layout = new QVBoxLayout(dialog);
    layout->addWidget(new KeyboardShortcutsView(dialog));
    QPushButton* close = button(dialog, QStringLiteral("Close"));
    connect(close, &QPushButton::clicked, dialog, &QDialog::accept);
    layout->addWidget(close, 0, Qt::AlignRight);
    dialog->open();
}

} // namespace tb
