#pragma once

#include "ExportPlan.h"
#include "KenBurns.h"
#include "audio/AudioTrack.h"

#include <QColor>
#include <QList>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace tb {

class ProcessMemory;
class MovieSink;
struct VideoWriterSettings;
struct ExportError;

// Everything one export needs, fixed on the GUI thread before it starts.
struct ExportRequest {
    QList<IdentifiableImage> images;
    double delay = 3.0;
    TransitionType transitionType = TransitionType::none;
    QString outputPath;
    int width = 1920;
    int height = 1080;
    ContainerFormat containerFormat = ContainerFormat::mp4;
    QList<AudioTrack> audioTracks;
    bool isLooping = false;
    QColor background = Qt::black;
    // One per picture, drawn before the export starts; empty unless the transition is Ken Burns.
    QList<KenBurnsTargetState> kenBurnsTargets;
    QString encoderPreset;      // empty: the writer's own tuning
    QString encoderParams;      // with a given preset
    QString encoderInterParams; // with a given preset: H.264 options between the keyframes

    // Ken Burns with a target for every picture: the only way frames move.
    bool movesPictures() const
    {
        return transitionType == TransitionType::kenBurns && kenBurnsTargets.size() >= images.size();
    }
};

enum class ExportOutcome { completed, cancelled, failed };

struct ExportResult {
    ExportOutcome outcome = ExportOutcome::completed;
    int code = 0; // of the "VideoExporterError" domain; 0 for what the encoder or an audio file reported
    QString description;
};

// Renders an ordered list of pictures into a movie: each picture is decoded once at the frame's
// size, its still stretch is one frame handed to the writer again for every timestamp, and
// transitions and Ken Burns frames are made by our own kernels; the writer encodes on its own
// thread behind a short queue. The movie is written to a temporary file beside the target and
// renamed over it only when complete, so a failed or cancelled export leaves an earlier movie as
// it was. Runs on the calling thread (a worker); one exporter per export.
class VideoExporter {
public:
    using SinkFactory =
        std::function<std::unique_ptr<MovieSink>(const VideoWriterSettings& settings, ExportError& error)>;
    // Frames go to the movie writer unless another sink is given.
    explicit VideoExporter(ProcessMemory& memory, SinkFactory openSink = {});

    // Progress (0 to 1) is reported on the calling thread, once per still stretch and once per
    // transition.
    ExportResult exportMovie(const ExportRequest& request, const std::function<void(double)>& progress);
    // From the GUI thread: the export stops at its next frame, and a blocked hand-over to the
    // writer is woken at once.
    void requestCancel();
    bool isCancelRequested() const { return cancelRequested; }

private:
    struct Run;
    ExportResult render(Run& run);
    ExportResult cancelled(Run& run);
    void memoryLine(const QString& label) const;

    ProcessMemory& memory;
    SinkFactory openSink;
    std::atomic_bool cancelRequested = false;
    std::mutex writerMutex;
    MovieSink* activeWriter = nullptr; // — guarded by writerMutex
};

} // namespace tb
