#include "ShellFixture.h"

#include "media/Bookmark.h"
#include "shell/AdvancedOptionsView.h"
#include "shell/ColorButton.h"
#include "shell/ControlsColumn.h"
#include "shell/PositionPickerView.h"
#include "shell/SettingsHelpView.h"
#include "support/AccessibilityWalk.h"
#include "support/LogCapture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

using namespace tb;
using tb::test::named;
using tb::test::ShellFixture;
using tb::test::unnamedFocusableControls;

namespace {

QStringList labelTexts(const QWidget& root)
{
    QStringList texts;
    for (const QLabel* label : root.findChildren<QLabel*>())
        texts.append(label->text());
    return texts;
}

QGroupBox* section(const QWidget& root, const QString& title)
{
    for (auto* box : root.findChildren<QGroupBox*>())
        if (box->accessibleName() == title)
            return box;
    return nullptr;
}

struct AdvancedOptionsTest : ShellFixture {
    std::unique_ptr<AdvancedOptionsView> panel;

    AdvancedOptionsView& openPanel()
    {
        panel = std::make_unique<AdvancedOptionsView>(
            AdvancedOptionsView::Services{settings, displays, dialogs, idleWatcher});
        panel->show();
        return *panel;
    }

    QWidget& tab(const QString& title)
    {
        QTabWidget* tabs = panel->tabs();
        for (int i = 0; i < tabs->count(); ++i)
            if (tabs->tabText(i) == title)
                return *tabs->widget(i);
        ADD_FAILURE() << "no tab " << title.toStdString();
        return *panel;
    }
};

} // namespace

// Showing the stored values writes nothing back; an absent crossfade reads 1 s here (the main
// window's 2 s is not this tab's).
TEST_F(AdvancedOptionsTest, ShowsTheStoredValuesWithoutWritingThem)
{
    QSignalSpy writes(&settings, &SettingsStore::changed);
    openPanel();
    EXPECT_EQ(writes.count(), 0);
    EXPECT_EQ(named<QSlider>(tab("Playback"), "Crossfade Duration:")->value(), 1);
    EXPECT_TRUE(labelTexts(tab("Playback")).contains(QStringLiteral("1s")));
    auto* screens = named<QComboBox>(tab("Display"), "Slideshow Display:");
    ASSERT_NE(screens, nullptr);
    EXPECT_EQ(screens->itemText(0), QStringLiteral("Default (App Window's Screen)"));
    EXPECT_EQ(screens->count(), 1 + displays.availableScreens().size());
    EXPECT_EQ(named<QComboBox>(tab("Display"), "Image Scaling:")->currentText(),
              QStringLiteral("Best Fit (no upscaling)"));
}

// Each control writes its setting, and a write made elsewhere moves the control without being
// written back.
TEST_F(AdvancedOptionsTest, ControlsAndSettingsFollowEachOther)
{
    openPanel();
    test::LogCapture log;
    QWidget& playback = tab("Playback");
    QWidget& overlay = tab("Overlay");

    named<QCheckBox>(playback, "Manual mode:")->click();
    named<QComboBox>(playback, "Video Playback:")->setCurrentIndex(1);
    named<QCheckBox>(tab("Other"), "Show thumbnail alert:")->click();
    named<QComboBox>(tab("Live Mode"), "When new photos are detected:")->setCurrentIndex(1);
    named<QComboBox>(tab("Display"), "Image Scaling:")->setCurrentText("Fill (may crop image edges)");
    EXPECT_TRUE(settings.value(Settings::isManualMode));
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("[AdvancedOptions] Manual mode enabled")));
    EXPECT_EQ(settings.value(Settings::videoPlaybackMode), QStringLiteral("useDelay"));
    EXPECT_TRUE(settings.value(Settings::dontShowThumbnailAlert)) << "the switch is the flag's inverse";
    EXPECT_EQ(settings.value(Settings::liveModeNewPhotosBehavior), QStringLiteral("next"));
    EXPECT_EQ(settings.value(Settings::imageScalingMode), QStringLiteral("Fill (may crop image edges)"));

    named<QSlider>(playback, "Crossfade Duration:")->setValue(4);
    named<QSlider>(overlay, "Opacity:")->setValue(7);
    named<QSlider>(overlay, "Margin:")->setValue(3);
    named<QSlider>(*section(overlay, "Text Settings"), "Size:")->setValue(40);
    QTest::keyClicks(named<QLineEdit>(overlay, "Text:"), QStringLiteral("(c) me"));
    named<QRadioButton>(overlay, "Top Left")->click();
    EXPECT_EQ(settings.value(Settings::crossfadeDuration), 4.0);
    EXPECT_EQ(settings.value(Settings::overlayOpacity), 0.7);
    EXPECT_EQ(settings.value(Settings::overlayMargin), 15.0) << "the margin moves in steps of 5";
    EXPECT_EQ(settings.value(Settings::overlayFontSize), 40.0);
    EXPECT_EQ(settings.value(Settings::overlayText), QStringLiteral("(c) me"));
    EXPECT_EQ(settings.value(Settings::overlayPosition), QStringLiteral("topLeft"));
    EXPECT_TRUE(labelTexts(overlay).contains(QStringLiteral("70%")));
    EXPECT_TRUE(labelTexts(playback).contains(QStringLiteral("4s")));

    // Colours go through the chooser and are stored as "#AARRGGBB" bytes; reset stores black.
    auto* background = named<ColorButton>(playback, "Background Color:");
    background->setChooser([](const QColor&, QWidget*, const QString&) { return QColor(10, 20, 30); });
    background->click();
    EXPECT_EQ(settings.value(Settings::backgroundColorData), QByteArray("#FF0A141E"));
    named<QToolButton>(playback, "Reset to default (black)")->click();
    EXPECT_EQ(settings.value(Settings::backgroundColorData), QByteArray("#FF000000"));
    auto* fontColor = named<ColorButton>(overlay, "Color:");
    EXPECT_EQ(fontColor->color(), QColor(Qt::white)) << "an absent text colour is white";
    fontColor->setChooser([](const QColor&, QWidget*, const QString&) { return QColor(); }); // cancelled
    fontColor->click();
    EXPECT_FALSE(settings.value(Settings::overlayFontColorData).has_value());

    QSignalSpy writes(&settings, &SettingsStore::changed);
    settings.set(Settings::isManualMode, false);
    settings.set(Settings::startInWindowedMode, true);
    settings.set(Settings::overlayOpacity, 0.3);
    settings.set(Settings::overlayPosition, QStringLiteral("bottomLeft"));
    settings.set(Settings::overlayText, QStringLiteral("elsewhere"));
    settings.set(Settings::liveModeNewPhotosBehavior, QStringLiteral("queue"));
    settings.set(Settings::videoPlaybackMode, QStringLiteral("fullVideo"));
    settings.saveColor(Settings::overlayFontColorData, Qt::red);
    EXPECT_EQ(writes.count(), 8) << "no control wrote back";
    EXPECT_FALSE(named<QCheckBox>(playback, "Manual mode:")->isChecked());
    EXPECT_FALSE(log.contains(LogLevel::Info, QStringLiteral("[AdvancedOptions] Manual mode disabled")))
        << "only the user's flip is logged";
    EXPECT_TRUE(named<QCheckBox>(tab("Display"), "Start in Windowed Mode:")->isChecked());
    EXPECT_EQ(named<QSlider>(overlay, "Opacity:")->value(), 3);
    EXPECT_TRUE(named<QRadioButton>(overlay, "Bottom Left")->isChecked());
    EXPECT_EQ(named<QLineEdit>(overlay, "Text:")->text(), QStringLiteral("elsewhere"));
    EXPECT_EQ(named<QComboBox>(tab("Live Mode"), "When new photos are detected:")->currentText(),
              QStringLiteral("Add to end of queue"));
    EXPECT_EQ(named<QComboBox>(playback, "Video Playback:")->currentText(), QStringLiteral("Play full video"));
    EXPECT_EQ(fontColor->color(), QColor(Qt::red));

    // Values the readers take for another show as that one.
    settings.set(Settings::overlayPosition, QStringLiteral("middle"));
    settings.set(Settings::videoPlaybackMode, QStringLiteral("sometimes"));
    EXPECT_TRUE(named<QRadioButton>(overlay, "Bottom Right")->isChecked());
    EXPECT_EQ(named<QComboBox>(playback, "Video Playback:")->currentText(), QStringLiteral("Use slideshow delay"));
}

// On stores 5 whatever stood there, off stores 0; the minutes show only while on, and every
// change starts the idle watcher again.
TEST_F(AdvancedOptionsTest, ScreenSaverSwitchStoresFiveAndRestartsTheWatcher)
{
    settings.set(Settings::screensaverIdleMinutes, 12);
    openPanel();
    QWidget& other = tab("Other");
    auto* screenSaver = named<QCheckBox>(other, "Screen saver mode:");
    auto* minutes = named<QSpinBox>(other, "minutes of inactivity");
    ASSERT_TRUE(screenSaver && minutes);
    EXPECT_TRUE(screenSaver->isChecked());
    EXPECT_EQ(minutes->value(), 12);
    EXPECT_TRUE(minutes->isVisibleTo(&other));
    EXPECT_EQ(idleWatcher.restarts, 0);

    screenSaver->click();
    EXPECT_EQ(settings.value(Settings::screensaverIdleMinutes), 0);
    EXPECT_FALSE(minutes->isVisibleTo(&other));
    screenSaver->click();
    EXPECT_EQ(settings.value(Settings::screensaverIdleMinutes), 5);
    EXPECT_EQ(minutes->value(), 5);
    EXPECT_TRUE(minutes->isVisibleTo(&other));
    minutes->setValue(9);
    EXPECT_EQ(settings.value(Settings::screensaverIdleMinutes), 9);
    minutes->setValue(0);
    EXPECT_EQ(settings.value(Settings::screensaverIdleMinutes), 1) << "at least a minute";
    EXPECT_EQ(idleWatcher.restarts, 4);

    settings.set(Settings::screensaverIdleMinutes, 0); // the main window's own writes restart nothing here
    EXPECT_FALSE(screenSaver->isChecked());
    EXPECT_FALSE(minutes->isVisibleTo(&other));
    EXPECT_EQ(idleWatcher.restarts, 4);
}

// The scaling and sync notes say whether the present display mode is a grid; the sync switch
// stays usable either way.
TEST_F(AdvancedOptionsTest, GridNotesFollowTheDisplayMode)
{
    openPanel();
    const QString singleScaling = QStringLiteral("Image scaling applies to single photo view mode.");
    const QString singleSync =
        QStringLiteral("Sync transitions only apply to grid view modes. Select a grid mode to enable this option.");
    const QString gridSync = QStringLiteral("When enabled, all grid cells update at the same time. When disabled, "
                                            "cells update one at a time in a staggered pattern.");
    QWidget& display = tab("Display");
    auto* sync = named<QCheckBox>(display, "Sync Grid Transitions:");
    EXPECT_TRUE(labelTexts(display).contains(singleScaling));
    EXPECT_TRUE(labelTexts(display).contains(singleSync));

    settings.set(Settings::displayMode, 2);
    EXPECT_TRUE(labelTexts(display).contains(
        QStringLiteral("Image scaling only applies to single photo view mode. Current mode is 2x2 Grid view")));
    EXPECT_TRUE(labelTexts(display).contains(gridSync));
    EXPECT_FALSE(labelTexts(display).contains(singleSync));
    sync->click();
    EXPECT_TRUE(settings.value(Settings::syncGridTransitions));

    settings.set(Settings::displayMode, 7); // plays as a single photo
    EXPECT_TRUE(labelTexts(display).contains(singleScaling));
    EXPECT_TRUE(labelTexts(display).contains(singleSync));
    EXPECT_TRUE(sync->isEnabled());
}

// Reset forgets the remembered subfolder answer, so the next folder asks again.
TEST_F(AdvancedOptionsTest, SubfolderResetForgetsTheRememberedAnswer)
{
    settings.set(Settings::rememberFolderRecursion, true);
    settings.set(Settings::folderRecursionDepth, 0);
    openPanel();
    QWidget& other = tab("Other");
    auto* reset = named<QPushButton>(other, "Reset");
    ASSERT_NE(reset, nullptr);
    EXPECT_TRUE(labelTexts(other).contains(QStringLiteral("This Folder Only")));
    EXPECT_TRUE(reset->isVisibleTo(&other));
    settings.set(Settings::folderRecursionDepth, -1);
    EXPECT_TRUE(labelTexts(other).contains(QStringLiteral("All Subfolders")));

    reset->click();
    EXPECT_FALSE(settings.value(Settings::rememberFolderRecursion));
    EXPECT_FALSE(settings.contains(QLatin1String(Settings::folderRecursionDepth.name)));
    EXPECT_TRUE(labelTexts(other).contains(QStringLiteral("Ask every time")));
    EXPECT_FALSE(reset->isVisibleTo(&other));
}

// The picture is chosen in an open panel for single picture files and kept as a bookmark; Clear
// removes the key. The section shown follows the overlay's type.
TEST_F(AdvancedOptionsTest, OverlayPictureIsChosenThroughTheOpenPanelAndCleared)
{
    const QString picture = dir.filePath(QStringLiteral("mark.png"));
    ASSERT_TRUE(QImage(4, 2, QImage::Format_RGB32).save(picture));
    openPanel();
    QWidget& overlay = tab("Overlay");
    panel->tabs()->setCurrentWidget(&overlay);
    auto* select = named<QPushButton>(overlay, "Select...");
    auto* clear = named<QPushButton>(overlay, "Clear");
    ASSERT_TRUE(select && clear);
    EXPECT_FALSE(clear->isEnabled());

    select->click(); // cancelled
    ASSERT_EQ(dialogs.prompts.size(), 1);
    const OpenPanelOptions& asked = dialogs.prompts[0].open;
    EXPECT_EQ(dialogs.prompts[0].kind, test::ScriptedUserDialogs::Kind::OpenPanel);
    EXPECT_EQ(asked.message, QStringLiteral("Select an image for the overlay"));
    EXPECT_EQ(asked.prompt, QStringLiteral("Select"));
    EXPECT_TRUE(asked.canChooseFiles);
    EXPECT_FALSE(asked.canChooseDirectories);
    EXPECT_FALSE(asked.allowsMultipleSelection);
    ASSERT_EQ(asked.nameFilters.size(), 1);
    EXPECT_TRUE(asked.nameFilters[0].contains(QStringLiteral("*.heic")));
    EXPECT_FALSE(asked.nameFilters[0].contains(QStringLiteral("*.mp4")));
    EXPECT_FALSE(settings.value(Settings::overlayImageBookmark).has_value());

    dialogs.openAnswers = {{picture}};
    select->click();
    const auto stored = settings.value(Settings::overlayImageBookmark);
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(Bookmark::fromData(*stored)->path, picture);
    EXPECT_TRUE(labelTexts(overlay).contains(QStringLiteral("mark.png")));
    EXPECT_TRUE(clear->isEnabled());
    clear->click();
    EXPECT_FALSE(settings.contains(QLatin1String(Settings::overlayImageBookmark.name)));
    EXPECT_FALSE(clear->isEnabled());

    QGroupBox* imageSection = section(overlay, "Image Settings");
    QGroupBox* textSection = section(overlay, "Text Settings");
    ASSERT_TRUE(imageSection && textSection && section(overlay, "Position & Appearance"));
    EXPECT_TRUE(imageSection->isVisible());
    EXPECT_FALSE(textSection->isVisible());
    named<QComboBox>(overlay, "Overlay Type:")->setCurrentText("Text");
    EXPECT_EQ(settings.value(Settings::overlayType), QStringLiteral("text"));
    EXPECT_FALSE(imageSection->isVisible());
    EXPECT_TRUE(textSection->isVisible());
}

// What a screen reader meets: every control that can take focus has a name.
TEST_F(AdvancedOptionsTest, EveryFocusableControlHasAnAccessibleName)
{
    settings.set(Settings::rememberFolderRecursion, true); // Reset shown
    openPanel();
    int checked = 0;
    EXPECT_EQ(unnamedFocusableControls(panel.get(), checked), QStringList());
    EXPECT_GT(checked, 25);
}

// The main window's buttons open the panels, one of each at a time; Escape closes them.
TEST_F(AdvancedOptionsTest, MainWindowOpensOnePanelOfEachKind)
{
    ContentView& window = openWindow();
    auto* controls = window.findChild<ControlsColumn*>();
    ASSERT_NE(controls, nullptr);
    Q_EMIT controls->advancedOptionsRequested();
    Q_EMIT controls->advancedOptionsRequested();
    const auto options = window.findChildren<AdvancedOptionsView*>();
    ASSERT_EQ(options.size(), 1);
    EXPECT_TRUE(options[0]->isVisible());
    EXPECT_TRUE(options[0]->isModal());
    QTest::keyClick(options[0], Qt::Key_Escape);
    EXPECT_FALSE(options[0]->isVisible());

    named<QToolButton>(window, "Click for more information")->click();
    ASSERT_EQ(window.findChildren<SettingsHelpView*>().size(), 1);
    EXPECT_TRUE(window.findChild<SettingsHelpView*>()->isVisible());
}
