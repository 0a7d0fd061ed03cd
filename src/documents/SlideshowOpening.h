#pragma once

#include "SlideshowDocument.h"
#include "SlideshowLoadService.h"

#include <QObject>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <optional>

namespace tb {

class Analytics;
class AudioManager;
class FileSystems;
class FolderAccessHelper;
class MissingFilesFlow;
class Queue;
class SettingsStore;
class SlideshowManager;
class UserDialogs;
struct OpeningFiles;

// Opens a slideshow document in one main window: finds its files again off the GUI thread, talks
// about what is missing, makes sure network folders can be read, and then replaces the window's
// queue, playlist and settings with the document's. A bad document is refused before anything
// changes.
class SlideshowOpening final : public QObject {
    Q_OBJECT
public:
    struct Services {
        UserDialogs& dialogs;
        const FileSystems& fileSystems;
        SettingsStore& settings;
        SlideshowManager& manager;
        Queue& queue;
        AudioManager& audio;
        Analytics& analytics;
    };
    // What the window does around an opening.
    struct Window {
        std::function<void(bool)> setLoading;
        // Shows the sort label the document was saved with, without sorting again.
        std::function<void(const QString&)> setSortLabel;
        std::function<void(int)> setPhotosAdded;
        std::function<void(const QString&)> showToast;
    };

    SlideshowOpening(Services services, Window window, QObject* parent = nullptr);
    // Waits for a restoration still running.
    ~SlideshowOpening() override;

    // "Open Slideshow...": the open panel, then the document.
    void showOpenPanel();
    // A document already read (the panel's, or one the desktop handed over).
    void open(const SlideshowDocument& document);
    // True from the request until the document is applied or given up, and while another waits.
    bool isOpening() const { return opening || pending.has_value(); }

    // Where relative paths are resolved from: the home folder, not the document's own, as
    // documents have always been read.
    static QString baseFolder();

Q_SIGNALS:
    // A document was applied, or the user gave it up.
    void finished();

private:
    void restore(const SlideshowDocument& document);
    void restored(const SlideshowDocument& document, OpeningFiles files);
    void apply(const SlideshowDocument& document, const OpeningFiles& files);
    void end();

    Services services;
    Window window;
    SlideshowLoadService loader;
    std::unique_ptr<FolderAccessHelper> folderAccess;
    std::unique_ptr<MissingFilesFlow> missingFiles;
    bool opening = false;
    std::optional<SlideshowDocument> pending;
    // One restoration at a time, drained before the window goes.
    QThreadPool restoration;
};

} // namespace tb
