#include "ContentView.h"

#include "AdvancedOptionsView.h"
#include "AppServices.h"
#include "ControlsColumn.h"
#include "DiagnosticsExport.h"
#include "Logo.h"
#include "QueueModel.h"
#include "QueueTableModel.h"
#include "QueueView.h"
#include "ScreenPlayerPresenter.h"
#include "SettingsHelpView.h"
#include "Toast.h"
#include "UpdaterControllerWrapper.h"
#include "VideoExportDriver.h"
#include "audio/AudioManager.h"
#include "audio/AudioOptionsView.h"
#include "core/Logger.h"
#include "core/Scheduler.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "documents/SlideshowDocument.h"
#include "documents/SlideshowOpening.h"
#include "documents/SlideshowSaveService.h"
#include "media/FileIntake.h"
#include "media/PictureClient.h"
#include "media/Queue.h"
#include "media/QueueEditing.h"
#include "modes/IdleWatching.h"
#include "playback/SessionControl.h"
#include "playback/SlideshowManager.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QStyle>
#include <QTableView>
#include <QVBoxLayout>

#include <functional>

namespace tb {

namespace {

// A panel over the window, one of each kind at a time: asking again brings the open one forward.
template <typename Panel> void openPanelOnce(QWidget* window, const std::function<Panel*()>& make)
{
    for (Panel* open : window->findChildren<Panel*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (open->isVisible()) {
            open->raise();
            open->activateWindow();
            return;
        }
    }
    Panel* panel = make();
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->open();
}

} // namespace

ContentView::ContentView(AppServices& services, QWidget* parent) : QMainWindow(parent), services(services)
{
    // documentReceived carries a document by type name (queued connections, signal spies).
    qRegisterMetaType<SlideshowDocument>();
    setWindowTitle(QStringLiteral("Tallowbrook"));
    setMinimumSize(900, 700);
    setAcceptDrops(true);

    items = std::make_shared<Queue>();
    fileIntake = std::make_unique<FileIntake>(*items, services.settings, services.dialogs);
    gridPictures = std::make_unique<PictureClient>(services.pictures);
    model = std::make_unique<QueueModel>(*items, *gridPictures);
    tableModel = std::make_unique<QueueTableModel>(*items);
    audioManager = std::make_unique<AudioManager>(services.audioPlayers);
    playerPresenter = std::make_unique<ScreenPlayerPresenter>(
        ScreenPlayerPresenter::Services{services.scheduler, services.random, services.slideshowManager, *audioManager,
                                        services.pictures, services.sleepInhibitor, services.settings,
                                        services.displays, services.fileRevealer, services.metadata,
                                        services.folderWatchers, services.mediaRemote},
        this);
    sessionControl = std::make_unique<SessionControl>(
        items, SessionControl::Services{services.settings, services.slideshowManager, *audioManager, services.analytics,
                                        services.random, services.dialogs, *playerPresenter});
    // A show reports live mode's changes from inside its own work; the window takes them in
    // afterwards, from the event loop, and not at all once it is gone.
    QPointer<ContentView> self = this;
    sessionControl->setLiveModeReports(
        [self](const QList<IdentifiableImage>& added) {
            if (self)
                QMetaObject::invokeMethod(
                    self, [self, count = int(added.size())] { self->imagesAddedByLiveMode(count); },
                    Qt::QueuedConnection);
        },
        [self](int removed) {
            if (self)
                QMetaObject::invokeMethod(
                    self, [self, removed] { self->imagesRemovedFromFolder(removed); }, Qt::QueuedConnection);
        });
    saveService = std::make_unique<SlideshowSaveService>(
        SlideshowSaveService::Services{services.settings, services.dialogs, services.analytics, services.fileRevealer});

    auto* content = new QWidget(this);
    auto* columns = new QHBoxLayout(content);
    auto* queueArea = new QVBoxLayout;
    columns->addLayout(queueArea, 1);
    controls = new ControlsColumn(
        ControlsColumn::Services{services.settings, services.slideshowManager, services.fileRevealer, services.updater,
                                 services.dialogs, services.analytics},
        [this] { return fileIntake->selectedFolderURL(); }, content);
    auto* controlsScroll = new QScrollArea(content);
    controlsScroll->setWidget(controls);
    controlsScroll->setWidgetResizable(true);
    controlsScroll->setFrameShape(QFrame::NoFrame);
    controlsScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    controlsScroll->setFixedWidth(controls->sizeHint().width() +
                                  controlsScroll->verticalScrollBar()->sizeHint().width());
    columns->addWidget(controlsScroll);
    connect(controls, &ControlsColumn::selectFilesRequested, this, [this] { fileIntake->selectFiles(); });
    connect(controls, &ControlsColumn::startRequested, this, &ContentView::startCommand);
    connect(controls, &ControlsColumn::audioOptionsRequested, this, [this] {
        openPanelOnce<AudioOptionsView>(
            this, [this] { return new AudioOptionsView(*audioManager, this->services.dialogs, this); });
    });
    connect(controls, &ControlsColumn::advancedOptionsRequested, this, [this] {
        openPanelOnce<AdvancedOptionsView>(this, [this] {
            return new AdvancedOptionsView(
                {this->services.settings, this->services.displays, this->services.dialogs, this->services.idleWatcher},
                this);
        });
    });
    exportDriver = new VideoExportDriver({services.settings, services.dialogs, services.analytics,
                                          services.fileRevealer, services.processMemory, services.random},
                                         *audioManager, this);
    connect(controls, &ControlsColumn::exportRequested, this,
            [this] { exportDriver->buttonPressed(items->items(), items->startingImageId()); });
    connect(exportDriver, &VideoExportDriver::stateChanged, this, [this] {
        controls->showExport(exportDriver->isExporting(), exportDriver->showExportProgress(),
                             exportDriver->exportProgress(), exportDriver->progressText());
    });
    connect(controls, &ControlsColumn::helpRequested, this,
            [this] { openPanelOnce<SettingsHelpView>(this, [this] { return new SettingsHelpView(this); }); });
    sortPicker = controls->sortPicker();
    opening = std::make_unique<SlideshowOpening>(
        SlideshowOpening::Services{services.dialogs, services.fileSystems, services.settings, services.slideshowManager,
                                   *items, *audioManager, services.analytics},
        SlideshowOpening::Window{[this](bool on) {
                                     documentLoading = on;
                                     showQueue();
                                 },
                                 [this](const QString& label) {
                                     // The order is the document's: choosing the label must not sort.
                                     QSignalBlocker quiet(sortPicker);
                                     sortPicker->setCurrentText(label);
                                 },
                                 [this](int count) {
                                     fileIntake->setTotalPhotosAdded(count);
                                     showTotals();
                                 },
                                 [this](const QString& message) { showToast(message); }});
    // Picking an option sorts at once; "-" keeps the present order.
    connect(sortPicker, &QComboBox::currentTextChanged, this, [this](const QString& option) {
        QList<IdentifiableImage> sorted = items->items();
        sortImages(sorted, option);
        items->replaceAll(std::move(sorted));
    });

    // Above the queue: hide or show the thumbnails, and remove items.
    auto* queueButtons = new QHBoxLayout;
    hideThumbnailsButton = new QPushButton(content);
    hideThumbnailsButton->setCheckable(true);
    trashButton = new QPushButton(style()->standardIcon(QStyle::SP_TrashIcon), QString(), content);
    trashButton->setToolTip(QStringLiteral("Delete all added photos"));
    trashButton->setAccessibleName(trashButton->toolTip());
    queueButtons->addWidget(hideThumbnailsButton);
    queueButtons->addWidget(trashButton);
    queueButtons->addStretch(1);
    queueArea->addLayout(queueButtons);
    connect(hideThumbnailsButton, &QPushButton::toggled, this, [this] { showQueue(); });
    connect(trashButton, &QPushButton::clicked, this, &ContentView::confirmDeletion);

    // The drop prompt while the queue is empty (the spinner instead while a run adds files),
    // then the grid, or the table.
    queuePanel = new QStackedWidget(content);
    auto* placeholder = new QWidget(queuePanel);
    auto* promptLayout = new QVBoxLayout(placeholder);
    auto* prompt = new QLabel(QStringLiteral("Drag & drop files here"), placeholder);
    auto* logo = new QLabel(placeholder);
    logo->setPixmap(logoPixmap(96));
    auto* promptLine = new QLabel(QStringLiteral("You can drag and drop photos, videos, or folders here"), placeholder);
    QFont large = prompt->font();
    large.setPointSizeF(large.pointSizeF() * 1.5);
    prompt->setFont(large);
    auto* spinner = new QProgressBar(placeholder);
    spinner->setRange(0, 0); // busy
    spinner->setTextVisible(false);
    spinner->setFixedWidth(160);
    auto* adding = new QLabel(QStringLiteral("Adding files..."), placeholder);
    promptLayout->addStretch(1);
    for (QLabel* label : {prompt, promptLine, adding})
        label->setAccessibleName(label->text());
    spinner->setAccessibleName(adding->text());
    for (QWidget* widget : std::initializer_list<QWidget*>{prompt, logo, promptLine, spinner, adding})
        promptLayout->addWidget(widget, 0, Qt::AlignHCenter);
    promptLayout->addStretch(1);
    promptParts = {prompt, logo, promptLine};
    loadingParts = {spinner, adding};
    grid = new QueueView(*model, services.settings, queuePanel);
    table = new QTableView(queuePanel);
    table->setModel(tableModel.get());
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table->verticalHeader()->hide();
    table->setAccessibleName(QStringLiteral("Queue"));
    followColumnWidths(table);
    // The same starting-point entry as the grid's.
    table->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(table, &QTableView::customContextMenuRequested, this, [this](const QPoint& at) {
        const QModelIndex index = table->indexAt(at);
        if (!index.isValid())
            return;
        QMenu menu(table);
        addStartingPointEntry(menu, *items, index.data(Qt::UserRole).toUuid());
        menu.exec(table->viewport()->mapToGlobal(at));
    });
    // One selection for both forms: the table's follows the queue's, and sets it.
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (followingSelection)
            return;
        QSet<QUuid> ids;
        for (const QModelIndex& row : table->selectionModel()->selectedRows())
            ids.insert(row.data(Qt::UserRole).toUuid());
        items->setSelectedIds(ids);
    });
    connect(items.get(), &Queue::selectionChanged, this, &ContentView::showSelectionInTable);
    // The panel's drop highlight while files are dragged over the window.
    dropHighlight = new QFrame(queuePanel);
    dropHighlight->setStyleSheet(QStringLiteral("border: 3px solid #2f7bf5; border-radius: 8px;"));
    dropHighlight->setAttribute(Qt::WA_TransparentForMouseEvents);
    dropHighlight->hide();
    queuePanel->addWidget(placeholder);
    queuePanel->addWidget(grid);
    queuePanel->addWidget(table);
    queueArea->addWidget(queuePanel, 1);
    // The prompt, the grid or the table, as the queue fills and empties.
    connect(items.get(), &Queue::rowsInserted, this, &ContentView::showQueue);
    connect(items.get(), &Queue::rowsRemoved, this, &ContentView::showQueue);
    connect(items.get(), &Queue::wasReset, this, &ContentView::showQueue);
    connect(fileIntake.get(), &FileIntake::loadingChanged, this, [this] { showQueue(); });
    connect(fileIntake.get(), &FileIntake::itemsAdded, this, [this] { showTotals(); });
    toast = new Toast(services.scheduler, this);
    connect(fileIntake.get(), &FileIntake::toast, this, &ContentView::showToast);
    showQueue();

    setCentralWidget(content);

    buildMenus();

    connect(&services.settings, &SettingsStore::changed, this, [this](const QString& key) {
        if (key != QLatin1String(Settings::floatOnTop.name))
            return;
        const bool floating = this->services.settings.value(Settings::floatOnTop);
        floatOnTopAction->setChecked(floating);
        setFloating(floating);
    });
}

// The grid while thumbnails are wanted, shown and the queue is not above the threshold; the
// table otherwise; the drop prompt for an empty queue.
bool ContentView::isGridShown() const
{
    return fileIntake->displayThumbnails() && !hideThumbnailsButton->isChecked() &&
           items->size() <= FileIntake::thumbnailsEnabledTreshold;
}

void ContentView::showQueue()
{
    // The desktop's eye icons where its theme has them; the words say it everywhere.
    const bool hidden = hideThumbnailsButton->isChecked();
    hideThumbnailsButton->setIcon(
        QIcon::fromTheme(hidden ? QStringLiteral("view-visible") : QStringLiteral("view-hidden")));
    hideThumbnailsButton->setToolTip(hidden ? QStringLiteral("Show thumbnails") : QStringLiteral("Hide thumbnails"));
    hideThumbnailsButton->setText(hideThumbnailsButton->toolTip());
    hideThumbnailsButton->setAccessibleName(hideThumbnailsButton->toolTip());
    // Adding files, or finding a document's files again: the spinner, in place of the queue that
    // is about to change.
    const bool loading = fileIntake->isLoading() || documentLoading;
    for (QWidget* part : promptParts)
        part->setVisible(!loading);
    for (QWidget* part : loadingParts)
        part->setVisible(loading);
    QWidget* form = items->isEmpty() || loading ? queuePanel->widget(0)
                    : isGridShown()             ? static_cast<QWidget*>(grid)
                                                : table;
    if (form != queuePanel->currentWidget()) {
        // A change of form forgets the anchor of shift-clicks and any drag; the selection stays.
        items->forgetAnchor();
        grid->forgetDrag();
        queuePanel->setCurrentWidget(form);
    }
}

void ContentView::followColumnWidths(QTableView* view)
{
    // Filename, Created, Path: minimum, ideal and maximum widths (0: none).
    struct Width {
        int minimum, ideal, maximum;
    };
    static constexpr Width widths[] = {{100, 300, 0}, {80, 120, 300}, {150, 400, 0}};
    QHeaderView* header = view->horizontalHeader();
    header->setStretchLastSection(true);
    for (int column = 0; column < 3; ++column)
        view->setColumnWidth(column, widths[column].ideal);
    connect(header, &QHeaderView::sectionResized, header, [header](int column, int, int size) {
        if (column < 0 || column > 2)
            return;
        const Width& w = widths[column];
        const int held = std::max(w.minimum, w.maximum > 0 ? std::min(size, w.maximum) : size);
        if (held != size)
            header->resizeSection(column, held);
    });
}

void ContentView::setDraggingOver(bool over)
{
    draggingOver = over;
    dropHighlight->setGeometry(queuePanel->rect());
    dropHighlight->setVisible(over);
    dropHighlight->raise();
}

void ContentView::showToast(const QString& message) { toast->showMessage(message); }

QString ContentView::toastText() const { return toast->text(); }

bool ContentView::isToastShown() const { return toast->isShown(); }

void ContentView::showTotals() { controls->setTotalFilesAdded(fileIntake->totalPhotosAdded()); }

void ContentView::showSelectionInTable()
{
    QItemSelection rows;
    const QSet<QUuid>& selected = items->selectedIds();
    for (int row = 0; row < items->size() && !selected.isEmpty(); ++row) {
        if (!selected.contains(items->at(row).id()))
            continue;
        int last = row;
        while (last + 1 < items->size() && selected.contains(items->at(last + 1).id()))
            ++last;
        rows.select(tableModel->index(row, 0), tableModel->index(last, tableModel->columnCount() - 1));
        row = last;
    }
    followingSelection = true;
    table->selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
    followingSelection = false;
}

// The trash button: nothing for an empty queue; otherwise confirm removing the selection, or all.
void ContentView::confirmDeletion()
{
    if (items->isEmpty())
        return;
    const QSet<QUuid> selected = items->selectedIds();
    const QString text = selected.isEmpty()
                             ? QStringLiteral("Do you really want to remove all added files?")
                             : QStringLiteral("Do you want to remove %1 selected photos?").arg(selected.size());
    const QuestionAnswer answer = services.dialogs.question(AlertStyle::Warning, QStringLiteral("Confirm Deletion"),
                                                            text, {QStringLiteral("Yes"), QStringLiteral("Cancel")});
    if (answer.button != 0)
        return;
    if (selected.isEmpty()) {
        removeAll();
        return;
    }
    items->remove(selected);
    items->clearSelection();
    fileIntake->setTotalPhotosAdded(int(items->size()));
    showTotals();
}

void ContentView::imagesAddedByLiveMode(int count)
{
    fileIntake->setTotalPhotosAdded(fileIntake->totalPhotosAdded() + count);
    fileIntake->thumbnailCheck();
    if (isGridShown())
        items->renewRefreshID();
    showTotals();
}

void ContentView::imagesRemovedFromFolder(int count)
{
    const std::optional<QUrl> folder = fileIntake->selectedFolderURL();
    if (folder && reconcileWithFolder(*items, folder->toLocalFile())) {
        fileIntake->setTotalPhotosAdded(int(items->size()));
        showTotals();
        if (isGridShown())
            items->renewRefreshID();
    }
    showToast(QStringLiteral("%1 photos removed").arg(count));
}

void ContentView::removeAll()
{
    items->clear();
    fileIntake->setTotalPhotosAdded(0);
    sortPicker->setCurrentIndex(0);
    // The poster frames stay: clips are costly to open again. Pictures belong to shows, which
    // empty their own when they end.
    gridPictures->clearThumbnails();
    services.slideshowManager.setLiveModeActive(false);
    fileIntake->clearSelectedFolderURL();
    fileIntake->resetThumbnailAlert();
    showTotals();
}

ContentView::~ContentView()
{
    opening.reset();
    sessionControl.reset();
    playerPresenter.reset();
    fileIntake.reset();
    delete grid; // before their models
    grid = nullptr;
    delete table;
    table = nullptr;
    model.reset();
    tableModel.reset();
}

// Files and folders dropped anywhere on the window join the queue.
void ContentView::dragEnterEvent(QDragEnterEvent* event)
{
    if (!event->mimeData()->hasUrls())
        return;
    event->acceptProposedAction();
    setDraggingOver(true);
}

void ContentView::dragLeaveEvent(QDragLeaveEvent* event)
{
    setDraggingOver(false);
    QMainWindow::dragLeaveEvent(event);
}

void ContentView::dropEvent(QDropEvent* event)
{
    setDraggingOver(false);
    if (!event->mimeData()->hasUrls())
        return;
    // The dragging program hands its data over only now; one that does not deliver it in time
    // leaves no files. Such a drop is refused, so the other program does not report it done.
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty()) {
        logWarning(QStringLiteral("Drop refused: the dragging program did not deliver its file list."));
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    // Asking about subfolders inside the drop would block the dragging application.
    QMetaObject::invokeMethod(
        this, [this, urls] { fileIntake->handleDrop(urls); }, Qt::QueuedConnection);
}

// The Start button and the menu: the show starts at the queue's starting point.
void ContentView::startCommand() { sessionControl->startCommand(); }

QString ContentView::selectedSortOption() const { return sortPicker->currentText(); }

void ContentView::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (appeared)
        return;
    appeared = true;
    logInfo(QStringLiteral("Initializing view"));
    services.commands.subscribe(this,
                                [this](Command command, const QVariantMap& userInfo) { handle(command, userInfo); });
    services.idleWatcher.restart();
}

void ContentView::handle(Command command, const QVariantMap& userInfo)
{
    switch (command) {
    case Command::startSlideshow:
        // The menu's path has no guard of its own.
        startCommand();
        break;
    case Command::openSlideshowFromFinder: {
        const QVariant document = userInfo.value(QStringLiteral("document"));
        // Anything but a document under that key is ignored.
        if (document.metaType() == QMetaType::fromType<SlideshowDocument>()) {
            Q_EMIT documentReceived(document.value<SlideshowDocument>());
            opening->open(document.value<SlideshowDocument>());
        }
        break;
    }
    case Command::idleThresholdReached:
        sessionControl->screensaverStart();
        break;
    case Command::saveSlideshow:
        saveService->showSavePanel(items->items(), *audioManager, services.slideshowManager, selectedSortOption());
        break;
    case Command::loadSlideshow:
        opening->showOpenPanel();
        break;
    }
}

void ContentView::buildMenus()
{
    auto addCommand = [this](QMenu* menu, const QString& title, const QKeySequence& keys, auto slot) {
        QAction* action = menu->addAction(title);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WindowShortcut);
        connect(action, &QAction::triggered, this, slot);
        return action;
    };
    auto post = [this](Command command) { return [this, command] { services.commands.post(command); }; };

    QMenu* file = menuBar()->addMenu(tr("&File"));
    addCommand(file, QStringLiteral("Open Slideshow..."), QKeySequence(Qt::CTRL | Qt::Key_O),
               post(Command::loadSlideshow));
    file->addSeparator();
    addCommand(file, QStringLiteral("Save Slideshow..."), QKeySequence(Qt::CTRL | Qt::Key_S),
               post(Command::saveSlideshow));
    file->addSeparator();
    QAction* start = addCommand(file, QStringLiteral("Start Slideshow"), QKeySequence(Qt::CTRL | Qt::Key_R),
                                post(Command::startSlideshow));
    // As the Start button: no second show over a running one.
    start->setEnabled(!services.slideshowManager.isSlideshowRunning());
    connect(&services.slideshowManager, &SlideshowManager::isSlideshowRunningChanged, start,
            [start](bool running) { start->setEnabled(!running); });
    file->addSeparator();
    addCommand(file, tr("Close Window"), QKeySequence::Close, [this] { close(); });
    addCommand(file, tr("Quit"), QKeySequence::Quit, [] { QApplication::closeAllWindows(); });

    QMenu* view = menuBar()->addMenu(tr("&View"));
    floatOnTopAction = view->addAction(QStringLiteral("Float on Top"));
    floatOnTopAction->setCheckable(true);
    // The tick shows the stored value, which is deliberately not applied to the first window.
    floatOnTopAction->setChecked(services.settings.value(Settings::floatOnTop));
    connect(floatOnTopAction, &QAction::triggered, this, [this](bool checked) {
        services.settings.set(Settings::floatOnTop, checked); // every window follows the setting
        applyFloatOnTop(checked, true);
    });

    QMenu* window = menuBar()->addMenu(tr("&Window"));
    addCommand(window, QStringLiteral("New Slideshow"), QKeySequence(Qt::CTRL | Qt::Key_N),
               [this] { openNewWindow(services); });
    window->addSeparator();
    addCommand(window, tr("Minimize"), QKeySequence(Qt::CTRL | Qt::Key_M), [this] { showMinimized(); });

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    addCommand(help, tr("About Tallowbrook"), QKeySequence(), [this] {
        services.dialogs.alert(AlertStyle::Information, tr("About Tallowbrook"),
                               tr("Tallowbrook %1\nSlideshows of photos, animated pictures and clips.")
                                   .arg(QApplication::applicationVersion()));
    });
    addCommand(help, QStringLiteral("Check for updates…"), QKeySequence(),
               [this] { services.updater.checkForUpdates(); });
    help->addSeparator();
    addCommand(help, QStringLiteral("Export Diagnostic Logs..."), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_L),
               [this] { exportDiagnosticLogs(Logger::shared(), services.dialogs, services.fileRevealer); });
}

void ContentView::setFloating(bool floating)
{
    if (bool(windowFlags() & Qt::WindowStaysOnTopHint) == floating)
        return;
    const bool wasVisible = isVisible();
    setWindowFlag(Qt::WindowStaysOnTopHint, floating); // hides a shown window
    if (wasVisible)
        show();
}

void ContentView::applyFloatOnTop(bool floatOnTop, bool orderFront)
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* window = qobject_cast<ContentView*>(widget);
        if (!window)
            continue;
        window->setFloating(floatOnTop);
        if (orderFront && window->isVisible()) {
            window->raise();
            window->activateWindow();
        }
    }
}

ContentView* ContentView::openNewWindow(AppServices& services)
{
    auto* window = new ContentView(services);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->resize(900, 700);
    if (QScreen* screen = QGuiApplication::primaryScreen())
        window->setGeometry(
            QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, window->size(), screen->availableGeometry()));
    window->setFloating(services.settings.value(Settings::floatOnTop));
    window->show();
    return window;
}

} // namespace tb
