#pragma once

#include "CommandBus.h"
#include <QMainWindow>

#include <memory>

class QAction;
class QComboBox;
class QFrame;
class QLabel;
class QPushButton;
class QStackedWidget;
class QTableView;

namespace tb {

struct AppServices;
struct SlideshowDocument;
class AudioManager;
class ControlsColumn;
class FileIntake;
class PictureClient;
class Queue;
class QueueModel;
class QueueTableModel;
class QueueView;
class ScreenPlayerPresenter;
class SessionControl;
class SlideshowSaveService;
class SlideshowOpening;
class Toast;
class VideoExportDriver;

// A main window: its own queue and controls, the shared services, and the program's menus.
// Every open main window reacts to every command posted on the bus.
class ContentView final : public QMainWindow {
    Q_OBJECT
public:
    explicit ContentView(AppServices& services, QWidget* parent = nullptr);
    ~ContentView() override;

    // "New Slideshow": another main window with its own state, centred, at the present level.
    static ContentView* openNewWindow(AppServices& services);

    Queue& queue() { return *items; }
    SessionControl& session() { return *sessionControl; }
    SlideshowOpening& documentOpening() { return *opening; }
    // This window's background playlist.
    AudioManager& audio() { return *audioManager; }
    FileIntake& intake() { return *fileIntake; }
    QueueModel& queueModel() { return *model; }
    QueueView& queueView() { return *grid; }
    // A short message over the window for 2 s; a newer one replaces it.
    void showToast(const QString& message);
    QString toastText() const;
    bool isToastShown() const;
    // While files are dragged over the window, the queue panel shows its drop highlight.
    bool isDraggingOver() const { return draggingOver; }

    // A show's live mode put `count` new files in the queue: they count as added, may turn the
    // thumbnails off, and make the grid take them in.
    void imagesAddedByLiveMode(int count);
    // Live mode saw `count` files leave the watched folder: the queue keeps only what is still
    // there, when the last dialog chose that one folder, and a toast tells how many went.
    void imagesRemovedFromFolder(int count);

    // The sort picker's label, which a saved slideshow records.
    QString selectedSortOption() const;
    ScreenPlayerPresenter& presenter() { return *playerPresenter; }

    // Sets or clears the floating level of every main window; ordering to the front is for the
    // menu toggle only.
    static void applyFloatOnTop(bool floatOnTop, bool orderFront);

Q_SIGNALS:
    // A document to restore into this window, from the file manager or a second launch.
    void documentReceived(const tb::SlideshowDocument& document);

protected:
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildMenus();
    void handle(Command command, const QVariantMap& userInfo);
    void setFloating(bool floating);

    AppServices& services;
    // Shared with a running show, which may outlive this window by a moment.
    std::shared_ptr<Queue> items;
    std::unique_ptr<FileIntake> fileIntake;
    // The grid's share of the picture service.
    std::unique_ptr<PictureClient> gridPictures;
    std::unique_ptr<QueueModel> model;
    std::unique_ptr<QueueTableModel> tableModel;
    std::unique_ptr<AudioManager> audioManager;
    std::unique_ptr<ScreenPlayerPresenter> playerPresenter;
    std::unique_ptr<SessionControl> sessionControl;
    std::unique_ptr<SlideshowSaveService> saveService;
    std::unique_ptr<SlideshowOpening> opening;
    VideoExportDriver* exportDriver = nullptr;
    QAction* floatOnTopAction = nullptr;
    ControlsColumn* controls = nullptr;
    QComboBox* sortPicker = nullptr;
    QueueView* grid = nullptr;
    QTableView* table = nullptr;
    QPushButton* hideThumbnailsButton = nullptr;
    QPushButton* trashButton = nullptr;
    Toast* toast = nullptr;
    void showQueue();
    void showTotals();
    void showSelectionInTable();
    void followColumnWidths(QTableView* view);
    void setDraggingOver(bool over);
    bool draggingOver = false;
    bool documentLoading = false;
    QFrame* dropHighlight = nullptr;
    bool isGridShown() const;
    bool followingSelection = false;
    void confirmDeletion();
    void removeAll();
    QStackedWidget* queuePanel = nullptr;
    QList<QWidget*> promptParts;
    QList<QWidget*> loadingParts;
    void startCommand();
    bool appeared = false;
};

} // namespace tb
