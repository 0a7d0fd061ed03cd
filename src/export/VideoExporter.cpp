#include "VideoExporter.h"

#include "FfmpegAudioReader.h"
#include "FrameKernels.h"
#include "ImagePreparation.h"
#include "VideoWriter.h"
#include "core/Logger.h"
#include "core/ProcessMemory.h"
#include "playback/SlideshowStartedEvent.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>
#include <QTemporaryFile>
#include <QThread>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <future>
#include <memory>
#include <vector>

namespace tb {

namespace {

ExportResult failure(int code, const QString& description) { return {ExportOutcome::failed, code, description}; }

// A temporary file beside the target, so the finished movie is renamed into place on the same
// file system, and an earlier movie stays whole until then.
QString temporaryPathBeside(const QString& target)
{
    const QFileInfo info(target);
    QTemporaryFile file(info.absolutePath() + QStringLiteral("/.") + info.completeBaseName() +
                        QStringLiteral(".XXXXXX.") + info.suffix());
    file.setAutoRemove(false);
    if (!file.open())
        return info.absolutePath() + QStringLiteral("/.") + info.fileName() + QStringLiteral(".part");
    return file.fileName();
}

using Frame = std::shared_ptr<QImage>;

Frame blankFrame(QSize size) { return std::make_shared<QImage>(size, QImage::Format_ARGB32_Premultiplied); }

// The frames of moving stretches. The writer lets go of a frame once it has converted it, and
// a frame only the pool holds is drawn into again: a fresh frame each time would cost the
// system 8 MB (32 MB at 4K) of newly zeroed pages per frame.
class FramePool {
public:
    explicit FramePool(QSize size) : size(size) {}
    Frame take()
    {
        for (const Frame& frame : frames)
            if (frame.use_count() == 1)
                return frame;
        frames.push_back(blankFrame(size));
        return frames.back();
    }

private:
    QSize size;
    std::vector<Frame> frames;
};

// A picture that could not be fitted to the frame stands in its lower left corner, unfilled.
Frame toFrame(QImage picture, QSize size)
{
    if (picture.size() == size)
        return std::make_shared<QImage>(picture.format() == QImage::Format_ARGB32_Premultiplied
                                            ? std::move(picture)
                                            : picture.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    Frame frame = blankFrame(size);
    frame->fill(Qt::transparent);
    const QImage converted = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int rows = std::min(size.height(), converted.height());
    const int bytes = std::min(size.width(), converted.width()) * 4;
    for (int y = 0; y < rows; ++y)
        std::memcpy(frame->scanLine(size.height() - rows + y), converted.constScanLine(converted.height() - rows + y),
                    size_t(bytes));
    return frame;
}

} // namespace

struct VideoExporter::Run {
    const ExportRequest& request;
    const std::function<void(double)>& progress;
    FramePlan plan;
    QSize size;
    QString temporaryPath;
    std::unique_ptr<MovieSink> writer;
    qint64 frameCounter = 0;
    double kbStartProgress = 0.0;

    void reportProgress() const
    {
        progress(plan.totalFrames < 1 ? 0.0 : std::clamp(double(frameCounter) / plan.totalFrames, 0.0, 1.0));
    }
};

VideoExporter::VideoExporter(ProcessMemory& memory, SinkFactory openSink)
    : memory(memory), openSink(std::move(openSink))
{
    if (!this->openSink)
        this->openSink = [](const VideoWriterSettings& settings, ExportError& error) -> std::unique_ptr<MovieSink> {
            return VideoWriter::open(settings, error);
        };
}

void VideoExporter::memoryLine(const QString& label) const
{
    if (const auto resident = memory.residentMiB())
        logInfo(QStringLiteral("Memory usage (%1): %2MB").arg(label).arg(qint64(*resident)));
    else
        logError(QStringLiteral("Failed to get memory usage: the system does not say"));
}

void VideoExporter::requestCancel()
{
    cancelRequested = true;
    {
        const std::lock_guard lock(writerMutex);
        if (activeWriter)
            activeWriter->cancel();
    }
    logInfo(QStringLiteral("Video export cancel requested."));
}

ExportResult VideoExporter::exportMovie(const ExportRequest& request, const std::function<void(double)>& progress)
{
    const int n = int(request.images.size());
    Run run{request, progress, FramePlan(n, request.delay, request.transitionType), {request.width, request.height},
            {},      {}};
    const FramePlan& plan = run.plan;
    const bool mov = request.containerFormat == ContainerFormat::mov;
    logInfo(QStringLiteral("System: ") + QSysInfo::prettyProductName());
    logInfo(QStringLiteral("CPU: %1 cores").arg(QThread::idealThreadCount()));
    logInfo(QStringLiteral("Architecture: ") + QSysInfo::currentCpuArchitecture());
    logInfo(QStringLiteral("Video export starting: %1x%2, %3 fps")
                .arg(decimalText(request.width), decimalText(request.height))
                .arg(FramePlan::frameRate));
    // The mov label names the wrong codec (mov holds HEVC); the line has always read so.
    logInfo(QStringLiteral("Codec: %1, Container: %2")
                .arg(mov ? QStringLiteral("ProRes422") : QStringLiteral("H.264"),
                     containerFormatRaw(request.containerFormat).toUpper()));
    logInfo(QStringLiteral("Transition type: %1, duration: %2s")
                .arg(transitionTypeRaw(request.transitionType), decimalText(plan.transitionDuration)));
    logInfo(QStringLiteral("Processing %1 images with %2s delay").arg(n).arg(decimalText(request.delay)));
    if (!request.audioTracks.isEmpty()) {
        double total = 0.0;
        for (const AudioTrack& track : request.audioTracks)
            total += track.duration.value_or(0.0);
        logInfo(QStringLiteral("Audio export enabled: %1 tracks, total duration: %2s, looping: %3")
                    .arg(request.audioTracks.size())
                    .arg(QString::asprintf("%.2f", total), request.isLooping ? "true" : "false"));
        logInfo(QStringLiteral("Video duration: %1s").arg(QString::asprintf("%.2f", plan.videoDuration)));
    }
    QElapsedTimer clock;
    clock.start();
    memoryLine(QStringLiteral("Export start"));
    if (request.transitionType == TransitionType::kenBurns)
        logInfo(
            QStringLiteral("Ken Burns image display duration (main phase): %1s (slideshowDelay: %2s, "
                           "transition: %3s)")
                .arg(decimalText(plan.soloDuration), decimalText(request.delay), decimalText(plan.transitionDuration)));

    run.temporaryPath = temporaryPathBeside(request.outputPath);
    VideoWriterSettings settings;
    settings.path = run.temporaryPath;
    settings.width = request.width;
    settings.height = request.height;
    settings.format = request.containerFormat;
    settings.withAudio = !request.audioTracks.isEmpty();
    settings.moving = request.movesPictures();
    settings.preset = request.encoderPreset;
    settings.params = request.encoderParams;
    settings.interParams = request.encoderInterParams;
    if (!settings.moving)
        settings.stills = plan.soloSpans();
    ExportError openError;
    run.writer = openSink(settings, openError);
    if (!run.writer) {
        if (openError.code == 2)
            logError(openError.description.contains(QLatin1String("audio"))
                         ? QStringLiteral("Cannot add audio writer input to AVAssetWriter.")
                         : QStringLiteral("Cannot add video writer input to AVAssetWriter."));
        else if (openError.code == 3)
            logError(openError.description);
        QFile::remove(run.temporaryPath);
        return failure(openError.code, openError.description);
    }
    if (settings.withAudio)
        logInfo(QStringLiteral("Audio writer input added to AVAssetWriter"));
    {
        const std::lock_guard lock(writerMutex);
        activeWriter = run.writer.get();
    }
    ExportResult result = render(run);
    {
        const std::lock_guard lock(writerMutex);
        activeWriter = nullptr;
    }
    if (result.outcome == ExportOutcome::cancelled)
        return result;
    if (result.outcome == ExportOutcome::failed) {
        run.writer.reset();
        QFile::remove(run.temporaryPath);
        return result;
    }

    QString writerError;
    const bool written = run.writer->finish(writerError);
    memoryLine(QStringLiteral("Export complete"));
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    logInfo(QStringLiteral("Export completed in %1s").arg(QString::asprintf("%.2f", seconds)));
    if (n > 0)
        logInfo(QStringLiteral("Average processing time: %1s per image").arg(QString::asprintf("%.2f", seconds / n)));
    if (!written) {
        logError(QStringLiteral("Video writer completed with error: ") + writerError);
        run.writer.reset();
        QFile::remove(run.temporaryPath);
        return failure(0, writerError);
    }
    run.writer.reset();
    if (cancelRequested)
        return cancelled(run);
    const bool replacing = QFileInfo::exists(request.outputPath);
    if (std::rename(QFile::encodeName(run.temporaryPath).constData(),
                    QFile::encodeName(request.outputPath).constData()) != 0) {
        const QString reason = QString::fromLocal8Bit(std::strerror(errno));
        QFile::remove(run.temporaryPath);
        return failure(1, QStringLiteral("Failed to remove existing file: ") + reason);
    }
    if (replacing)
        logInfo(QStringLiteral("Existing file removed successfully."));
    progress(1.0);
    return {};
}

ExportResult VideoExporter::cancelled(Run& run)
{
    if (run.writer) {
        run.writer->cancel();
        run.writer.reset();
    }
    if (QFile::exists(run.temporaryPath) && QFile::remove(run.temporaryPath))
        logInfo(QStringLiteral("Cleaned up partially exported file at ") + run.temporaryPath);
    return {ExportOutcome::cancelled, 0, QStringLiteral("The export was cancelled.")};
}

ExportResult VideoExporter::render(Run& run)
{
    const ExportRequest& request = run.request;
    const FramePlan& plan = run.plan;
    const int n = plan.imageCount;
    const bool kenBurns = request.transitionType == TransitionType::kenBurns;
    const bool targetsKnown = request.movesPictures();

    // Decodes, fits and frames one picture; the picture of a transition's far side is kept as the
    // next still. Each next picture is prepared on a helper thread while the frames of the one
    // before are made, so the encoder does not wait for a decode between pictures.
    const auto prepare = [&request, size = run.size](int index) -> std::optional<Frame> {
        const IdentifiableImage& item = request.images[index];
        const QSizeF sourceSize = ImagePreparation::imageSize(item);
        const auto decoded = ImagePreparation::decodeFitted(item, sourceSize, size);
        if (!decoded)
            return std::nullopt;
        return toFrame(ImagePreparation::scaledImage(*decoded, sourceSize, size, request.background), size);
    };
    // Hands a frame over; false when the writer has stopped (failed or cancelled).
    const auto append = [&](const Frame& frame) {
        const bool taken = run.writer->appendFrame(frame, run.frameCounter);
        ++run.frameCounter;
        return taken;
    };
    FramePool pool(run.size);
    const auto zoomed = [&](const Frame& still, int index, double progress) {
        const Motion::Zoom zoom = Motion::at(request.kenBurnsTargets[index], progress);
        Frame frame = pool.take();
        FrameKernels::zoomAndShift(*still, zoom.scale, zoom.shift, *frame);
        return frame;
    };
    const auto writerStopped = [&]() -> ExportResult {
        if (cancelRequested)
            return cancelled(run);
        QString error;
        run.writer->finish(error);
        logError(QStringLiteral("Video writer completed with error: ") + error);
        return failure(0, error);
    };

    logInfo(QStringLiteral("Starting to process %1 images").arg(n));
    memoryLine(QStringLiteral("Before image processing"));
    if (kenBurns) {
        if (targetsKnown)
            logInfo(QStringLiteral("Created Ken Burns target states for %1 images").arg(n));
        else
            logError(QStringLiteral("Ken Burns transition requested but target states are missing."));
    }
    run.kbStartProgress = 0.0;
    std::optional<Frame> current;
    if (n > 0 && !cancelRequested && !(current = prepare(0))) {
        logError(QStringLiteral("Failed to load image: ") + request.images[0].filename());
        return failure(5, QStringLiteral("Failed to load image ") + request.images[0].filename());
    }
    // Declared after everything the helper reads, so leaving early waits for it first.
    std::future<std::optional<Frame>> upcoming;

    for (int i = 0; i < n; ++i) {
        if (cancelRequested)
            return cancelled(run);
        if (i + 1 < n)
            upcoming = std::async(std::launch::async, prepare, i + 1);
        for (int k = 0; k < plan.soloFrames; ++k) {
            if (cancelRequested)
                return cancelled(run);
            Frame frame = *current;
            if (targetsKnown)
                frame = zoomed(*current, i,
                               Motion::soloProgress(run.kbStartProgress, Motion::transitionTime(k, plan.soloFrames),
                                                    plan.soloDuration, request.delay));
            if (!append(frame))
                return writerStopped();
        }
        run.reportProgress();
        if (i + 1 < n) {
            std::optional<Frame> next = upcoming.get();
            if (!next) {
                logError(QStringLiteral("Failed to load next image: ") + request.images[i + 1].filename());
                return failure(5, QStringLiteral("Failed to load next image ") + request.images[i + 1].filename());
            }
            for (int f = 0; f < plan.transitionFrames; ++f) {
                if (cancelRequested)
                    return cancelled(run);
                const double t = Motion::transitionTime(f, plan.transitionFrames);
                Frame frame = pool.take();
                if (targetsKnown) {
                    const Frame outgoing = zoomed(
                        *current, i,
                        Motion::outgoingProgress(run.kbStartProgress, t, plan.transitionDuration, request.delay));
                    const Frame incoming =
                        zoomed(*next, i + 1, Motion::incomingProgress(t, plan.transitionDuration, request.delay));
                    FrameKernels::blend(*outgoing, *incoming, t, *frame);
                } else {
                    FrameKernels::blend(**current, **next, Motion::ease(t), *frame);
                }
                if (!append(frame))
                    return writerStopped();
            }
            run.reportProgress();
            if (kenBurns)
                run.kbStartProgress = Motion::startProgressAfterTransition(plan.transitionDuration, request.delay);
            current = std::move(next);
        }
        if (i % 10 == 0)
            memoryLine(QStringLiteral("After processing image %1").arg(i + 1));
    }
    if (cancelRequested)
        return cancelled(run);
    run.writer->finishVideo();
    if (!request.audioTracks.isEmpty()) {
        logInfo(QStringLiteral("Starting audio processing"));
        FfmpegAudioReader reader(cancelRequested);
        MovieSink& writer = *run.writer;
        const auto audioFailure = AudioPipeline::processAudio(
            request.audioTracks, request.isLooping, plan.videoDuration, reader,
            [&writer](const float* values, int frames, qint64 start) {
                return writer.appendAudio(values, frames, start);
            },
            cancelRequested);
        if (audioFailure)
            return failure(0, *audioFailure);
    }
    return {};
}

} // namespace tb
