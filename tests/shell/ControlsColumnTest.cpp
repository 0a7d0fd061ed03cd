#include "ShellFixture.h"

#include "media/FileIntake.h"
#include "shell/ControlsColumn.h"
#include "support/LogCapture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>

using namespace tb;
using tb::test::named;
using tb::test::ShellFixture;

namespace {

struct ControlsColumnTest : ShellFixture {
    QTemporaryDir media;

    QString makeFolder(const QString& name)
    {
        QDir(media.path()).mkdir(name);
        return media.filePath(name);
    }
};

} // namespace

// Live mode needs the one folder the file dialog chose: a drop, two folders or a file are not
// enough, and the switch goes back with the alert.
TEST_F(ControlsColumnTest, LiveModeWatchesTheDialogsSingleFolder)
{
    ContentView& window = openWindow();
    auto* liveSwitch = named<QCheckBox>(window, QStringLiteral("Live Mode"));
    ASSERT_NE(liveSwitch, nullptr);
    const QString trip = makeFolder(QStringLiteral("trip"));
    const QString more = makeFolder(QStringLiteral("more"));
    test::LogCapture log;

    window.intake().handleDrop({QUrl::fromLocalFile(trip)});
    liveSwitch->click();
    EXPECT_EQ(promptTitles(), QStringList{QStringLiteral("No Folder Selected")});
    EXPECT_EQ(dialogs.prompts.last().text, QStringLiteral("Please select a folder before enabling Live Mode."));
    EXPECT_FALSE(liveSwitch->isChecked());
    EXPECT_FALSE(slideshowManager.isLiveModeActive());

    dialogs.openAnswers = {{trip, more}};
    window.intake().selectFiles();
    liveSwitch->click();
    EXPECT_EQ(dialogs.prompts.last().title, QStringLiteral("No Folder Selected")) << "two folders";
    EXPECT_FALSE(liveSwitch->isChecked());

    dialogs.openAnswers = {{trip}};
    window.intake().selectFiles();
    dialogs.prompts.clear();
    liveSwitch->click();
    EXPECT_TRUE(dialogs.prompts.isEmpty());
    EXPECT_TRUE(liveSwitch->isChecked());
    EXPECT_TRUE(slideshowManager.isLiveModeActive());
    EXPECT_EQ(slideshowManager.watchedFolder(), QUrl::fromLocalFile(trip));
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("LiveMode enabled. Folder watched: ") + trip));
    auto* reveal = named<QPushButton>(window, QStringLiteral("Open in File Manager"));
    ASSERT_NE(reveal, nullptr);
    EXPECT_TRUE(reveal->isVisibleTo(&window));
    reveal->click();
    EXPECT_EQ(revealer.revealed, QStringList{trip});

    liveSwitch->click();
    EXPECT_FALSE(slideshowManager.isLiveModeActive());
    EXPECT_FALSE(slideshowManager.watchedFolder().has_value());
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("LiveMode disabled")));
    EXPECT_FALSE(reveal->isVisibleTo(&window));
}

// Each control writes its setting, and follows a write made elsewhere without writing back.
TEST_F(ControlsColumnTest, ControlsAndSettingsFollowEachOther)
{
    settings.set(Settings::displayMode, 2);
    settings.set(Settings::slideshowDelay, 7.5);
    ContentView& window = openWindow();
    auto* mode = named<QComboBox>(window, QStringLiteral("Display mode:"));
    auto* transition = named<QComboBox>(window, QStringLiteral("Transition:"));
    auto* delay = named<QDoubleSpinBox>(window, QStringLiteral("Delay (in sec):"));
    auto* shuffle = named<QCheckBox>(window, QStringLiteral("Shuffle mode"));
    ASSERT_TRUE(mode && transition && delay && shuffle);
    EXPECT_EQ(mode->currentText(), QStringLiteral("2x2 Grid view"));
    EXPECT_EQ(delay->value(), 7.5);

    transition->setCurrentText(QStringLiteral("Ken Burns"));
    delay->stepUp();
    shuffle->click();
    EXPECT_EQ(settings.value(Settings::transitionType), QStringLiteral("Ken Burns"));
    EXPECT_EQ(settings.value(Settings::slideshowDelay), 8.5) << "the stepper's step is 1";
    EXPECT_TRUE(settings.value(Settings::randomOrder));

    settings.set(Settings::displayMode, 3);
    settings.set(Settings::loopSlideshow, true);
    EXPECT_EQ(mode->currentText(), QStringLiteral("3x3 Grid view"));
    EXPECT_TRUE(named<QCheckBox>(window, QStringLiteral("Loop slideshow"))->isChecked());

    // The screen-saver line only while an idle time is set.
    auto statusShown = [&window] {
        for (QLabel* label : window.findChildren<QLabel*>())
            if (label->text() == QStringLiteral("Screen saver mode is ON (5 min)"))
                return label->isVisibleTo(&window);
        return false;
    };
    EXPECT_FALSE(statusShown());
    settings.set(Settings::screensaverIdleMinutes, 5);
    EXPECT_TRUE(statusShown());
}

TEST_F(ControlsColumnTest, StartIsDisabledWithAWarningWhileAShowRuns)
{
    ContentView& window = openWindow();
    auto* start = named<QPushButton>(window, QStringLiteral("Start"));
    auto* warning = named<QLabel>(window, QStringLiteral("Slideshow is running. Stop it to start another one."));
    ASSERT_TRUE(start && warning);
    EXPECT_TRUE(start->isEnabled());
    EXPECT_FALSE(warning->isVisibleTo(&window));
    slideshowManager.setSlideshowRunning(true);
    EXPECT_FALSE(start->isEnabled());
    EXPECT_TRUE(warning->isVisibleTo(&window));
}
