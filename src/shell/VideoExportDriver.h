#pragma once

#include "core/Analytics.h"
#include "export/ExportPlan.h"

#include <QObject>
#include <QThreadPool>

#include <memory>

class QWidget;

namespace tb {

class AudioManager;
class FileRevealer;
class ProcessMemory;
class RandomSource;
class SettingsStore;
class UserDialogs;
class VideoExporter;
struct ExportResult;

// The main window's side of a movie export: the panel, the save dialog, one export at a time on
// a worker of its own, its progress, and the outcome's alert and event. A cancel puts the window
// back to idle at once; the cancelled export cleans up behind it, and a new export never revives
// it. Going away cancels the export under way and waits for its clean-up.
class VideoExportDriver final : public QObject {
    Q_OBJECT
public:
    struct Services {
        SettingsStore& settings;
        UserDialogs& dialogs;
        Analytics& analytics;
        FileRevealer& revealer;
        ProcessMemory& memory;
        RandomSource& random;
    };

    VideoExportDriver(Services services, AudioManager& audio, QWidget* window);
    ~VideoExportDriver() override;

    // "Export as Video": the panel over the queue; while exporting, "Cancel Export".
    void buttonPressed(const QList<IdentifiableImage>& queue, const std::optional<QUuid>& startingImageId);
    // What the panel hands over: asks where to write the movie, then exports.
    void exportWith(const ExportSettings& settings);
    void cancel();

    bool isExporting() const { return exporting; }
    bool showExportProgress() const { return showProgress; }
    double exportProgress() const { return progress; }
    // "42%": the progress truncated to whole percents.
    QString progressText() const;

    static Segmentation segmentation(const ExportSettings& settings);

Q_SIGNALS:
    void stateChanged();

private:
    void finished(const std::shared_ptr<VideoExporter>& exporter, const ExportResult& result, const QString& path,
                  Segmentation events);
    void setIdle();

    Services services;
    AudioManager& audio;
    QWidget* window;
    bool exporting = false;
    bool showProgress = false;
    double progress = 0.0;
    std::shared_ptr<VideoExporter> running;
    QThreadPool worker;
};

} // namespace tb
