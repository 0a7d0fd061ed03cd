#include "SlideshowSaveService.h"

#include "DocumentCodec.h"
#include "RelativePath.h"
#include "SettingsBridge.h"
#include "audio/AudioManager.h"
#include "core/Analytics.h"
#include "core/FileRevealer.h"
#include "core/Logger.h"
#include "core/SettingsKeys.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "core/Version.h"
#include "media/Bookmark.h"
#include "playback/SlideshowManager.h"

#include <QDateTime>
#include <QFileInfo>
#include <QPointer>
#include <QSaveFile>

namespace tb {

struct SlideshowSaveService::Outcome {
    QString filePath;
    bool succeeded = false;
    QString errorText; // for the alert
};

namespace {

// Everything a save needs, read on the GUI thread; the worker touches nothing else.
struct Snapshot {
    QString filePath;
    QList<IdentifiableImage> images;
    QList<AudioTrack> tracks;
    SlideshowSettings settings;
    SavedAudioSettings audioSettings;
    SavedLiveModeSettings liveModeSettings;
    Segmentation segmentation;
};

QString text(bool value) { return value ? QStringLiteral("true") : QStringLiteral("false"); }

QString uuidText(const QUuid& id) { return id.toString(QUuid::WithoutBraces).toUpper(); }

QString appVersionText()
{
    const QString version = QString::fromUtf8(appVersion);
    return version.isEmpty() ? QStringLiteral("Unknown") : version;
}

std::optional<QByteArray> bookmarkData(const QString& filePath, QString* error)
{
    const std::optional<Bookmark> bookmark = Bookmark::create(filePath, error);
    return bookmark ? std::optional<QByteArray>(bookmark->toData()) : std::nullopt;
}

SavedImageInfo savedImage(const IdentifiableImage& image, const QString& basePath)
{
    SavedImageInfo saved;
    saved.id = uuidText(image.id());
    saved.filename = image.filename();
    saved.isGIF = image.isGIF();
    saved.creationDate = image.creationDate();
    saved.isVideo = image.isVideo();
    saved.videoDuration = image.videoDuration();
    saved.originalPath = image.filePath();
    saved.relativePath = relativePath(basePath, saved.originalPath);
    QString error;
    saved.bookmarkData = bookmarkData(saved.originalPath, &error);
    // A file gone since it was queued is still saved: its paths may find it again on loading.
    if (saved.bookmarkData)
        logInfo(QStringLiteral("Successfully created bookmark for: ") + saved.filename);
    else
        logError(QStringLiteral("Failed to create bookmark for %1: %2").arg(saved.filename, error));
    return saved;
}

SavedAudioTrack savedTrack(const AudioTrack& track, const QString& basePath)
{
    SavedAudioTrack saved;
    saved.id = uuidText(track.id);
    saved.filename = track.filename;
    saved.originalPath = track.url.toLocalFile();
    saved.relativePath = relativePath(basePath, saved.originalPath);
    saved.duration = track.duration;
    saved.bookmarkData = bookmarkData(saved.originalPath, nullptr);
    return saved;
}

// The document replaces the old one only once it is wholly on the disk: a full disk or a lost
// permission leaves the earlier document as it was, and no temporary file behind.
bool writeAtomically(const QString& filePath, const QByteArray& data, QString* error)
{
    QSaveFile file(filePath);
    // Writing straight into the target would bring back the very loss this is here to prevent.
    file.setDirectWriteFallback(false);
    bool written = file.open(QIODevice::WriteOnly);
    // The file buffers what it is given, so a full disk may only show when the buffer is
    // flushed, and commit() renames even after a failed last flush (an empty document would
    // replace the old one): flush and check first.
    written = written && file.write(data) == data.size() && file.flush();
    written = written && file.commit();
    if (!written)
        *error = file.errorString();
    // Unless committed, the temporary file goes with `file`.
    return written;
}

Snapshot takeSnapshot(const SettingsStore& store, const QList<IdentifiableImage>& images,
                      const QList<AudioTrack>& tracks, const AudioManager& audio,
                      const SlideshowManager& slideshowManager, const QString& selectedSortOption,
                      const QString& filePath)
{
    Snapshot s{filePath, images, tracks, readSettingsForSaving(store, selectedSortOption), {}, {}, {}};
    s.audioSettings = {audio.volume(), audio.isLooping(), audio.currentTrackIndex()};
    // Written even when live mode was never used, so loading it turns live mode off.
    s.liveModeSettings.isActive = slideshowManager.isLiveModeActive();
    if (slideshowManager.watchedFolder())
        s.liveModeSettings.watchedFolderPath = slideshowManager.watchedFolder()->toLocalFile();
    s.liveModeSettings.newPhotosBehavior =
        store.stringForKey(QLatin1String(Settings::liveModeNewPhotosBehavior.name)).value_or(QStringLiteral("queue"));

    s.segmentation = {
        {QStringLiteral("imageCount"), QString::number(images.size())},
        {QStringLiteral("audioTrackCount"), QString::number(tracks.size())},
        {QStringLiteral("hasAudio"), text(!tracks.isEmpty())},
        {QStringLiteral("selectedSortOption"), selectedSortOption},
        {QStringLiteral("gridMode"), QString::number(s.settings.gridOptionRaw)},
        {QStringLiteral("randomOrder"), text(s.settings.randomOrder)},
        {QStringLiteral("loopSlideshow"), text(s.settings.loopSlideshow)},
        // The document itself says "-" for no transition; only the event says "none".
        {QStringLiteral("transitionType"),
         store.stringForKey(QLatin1String(Settings::transitionType.name)).value_or(QStringLiteral("none"))},
    };
    return s;
}

} // namespace

SlideshowSaveService::SlideshowSaveService(Services services, QObject* parent) : QObject(parent), services(services)
{
    worker.setMaxThreadCount(1);
}

SlideshowSaveService::~SlideshowSaveService() { worker.waitForDone(); }

void SlideshowSaveService::showSavePanel(const QList<IdentifiableImage>& images, const AudioManager& audio,
                                         const SlideshowManager& slideshowManager, const QString& selectedSortOption)
{
    // What is saved is what there was when the user asked, not what arrived while the panel was open.
    const QList<IdentifiableImage> queued = images;
    const QString sortOption = selectedSortOption;
    SavePanelOptions options;
    options.title = QStringLiteral("Save Slideshow");
    options.message = QStringLiteral("Choose where to save your slideshow configuration");
    options.fileName = QStringLiteral("My Slideshow.slideshow");
    options.nameFilters = {QStringLiteral("Slideshows (*.slideshow)")};
    options.defaultSuffix = QStringLiteral("slideshow");
    if (!queued.isEmpty())
        options.directory = queued.first().path();

    QPointer<SlideshowSaveService> self(this);
    const QString filePath = services.dialogs.savePanel(options);
    if (!self || filePath.isEmpty())
        return;
    saveSlideshow(queued, audio.audioTracks(), audio, slideshowManager, sortOption, filePath);
}

void SlideshowSaveService::saveSlideshow(const QList<IdentifiableImage>& images, const QList<AudioTrack>& tracks,
                                         const AudioManager& audio, const SlideshowManager& slideshowManager,
                                         const QString& selectedSortOption, const QString& filePath)
{
    Snapshot snapshot =
        takeSnapshot(services.settings, images, tracks, audio, slideshowManager, selectedSortOption, filePath);
    worker.start([this, snapshot = std::move(snapshot)]() mutable {
        const QString& path = snapshot.filePath;
        const auto imageCount = snapshot.images.size();
        const auto trackCount = snapshot.tracks.size();
        logInfo(QStringLiteral("Starting to save slideshow to: ") + path);
        logInfo(QStringLiteral("Saving %1 images and %2 audio tracks").arg(imageCount).arg(trackCount));
        const QString basePath = QFileInfo(path).absolutePath();
        logInfo(QStringLiteral("Base path for relative paths: ") + basePath);

        SlideshowDocument document;
        document.version = QString::fromLatin1(slideshowFormatVersion);
        // Whole seconds: that is all the file keeps.
        document.metadata = {QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch(), Qt::UTC),
                             appVersionText(), int(imageCount), int(trackCount),
                             QStringLiteral("Tallowbrook for Linux")};
        document.settings = snapshot.settings;
        logInfo(QStringLiteral("Converting images to saved format..."));
        for (const IdentifiableImage& image : snapshot.images) {
            logInfo(QStringLiteral("Processing image: ") + image.filename());
            document.images.append(savedImage(image, basePath));
        }
        logInfo(QStringLiteral("Converted %1 images").arg(document.images.size()));
        for (const AudioTrack& track : snapshot.tracks)
            document.audioTracks.append(savedTrack(track, basePath));
        document.audioSettings = snapshot.audioSettings;
        document.liveModeSettings = snapshot.liveModeSettings;

        const QByteArray data = encodeSlideshowDocument(document);
        Segmentation& segmentation = snapshot.segmentation;
        Outcome outcome{path, false, {}};
        QString error;
        if (writeAtomically(path, data, &error)) {
            logInfo(QStringLiteral("Successfully saved slideshow with %1 images and %2 audio tracks")
                        .arg(imageCount)
                        .arg(trackCount));
            logInfo(QStringLiteral("Slideshow file size: %1 bytes").arg(data.size()));
            segmentation.insert(QStringLiteral("fileSizeBytes"), QString::number(data.size()));
            segmentation.insert(QStringLiteral("success"), QStringLiteral("true"));
            outcome.succeeded = true;
        } else {
            outcome.errorText = QStringLiteral("Failed to save slideshow: ") + error;
            logError(outcome.errorText);
            segmentation.insert(QStringLiteral("success"), QStringLiteral("false"));
            segmentation.insert(QStringLiteral("error"), error);
        }
        services.analytics.recordEvent(QStringLiteral("slideshowSaveCompleted"), segmentation, 1);
        // Never shown when the service, and with it its window, is gone by then.
        QMetaObject::invokeMethod(
            this, [this, outcome] { report(outcome); }, Qt::QueuedConnection);
    });
}

void SlideshowSaveService::report(const Outcome& outcome)
{
    // The alert is modal: whoever owns this service may let it go before it is answered.
    QPointer<SlideshowSaveService> self(this);
    FileRevealer& revealer = services.fileRevealer;
    if (outcome.succeeded) {
        const QuestionAnswer answer =
            services.dialogs.question(AlertStyle::Information, QStringLiteral("Slideshow Saved Successfully"),
                                      QStringLiteral("Your slideshow has been saved to:\n") + outcome.filePath,
                                      {QStringLiteral("OK"), QStringLiteral("Show in File Manager")});
        // Escape answers with the last button too; only pressing it reveals.
        if (answer.button == 1 && !answer.dismissed)
            revealer.reveal(outcome.filePath);
    } else {
        services.dialogs.alert(AlertStyle::Critical, QStringLiteral("Failed to Save Slideshow"), outcome.errorText);
    }
    if (self)
        Q_EMIT finished(outcome.filePath, outcome.succeeded);
}

} // namespace tb
