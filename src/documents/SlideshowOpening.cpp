#include "SlideshowOpening.h"

#include "FolderAccessHelper.h"
#include "MissingFilesFlow.h"
#include "SettingsBridge.h"
#include "audio/AudioManager.h"
#include "core/Logger.h"
#include "core/SettingsKeys.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "media/Bookmark.h"
#include "media/Queue.h"
#include "playback/SlideshowManager.h"

#include <QDir>
#include <QMetaObject>

#include <utility>

namespace tb {

SlideshowOpening::SlideshowOpening(Services services, Window window, QObject* parent)
    : QObject(parent),
      services(services),
      window(std::move(window)),
      loader(services.analytics),
      folderAccess(std::make_unique<FolderAccessHelper>(services.dialogs, services.fileSystems)),
      missingFiles(std::make_unique<MissingFilesFlow>(services.dialogs))
{
    restoration.setMaxThreadCount(1);
}

SlideshowOpening::~SlideshowOpening() { restoration.waitForDone(); }

QString SlideshowOpening::baseFolder() { return QDir::homePath(); }

void SlideshowOpening::showOpenPanel()
{
    OpenPanelOptions options;
    options.title = QStringLiteral("Open Slideshow");
    options.message = QStringLiteral("Choose a slideshow file to open");
    options.nameFilters = {QStringLiteral("Slideshows (*.slideshow)")};
    options.canChooseFiles = true;
    options.canChooseDirectories = false;
    options.allowsMultipleSelection = false;
    const QStringList chosen = services.dialogs.openPanel(options);
    if (chosen.isEmpty())
        return;
    auto loaded = loader.loadDocument(chosen.first());
    if (const auto* error = std::get_if<SlideshowLoadError>(&loaded)) {
        services.dialogs.alert(AlertStyle::Critical, QStringLiteral("Failed to Open Slideshow"), error->description());
        return;
    }
    open(std::get<SlideshowDocument>(loaded));
}

void SlideshowOpening::open(const SlideshowDocument& document)
{
    if (opening) {
        // One document at a time: the newest one asked for follows the one being opened.
        logInfo(QStringLiteral("A slideshow is being opened; the next one follows it"));
        pending = document;
        return;
    }
    opening = true;
    window.setLoading(true);
    restore(document);
}

void SlideshowOpening::restore(const SlideshowDocument& document)
{
    restoration.start([this, document] {
        BookmarkResolver resolver;
        const QString base = baseFolder();
        RestoredImages images = SlideshowLoadService::restoreImages(document, base, resolver);
        RestoredTracks tracks = SlideshowLoadService::restoreAudioTracks(document, base, resolver);
        OpeningFiles files{std::move(images.items), std::move(tracks.items), std::move(images.missing),
                           std::move(tracks.missing)};
        // The destructor waits for this task, so the opening is still there to post to; a call
        // it has not run by then is dropped with it.
        QMetaObject::invokeMethod(
            this, [this, document, files] { restored(document, files); }, Qt::QueuedConnection);
    });
}

void SlideshowOpening::restored(const SlideshowDocument& document, OpeningFiles files)
{
    window.setLoading(false);
    bool folderAccessFirst = true;
    if (!files.missingImages.isEmpty() || !files.missingAudio.isEmpty()) {
        switch (missingFiles->run(document, files)) {
        case MissingFilesFlow::Next::cancel:
            end();
            return;
        case MissingFilesFlow::Next::restartRestoration:
            window.setLoading(true);
            restore(document);
            return;
        case MissingFilesFlow::Next::folderAccessThenApply:
            break;
        case MissingFilesFlow::Next::apply:
            folderAccessFirst = false;
            break;
        case MissingFilesFlow::Next::applyAllFound:
            apply(document, files);
            missingFiles->showAllFound();
            end();
            return;
        }
    }
    if (folderAccessFirst)
        folderAccess->secureAccessForLoad(files.images);
    apply(document, files);
    end();
}

void SlideshowOpening::apply(const SlideshowDocument& document, const OpeningFiles& files)
{
    // What was there goes first: the queue with its counters, and the playlist.
    services.queue.clear();
    window.setPhotosAdded(0);
    services.audio.removeAllTracks();

    // The settings, among them the display mode the main window's picker follows.
    applyLoadedSettings(services.settings, document.settings);

    services.queue.replaceAll(files.images);
    window.setPhotosAdded(int(files.images.size()));
    window.setSortLabel(document.settings.selectedSortOption);

    services.audio.setAudioTracks(files.tracks);
    if (!files.tracks.isEmpty())
        services.audio.loadTrack(0);
    services.audio.setVolume(document.audioSettings.volume);
    services.audio.setLooping(document.audioSettings.isLooping);
    services.audio.setCurrentTrackIndex(document.audioSettings.currentTrackIndex);

    // Live mode: the folder first, so that live mode never runs without one. A document without
    // these settings leaves live mode as it is.
    if (const auto& live = document.liveModeSettings) {
        if (live->isActive && live->watchedFolderPath) {
            services.manager.setWatchedFolder(QUrl::fromLocalFile(*live->watchedFolderPath));
            services.manager.setLiveModeActive(true);
        } else {
            services.manager.setLiveModeActive(false);
            services.manager.setWatchedFolder(std::nullopt);
        }
        services.settings.set(Settings::liveModeNewPhotosBehavior,
                              live->newPhotosBehavior.value_or(QStringLiteral("queue")));
    }

    services.queue.renewRefreshID();
    const QString loaded = QStringLiteral("Slideshow loaded: %1 images, %2 audio tracks")
                               .arg(files.images.size())
                               .arg(files.tracks.size());
    logInfo(loaded);
    window.showToast(loaded);
}

void SlideshowOpening::end()
{
    opening = false;
    Q_EMIT finished();
    if (pending)
        open(*std::exchange(pending, std::nullopt));
}

} // namespace tb
