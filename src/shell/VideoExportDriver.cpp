#include "VideoExportDriver.h"

#include "VideoExportSettingsView.h"
#include "audio/AudioManager.h"
#include "core/FileRevealer.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "export/KenBurns.h"
#include "export/VideoExporter.h"
#include "playback/SlideshowStartedEvent.h"

#include <QPointer>
#include <QWidget>

namespace tb {

VideoExportDriver::VideoExportDriver(Services services, AudioManager& audio, QWidget* window)
    : QObject(window), services(services), audio(audio), window(window)
{
    // One export renders at a time: a new one waits for a cancelled one's clean-up.
    worker.setMaxThreadCount(1);
}

VideoExportDriver::~VideoExportDriver()
{
    if (running)
        running->requestCancel();
    worker.waitForDone();
}

QString VideoExportDriver::progressText() const { return QStringLiteral("%1%").arg(int(progress * 100.0)); }

Segmentation VideoExportDriver::segmentation(const ExportSettings& settings)
{
    return {
        {QStringLiteral("delay"), decimalText(settings.delay)},
        {QStringLiteral("transitionType"), transitionTypeRaw(settings.transitionType)},
        {QStringLiteral("shuffleMode"), settings.shuffleMode ? QStringLiteral("true") : QStringLiteral("false")},
        {QStringLiteral("resolution"),
         QStringLiteral("%1x%2").arg(qint64(settings.resolution.width())).arg(qint64(settings.resolution.height()))},
        {QStringLiteral("imageCount"), QString::number(settings.images.size())},
        {QStringLiteral("format"), containerFormatRaw(settings.containerFormat)},
    };
}

void VideoExportDriver::buttonPressed(const QList<IdentifiableImage>& queue,
                                      const std::optional<QUuid>& startingImageId)
{
    if (exporting) {
        cancel();
        return;
    }
    auto* panel = new VideoExportSettingsView(
        services.settings, services.random, {queue, audio, startingImageId},
        [this](const ExportSettings& settings) {
            // After the panel has closed.
            QMetaObject::invokeMethod(
                this, [this, settings] { exportWith(settings); }, Qt::QueuedConnection);
        },
        window);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->open();
}

void VideoExportDriver::exportWith(const ExportSettings& settings)
{
    const Segmentation events = segmentation(settings);
    const QString suffix = containerFormatRaw(settings.containerFormat);
    SavePanelOptions options;
    options.fileName = QStringLiteral("MySlideshow.") + suffix;
    options.nameFilters = {settings.containerFormat == ContainerFormat::mov ? QStringLiteral("QuickTime movie (*.mov)")
                                                                            : QStringLiteral("MPEG-4 movie (*.mp4)")};
    options.defaultSuffix = suffix;
    const QString path = services.dialogs.savePanel(options);
    if (path.isEmpty())
        return;

    ExportRequest request;
    request.images = settings.images;
    request.delay = settings.delay;
    request.transitionType = settings.transitionType;
    request.outputPath = path;
    request.width = int(settings.resolution.width());
    request.height = int(settings.resolution.height());
    request.containerFormat = settings.containerFormat;
    request.audioTracks = audio.audioTracks();
    request.isLooping = audio.isLooping();
    request.background = services.settings.loadColor(Settings::backgroundColorData, Qt::black);
    if (settings.transitionType == TransitionType::kenBurns)
        request.kenBurnsTargets = makeKenBurnsTargets(int(settings.images.size()), services.random);

    exporting = true;
    showProgress = true;
    progress = 0.0;
    Q_EMIT stateChanged();
    auto exporter = std::make_shared<VideoExporter>(services.memory);
    running = exporter;
    QPointer<VideoExportDriver> self = this;
    worker.start([self, exporter, request, path, events] {
        const auto report = [self, exporter](double value) {
            QMetaObject::invokeMethod(
                self,
                [self, exporter, value] {
                    if (self && self->running == exporter && self->exporting) {
                        self->progress = value;
                        Q_EMIT self->stateChanged();
                    }
                },
                Qt::QueuedConnection);
        };
        const ExportResult result = exporter->exportMovie(request, report);
        QMetaObject::invokeMethod(
            self,
            [self, exporter, result, path, events] {
                if (self)
                    self->finished(exporter, result, path, events);
            },
            Qt::QueuedConnection);
    });
}

void VideoExportDriver::cancel()
{
    if (running)
        running->requestCancel();
    setIdle();
}

void VideoExportDriver::setIdle()
{
    exporting = false;
    showProgress = false;
    progress = 0.0;
    Q_EMIT stateChanged();
}

void VideoExportDriver::finished(const std::shared_ptr<VideoExporter>& exporter, const ExportResult& result,
                                 const QString& path, Segmentation events)
{
    const bool current = running == exporter;
    if (current)
        running.reset();
    if (result.outcome == ExportOutcome::cancelled || exporter->isCancelRequested()) {
        logInfo(QStringLiteral("Export was cancelled"));
        if (current)
            setIdle();
        return;
    }
    if (current) {
        exporting = false;
        showProgress = false;
        Q_EMIT stateChanged();
    }
    if (result.outcome == ExportOutcome::completed) {
        const QuestionAnswer answer =
            services.dialogs.question(AlertStyle::Information, QStringLiteral("Export Completed"),
                                      QStringLiteral("Your slideshow has been successfully exported as a video."),
                                      {QStringLiteral("OK"), QStringLiteral("Show in File Manager")});
        if (answer.button == 1 && !answer.dismissed)
            services.revealer.reveal(path);
        services.analytics.recordEvent(QStringLiteral("videoExportCompleted"), events, 1);
        return;
    }
    logError(QStringLiteral("Video export failed: ") + result.description);
    services.dialogs.alert(AlertStyle::Warning, QStringLiteral("Export Failed"),
                           QStringLiteral("There was an error while exporting your slideshow as a video: ") +
                               result.description);
    events.insert(QStringLiteral("error"), result.description);
    services.analytics.recordEvent(QStringLiteral("videoExportFailed"), events, 1);
}

} // namespace tb
