#pragma once

#include "audio/AudioTrack.h"
#include "media/IdentifiableImage.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QThreadPool>

namespace tb {

class Analytics;
class AudioManager;
class FileRevealer;
class SettingsStore;
class SlideshowManager;
class UserDialogs;

// Writes a main window's queue, playlist and settings into a .slideshow document. Each save
// stands alone: the window's state is not changed and there is no current document, so every
// save asks where to go again.
//
// What is saved is read on the GUI thread when the save is asked for; the bookmarks, the
// encoding and the write happen on the service's own worker, so a long queue never stalls the
// window. Saves run one after another, so their log lines never mix. The outcome's alert comes
// back on the GUI thread, and not at all once the service is gone.
class SlideshowSaveService final : public QObject {
    Q_OBJECT
public:
    struct Services {
        SettingsStore& settings;
        UserDialogs& dialogs;
        // Recorded from the worker; the client takes events from any thread.
        Analytics& analytics;
        FileRevealer& fileRevealer;
    };

    explicit SlideshowSaveService(Services services, QObject* parent = nullptr);
    // Waits for the saves under way: they are the user's data, and short.
    ~SlideshowSaveService() override;

    // "Save Slideshow...": asks for a place, opening in the first item's folder, and saves
    // there. Cancelling does nothing.
    void showSavePanel(const QList<IdentifiableImage>& images, const AudioManager& audio,
                       const SlideshowManager& slideshowManager, const QString& selectedSortOption);

    // Saves to filePath, replacing any document there only once the new one is wholly written.
    // Returns at once; `finished` follows the alert that tells how it went.
    void saveSlideshow(const QList<IdentifiableImage>& images, const QList<AudioTrack>& tracks,
                       const AudioManager& audio, const SlideshowManager& slideshowManager,
                       const QString& selectedSortOption, const QString& filePath);

Q_SIGNALS:
    // On the GUI thread, once the user has answered the save's alert.
    void finished(const QString& filePath, bool succeeded);

private:
    struct Outcome;
    void report(const Outcome& outcome);

    Services services;
    // One thread: saves keep their order and their log lines stay together.
    QThreadPool worker;
};

} // namespace tb
