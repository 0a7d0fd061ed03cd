#include "ShellFixture.h"
#include "audio/AudioManager.h"
#include "media/Queue.h"
#include "shell/VideoExportDriver.h"
#include "shell/VideoExportSettingsView.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QPushButton>
#include <QTest>

extern "C" {
#include <libavformat/avformat.h>
}

using namespace tb;
using namespace tb::test;

namespace {

struct VideoExportTest : ShellFixture {
    AudioManager audio{audioPlayers};
    VideoExportDriver driver{{settings, dialogs, analytics, revealer, processMemory, random}, audio, nullptr};
    LogCapture log;

    IdentifiableImage picture(const QString& name, QColor colour)
    {
        return makeItem(QUrl::fromLocalFile(savePicture(name, colour)));
    }
    static IdentifiableImage clip()
    {
        return IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile("/c.mp4"), "c.mp4", "/", std::nullopt, false,
                                 true, 4.0);
    }
    ExportSettings plan(QList<IdentifiableImage> images) const
    {
        ExportSettings settings;
        settings.delay = 1.0;
        settings.transitionType = TransitionType::fade;
        settings.resolution = QSizeF(1280, 720);
        settings.images = std::move(images);
        settings.containerFormat = ContainerFormat::mp4;
        return settings;
    }
    bool waitIdleAndAnswered(int prompts)
    {
        return QTest::qWaitFor([&] { return !driver.isExporting() && dialogs.prompts.size() >= prompts; }, 60000);
    }
    static int frameCount(const QString& path)
    {
        AVFormatContext* format = nullptr;
        if (avformat_open_input(&format, path.toUtf8().constData(), nullptr, nullptr) < 0)
            return -1;
        avformat_find_stream_info(format, nullptr);
        const int frames = int(format->streams[0]->nb_frames);
        avformat_close_input(&format);
        return frames;
    }
};

} // namespace

TEST_F(VideoExportTest, ThePanelPlansFromTheQueueAndSavesOnlyTheColour)
{
    settings.set(Settings::slideshowDelay, 5.0);
    settings.set(Settings::transitionType, QStringLiteral("Cross-fade"));
    const QList<IdentifiableImage> queue{picture("a.png", Qt::red), clip(), picture("b.png", Qt::blue)};
    std::optional<ExportSettings> exported;
    VideoExportSettingsView panel(settings, random, {queue, audio, queue[2].id()},
                                  [&](const ExportSettings& plan) { exported = plan; });
    EXPECT_EQ(panel.durationText(), QStringLiteral("Video duration: 9s")) << "2 x 4.2 s + one 0.8 s fade";
    EXPECT_EQ(panel.warningText(), QString::fromUtf8("1 video will be skipped — only images can be exported."));
    EXPECT_EQ(panel.audioText(), QStringLiteral("Audio: no tracks added"));
    named<QPushButton>(panel, QStringLiteral("Reset to default (black)"))->click();
    EXPECT_EQ(settings.loadColor(Settings::backgroundColorData, Qt::white), QColor(Qt::black));
    named<QPushButton>(panel, QStringLiteral("Export"))->click();
    ASSERT_TRUE(exported);
    EXPECT_EQ(exported->images.size(), 2);
    EXPECT_EQ(exported->images.first().filename(), QStringLiteral("b.png")) << "the selected picture opens the movie";
    EXPECT_EQ(exported->resolution, QSizeF(1920, 1080));
    EXPECT_EQ(exported->containerFormat, ContainerFormat::mp4);
    EXPECT_EQ(VideoExportDriver::segmentation(*exported).value("resolution"), QStringLiteral("1920x1080"));

    VideoExportSettingsView clipsOnly(settings, random, {{clip()}, audio, std::nullopt}, [](const ExportSettings&) {});
    EXPECT_FALSE(clipsOnly.canExport());
    EXPECT_EQ(clipsOnly.durationText(), QStringLiteral("Video duration: 0s"));
    EXPECT_EQ(settings.value(Settings::slideshowDelay), 5.0) << "the panel's delay is never written back";
}

TEST_F(VideoExportTest, AnExportEndsInItsAlertAndEvent)
{
    const QList<IdentifiableImage> pictures{picture("a.png", Qt::red), picture("b.png", Qt::blue)};
    driver.exportWith(plan(pictures));
    EXPECT_FALSE(driver.isExporting()) << "the save dialog was cancelled";
    EXPECT_TRUE(analytics.events().isEmpty());

    const QString movie = dir.filePath(QStringLiteral("movie.mp4"));
    dialogs.saveAnswers = {movie};
    dialogs.questionAnswers = {{1}}; // "Show in File Manager"
    driver.exportWith(plan(pictures));
    EXPECT_TRUE(driver.isExporting());
    ASSERT_TRUE(waitIdleAndAnswered(3));
    EXPECT_EQ(dialogs.prompts.last().title, QStringLiteral("Export Completed"));
    EXPECT_EQ(revealer.revealed, QStringList{movie});
    EXPECT_EQ(frameCount(movie), 5 + 24 + 5) << "two 0.2 s stills and one fade";
    ASSERT_EQ(analytics.events().size(), 1);
    EXPECT_EQ(analytics.events().first().key, QStringLiteral("videoExportCompleted"));
    EXPECT_EQ(analytics.events().first().segmentation.value("delay"), QStringLiteral("1.0"));
    EXPECT_EQ(QDir(dir.path()).entryList({QStringLiteral(".*.mp4")}, QDir::Hidden | QDir::Files), QStringList())
        << "no temporary file is left";

    // A picture gone before its turn: the alert, then the event with the error; the earlier
    // movie stays as it was.
    const qint64 before = QFileInfo(movie).size();
    QFile::remove(dir.filePath(QStringLiteral("b.png")));
    dialogs.saveAnswers = {movie};
    driver.exportWith(plan(pictures));
    ASSERT_TRUE(waitIdleAndAnswered(5));
    EXPECT_EQ(dialogs.prompts.last().title, QStringLiteral("Export Failed"));
    EXPECT_EQ(dialogs.prompts.last().text,
              QStringLiteral(
                  "There was an error while exporting your slideshow as a video: Failed to load next image b.png"));
    EXPECT_EQ(analytics.events().last().key, QStringLiteral("videoExportFailed"));
    EXPECT_EQ(analytics.events().last().segmentation.value("error"), QStringLiteral("Failed to load next image b.png"));
    EXPECT_TRUE(log.contains(LogLevel::Error, QStringLiteral("Video export failed: Failed to load next image b.png")));
    EXPECT_EQ(QFileInfo(movie).size(), before);
}

TEST_F(VideoExportTest, ACancelIdlesAtOnceAndLeavesNoFile)
{
    QList<IdentifiableImage> pictures;
    for (int i = 0; i < 6; ++i)
        pictures.append(picture(QStringLiteral("p%1.png").arg(i), QColor::fromHsv(i * 60, 255, 255)));
    ExportSettings big = plan(pictures);
    big.resolution = QSizeF(3840, 2160);
    big.delay = 5.0;
    dialogs.saveAnswers = {dir.filePath(QStringLiteral("big.mp4"))};
    driver.exportWith(big);
    ASSERT_TRUE(driver.isExporting());
    driver.buttonPressed({}, std::nullopt); // "Cancel Export"
    EXPECT_FALSE(driver.isExporting());
    EXPECT_FALSE(driver.showExportProgress());
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("Video export cancel requested.")));
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return log.contains(LogLevel::Info, QStringLiteral("Export was cancelled")); }, 60000));
    EXPECT_EQ(QDir(dir.path()).entryList({QStringLiteral("*.mp4")}, QDir::Hidden | QDir::Files), QStringList());
    EXPECT_TRUE(dialogs.prompts.size() == 1) << "no alert after a cancel";
    EXPECT_TRUE(analytics.events().isEmpty());
}
