#include "ShellFixture.h"

#include "audio/AudioManager.h"
#include "documents/DocumentCodec.h"
#include "documents/SlideshowDocument.h"
#include "media/FileIntake.h"
#include "shell/QueueModel.h"
#include "shell/QueueView.h"
#include "support/LogCapture.h"

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>

using namespace tb;
using tb::test::named;
using tb::test::ShellFixture;

namespace {

QAction* findAction(ContentView& window, const QString& text)
{
    for (QAction* menu : window.menuBar()->actions())
        for (QAction* action : menu->menu()->actions())
            if (action->text() == text)
                return action;
    return nullptr;
}

} // namespace

using ContentViewTest = ShellFixture;

TEST_F(ContentViewTest, EveryOpenWindowReactsToEachCommand)
{
    ContentView& first = openWindow();
    openWindow();
    commands.post(Command::startSlideshow);
    EXPECT_EQ(promptTitles(), (QStringList{QStringLiteral("No files added"), QStringLiteral("No files added")}));
    EXPECT_EQ(dialogs.prompts[0].text, QStringLiteral("Please add files before running the slideshow."));

    // The menu posts the command; a closed window no longer hears it.
    windows.pop_back();
    dialogs.prompts.clear();
    findAction(first, QStringLiteral("Start Slideshow"))->trigger();
    EXPECT_EQ(dialogs.prompts.size(), 1);

    // With nothing queued the screen saver starts nothing, silently.
    dialogs.prompts.clear();
    commands.post(Command::idleThresholdReached);
    EXPECT_TRUE(dialogs.prompts.isEmpty());
}

TEST_F(ContentViewTest, SaveSlideshowSavesThisWindowsQueueAndPlaylistWhereThePanelSays)
{
    ContentView& window = openWindow();
    window.queue().replaceAll(tb::test::makeQueue(2));
    window.audio().setAudioTracks({AudioTrack::fromFile(QUrl::fromLocalFile(QStringLiteral("/music/a.mp3")), 3.0)});
    const QString path = dir.filePath(QStringLiteral("Show.slideshow"));
    dialogs.saveAnswers = {path};
    commands.post(Command::saveSlideshow);
    ASSERT_EQ(dialogs.prompts.size(), 1);
    EXPECT_EQ(dialogs.prompts[0].save.directory, QStringLiteral("/show")) << "the first item's folder";
    ASSERT_TRUE(QTest::qWaitFor([this] { return dialogs.prompts.size() == 2; }, 30000));
    EXPECT_EQ(dialogs.prompts[1].title, QStringLiteral("Slideshow Saved Successfully"));

    QFile saved(path);
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    const auto decoded = decodeSlideshowDocument(saved.readAll());
    ASSERT_TRUE(std::holds_alternative<SlideshowDocument>(decoded));
    const SlideshowDocument& document = std::get<SlideshowDocument>(decoded);
    ASSERT_EQ(document.images.size(), 2);
    EXPECT_EQ(document.images[1].originalPath, QStringLiteral("/show/1.jpg"));
    EXPECT_EQ(document.audioTracks.size(), 1);
    EXPECT_EQ(document.settings.selectedSortOption, window.selectedSortOption());
}

TEST_F(ContentViewTest, OnlyADocumentPayloadIsTakenAsADocument)
{
    ContentView& a = openWindow();
    ContentView& b = openWindow();
    QSignalSpy spyA(&a, &ContentView::documentReceived);
    QSignalSpy spyB(&b, &ContentView::documentReceived);

    commands.post(Command::openSlideshowFromFinder);
    commands.post(Command::openSlideshowFromFinder, {{QStringLiteral("document"), QStringLiteral("a.slideshow")}});
    commands.post(Command::openSlideshowFromFinder,
                  {{QStringLiteral("doc"), QVariant::fromValue(SlideshowDocument{})}});
    EXPECT_EQ(spyA.count(), 0);

    SlideshowDocument document;
    document.version = QStringLiteral("1.0");
    commands.post(Command::openSlideshowFromFinder, {{QStringLiteral("document"), QVariant::fromValue(document)}});
    ASSERT_EQ(spyA.count(), 1);
    EXPECT_EQ(spyB.count(), 1);
    EXPECT_EQ(spyA.at(0).at(0).value<SlideshowDocument>().version, QStringLiteral("1.0"));
}

TEST_F(ContentViewTest, MenusCarryTheirTitlesAndShortcuts)
{
    ContentView& window = openWindow();
    const std::vector<std::pair<const char*, QKeySequence>> table{
        {"Open Slideshow...", QKeySequence(Qt::CTRL | Qt::Key_O)},
        {"Save Slideshow...", QKeySequence(Qt::CTRL | Qt::Key_S)},
        {"Start Slideshow", QKeySequence(Qt::CTRL | Qt::Key_R)},
        {"New Slideshow", QKeySequence(Qt::CTRL | Qt::Key_N)},
        {"Float on Top", QKeySequence()},
        {"Check for updates…", QKeySequence()},
        {"Export Diagnostic Logs...", QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_L)},
    };
    for (const auto& [title, keys] : table) {
        QAction* action = findAction(window, QString::fromUtf8(title));
        ASSERT_NE(action, nullptr) << title;
        EXPECT_EQ(action->shortcut(), keys) << title;
    }

    int loadPosts = 0;
    QObject listener;
    commands.subscribe(&listener, [&](Command c, const QVariantMap&) { loadPosts += c == Command::loadSlideshow; });
    findAction(window, QStringLiteral("Open Slideshow..."))->trigger();
    EXPECT_EQ(loadPosts, 1);

    findAction(window, QStringLiteral("Check for updates…"))->trigger();
    EXPECT_EQ(promptTitles().last(), QStringLiteral("Check for Updates"));

    // No second show over a running one, from the menu either.
    QAction* start = findAction(window, QStringLiteral("Start Slideshow"));
    slideshowManager.setSlideshowRunning(true);
    EXPECT_FALSE(start->isEnabled());
    slideshowManager.setSlideshowRunning(false);
    EXPECT_TRUE(start->isEnabled());
}

TEST_F(ContentViewTest, FloatOnTopFollowsTheSettingButIsNotAppliedAtStart)
{
    settings.set(Settings::floatOnTop, true);
    ContentView& first = openWindow();
    QAction* toggle = findAction(first, QStringLiteral("Float on Top"));
    EXPECT_TRUE(toggle->isChecked()) << "the tick shows the stored value";
    EXPECT_FALSE(first.windowFlags() & Qt::WindowStaysOnTopHint) << "the stored value is not applied at start";

    // A new window takes the present value.
    std::unique_ptr<ContentView> second(ContentView::openNewWindow(services));
    second->setAttribute(Qt::WA_DeleteOnClose, false);
    EXPECT_TRUE(second->windowFlags() & Qt::WindowStaysOnTopHint);

    // The toggle sets the key and every window's level.
    toggle->trigger();
    EXPECT_FALSE(settings.value(Settings::floatOnTop));
    EXPECT_FALSE(second->windowFlags() & Qt::WindowStaysOnTopHint);
    toggle->trigger();
    EXPECT_TRUE(first.windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(second->isVisible()) << "changing the level keeps the window on screen";

    // A change made elsewhere (a settings panel) moves the levels and the ticks too.
    settings.set(Settings::floatOnTop, false);
    EXPECT_FALSE(first.windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_FALSE(findAction(*second, QStringLiteral("Float on Top"))->isChecked());
}

TEST_F(ContentViewTest, TheTrashButtonConfirmsAndRemovesTheSelectionOrEverything)
{
    ContentView& window = openWindow();
    auto* trash = named<QPushButton>(window, QStringLiteral("Delete all added photos"));
    ASSERT_NE(trash, nullptr);
    trash->click();
    EXPECT_TRUE(dialogs.prompts.isEmpty()) << "nothing to remove, nothing asked";

    window.queue().replaceAll(tb::test::makeQueue(3));
    const QUuid first = window.queue().at(0).id();
    const QUuid second = window.queue().at(1).id();
    window.queue().setSelectedIds({first, second});
    window.queue().setStartingImageId(second);
    dialogs.questionAnswers = {QuestionAnswer{1, false}, QuestionAnswer{0, false}};
    trash->click(); // Cancel
    EXPECT_EQ(window.queue().size(), 3);
    trash->click(); // Yes
    ASSERT_EQ(dialogs.prompts.size(), 2);
    EXPECT_EQ(dialogs.prompts[1].title, QStringLiteral("Confirm Deletion"));
    EXPECT_EQ(dialogs.prompts[1].text, QStringLiteral("Do you want to remove 2 selected photos?"));
    EXPECT_EQ(dialogs.prompts[1].buttons, (QStringList{QStringLiteral("Yes"), QStringLiteral("Cancel")}));
    ASSERT_EQ(window.queue().size(), 1);
    EXPECT_FALSE(window.queue().startingImageId()) << "the pin went with its item";
    EXPECT_TRUE(window.queue().selectedIds().isEmpty());

    dialogs.questionAnswers = {QuestionAnswer{0, false}};
    trash->click();
    EXPECT_EQ(dialogs.prompts.last().text, QStringLiteral("Do you really want to remove all added files?"));
    EXPECT_TRUE(window.queue().isEmpty());
    EXPECT_EQ(window.intake().totalPhotosAdded(), 0);
}

TEST_F(ContentViewTest, HidingThumbnailsShowsTheTable)
{
    ContentView& window = openWindow();
    auto* panel = window.findChild<QStackedWidget*>();
    ASSERT_NE(panel, nullptr);
    auto shown = [&window](const QString& text) {
        for (QLabel* label : window.findChildren<QLabel*>())
            if (label->text() == text && label->isVisibleTo(&window))
                return true;
        return false;
    };
    EXPECT_EQ(panel->currentIndex(), 0);
    EXPECT_TRUE(shown(QStringLiteral("Drag & drop files here"))) << "an empty queue shows the drop prompt";
    window.intake().loadFiles({QUrl::fromLocalFile(dir.filePath(QStringLiteral("a.jpg")))});
    EXPECT_TRUE(shown(QStringLiteral("Adding files...")));
    EXPECT_FALSE(shown(QStringLiteral("Drag & drop files here"))) << "the spinner takes the prompt's place";
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window.intake().isLoading(); }, 10000));

    auto* hide = named<QPushButton>(window, QStringLiteral("Hide thumbnails"));
    ASSERT_NE(hide, nullptr);
    window.queue().replaceAll(tb::test::makeQueue(3));
    window.queue().click(window.queue().at(0).id(), false, false);
    hide->click();
    auto* table = qobject_cast<QTableView*>(panel->currentWidget());
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(hide->toolTip(), QStringLiteral("Show thumbnails"));
    EXPECT_FALSE(window.queue().lastSelectedId()) << "a change of form forgets the anchor";

    // One selection for both forms, whichever sets it.
    EXPECT_EQ(table->selectionModel()->selectedRows().size(), 1);
    table->selectRow(2);
    EXPECT_EQ(window.queue().selectedIds(), QSet<QUuid>{window.queue().at(2).id()});
    hide->click();
    EXPECT_EQ(panel->currentWidget(), &window.queueView());
    EXPECT_TRUE(window.queueModel().index(2).data(QueueModel::IsSelectedRole).toBool());
}

TEST_F(ContentViewTest, FilesDraggedOverTheWindowHighlightTheQueue)
{
    ContentView& window = openWindow();
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(dir.filePath(QStringLiteral("a.jpg")))});
    QDragEnterEvent enter(QPoint(100, 100), Qt::CopyAction, &files, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_TRUE(window.isDraggingOver());
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&window, &leave);
    EXPECT_FALSE(window.isDraggingOver());

    // A drop whose file list never came is refused, and says so.
    tb::test::LogCapture log;
    QMimeData empty;
    empty.setData(QStringLiteral("text/uri-list"), QByteArrayLiteral("\r\n"));
    QDragEnterEvent arriving(QPoint(100, 100), Qt::CopyAction, &empty, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&window, &arriving);
    QDropEvent drop(QPointF(100, 100), Qt::CopyAction, &empty, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&window, &drop);
    EXPECT_FALSE(drop.isAccepted());
    EXPECT_TRUE(log.contains(LogLevel::Warning,
                             QStringLiteral("Drop refused: the dragging program did not deliver its file list.")));
}

TEST_F(ContentViewTest, AToastStaysTwoSecondsAndANewerOneReplacesIt)
{
    ContentView& window = openWindow();
    window.showToast(QStringLiteral("3 files added"));
    EXPECT_TRUE(window.isToastShown());
    scheduler.advance(1.5);
    window.showToast(QStringLiteral("5 files added"));
    EXPECT_EQ(window.toastText(), QStringLiteral("5 files added"));
    scheduler.advance(1.0);
    EXPECT_TRUE(window.isToastShown()) << "the newer toast has its own two seconds";
    scheduler.advance(1.0);
    EXPECT_FALSE(window.isToastShown());
}
