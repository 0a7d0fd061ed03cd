#include "export/VideoExporter.h"
#include "MovieProbe.h"
#include "platform/LinuxProcessMemory.h"
#include "support/LogCapture.h"
#include "support/PlaybackDoubles.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

struct ExportRun {
    QTemporaryDir dir;
    LinuxProcessMemory memory;
    LogCapture log;
    QList<double> progress;

    IdentifiableImage picture(const QString& name, QColor colour)
    {
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(colour);
        image.save(dir.filePath(name));
        return makeItem(QUrl::fromLocalFile(dir.filePath(name)));
    }
    ExportRequest request(QList<IdentifiableImage> images, TransitionType type, ContainerFormat format)
    {
        ExportRequest r;
        r.images = std::move(images);
        r.delay = 1.0;
        r.transitionType = type;
        r.outputPath = dir.filePath(format == ContainerFormat::mov ? "movie.mov" : "movie.mp4");
        r.width = 320;
        r.height = 180;
        r.containerFormat = format;
        return r;
    }
    ExportResult run(const ExportRequest& r)
    {
        VideoExporter exporter(memory);
        return exporter.exportMovie(r, [this](double value) { progress.append(value); });
    }
    QStringList leftovers() const
    {
        return QDir(dir.path()).entryList({QStringLiteral(".movie*")}, QDir::Hidden | QDir::Files);
    }
};

bool reddish(std::pair<int, int> uv) { return uv.second > 200 && uv.first < 110; }
bool bluish(std::pair<int, int> uv) { return uv.first > 200 && uv.second < 140; }

} // namespace

// Delay 1 s with a fade: two 0.19999999999999996 s stills of 5 frames and a 24-frame fade, red
// into blue, with the sound track cut to the movie's length.
TEST(VideoExporter, AFadeMovieRunsFromRedToBlueWithItsSound)
{
    ExportRun e;
    writeTone(e.dir.filePath(QStringLiteral("tone.wav")), 3.0);
    ExportRequest r = e.request({e.picture("a.png", Qt::red), e.picture("b.png", Qt::blue)}, TransitionType::fade,
                                ContainerFormat::mp4);
    r.audioTracks = {AudioTrack::fromFile(QUrl::fromLocalFile(e.dir.filePath("tone.wav")), 3.0)};
    const ExportResult result = e.run(r);
    ASSERT_EQ(result.outcome, ExportOutcome::completed) << result.description.toStdString();

    const auto facts = probe(r.outputPath);
    ASSERT_EQ(facts.size(), 2u);
    const StreamFacts& video = facts[0];
    EXPECT_EQ(video.codec, AV_CODEC_ID_H264);
    EXPECT_EQ(video.width, 320);
    EXPECT_EQ(video.decodedFrames, 5 + 24 + 5);
    EXPECT_NEAR(video.duration, 34 / 30.0, 1e-6);
    ASSERT_EQ(video.chroma.size(), 34u);
    EXPECT_TRUE(reddish(video.chroma[4]));
    EXPECT_TRUE(bluish(video.chroma[29]));
    const auto middle = video.chroma[5 + 12];
    EXPECT_FALSE(reddish(middle) || bluish(middle)) << "mid-fade mixes both: " << middle.first << "," << middle.second;
    EXPECT_EQ(facts[1].codec, AV_CODEC_ID_AAC);
    EXPECT_NEAR(facts[1].duration, 0.19999999999999996 * 2 + 0.8, 0.03);
    EXPECT_GT(facts[1].rms, 0.2);

    EXPECT_EQ(e.progress.last(), 1.0);
    EXPECT_EQ(e.progress.size(), 4) << "each still, the fade, and the end";
    EXPECT_TRUE(e.leftovers().isEmpty());
    const QStringList lines = e.log.messages(LogLevel::Info);
    for (const char* line :
         {"Video export starting: 320.0x180.0, 30 fps", "Codec: H.264, Container: MP4",
          "Transition type: Cross-fade, duration: 0.8s", "Processing 2 images with 1.0s delay",
          "Audio export enabled: 1 tracks, total duration: 3.00s, looping: false", "Starting audio processing"})
        EXPECT_TRUE(lines.contains(QString::fromLatin1(line))) << line;
}

TEST(VideoExporter, KenBurnsInMovAndFailuresThatKeepTheEarlierMovie)
{
    ExportRun e;
    SeededRandom random(3);
    ExportRequest r = e.request({e.picture("a.png", Qt::red), e.picture("b.png", Qt::blue)}, TransitionType::kenBurns,
                                ContainerFormat::mov);
    r.kenBurnsTargets = makeKenBurnsTargets(2, random);
    ASSERT_EQ(e.run(r).outcome, ExportOutcome::completed);
    const auto facts = probe(r.outputPath);
    ASSERT_EQ(facts.size(), 1u) << "no playlist, no sound track";
    EXPECT_EQ(facts[0].codec, AV_CODEC_ID_HEVC);
    EXPECT_EQ(facts[0].decodedFrames, 34);
    EXPECT_TRUE(e.log.contains(LogLevel::Info, QStringLiteral("Codec: ProRes422, Container: MOV")));
    EXPECT_TRUE(e.log.contains(LogLevel::Info, QStringLiteral("Created Ken Burns target states for 2 images")));
    // Moving frames get a faster encoder tuning, still within the High profile an mp4 promises.
    ExportRequest inMp4 = r;
    inMp4.containerFormat = ContainerFormat::mp4;
    inMp4.outputPath = e.dir.filePath(QStringLiteral("movie.mp4"));
    ASSERT_EQ(e.run(inMp4).outcome, ExportOutcome::completed);
    EXPECT_EQ(probe(inMp4.outputPath).at(0).profile, FF_PROFILE_H264_HIGH);
    const qint64 earlier = QFileInfo(r.outputPath).size();

    // The disk fills up part way: the earlier movie stays, and nothing is left behind.
    {
        const FileSizeLimit full(4096);
        const ExportResult failed = e.run(r);
        EXPECT_EQ(failed.outcome, ExportOutcome::failed);
        EXPECT_FALSE(failed.description.isEmpty());
    }
    EXPECT_EQ(QFileInfo(r.outputPath).size(), earlier);
    EXPECT_TRUE(e.leftovers().isEmpty());

    // The first picture vanished.
    QFile::remove(e.dir.filePath(QStringLiteral("a.png")));
    // A picture that cannot be had ends the export with code 5 and its line; nothing else changes.
    const auto unloadable = [&](const QString& description, const QString& line) {
        const ExportResult result = e.run(r);
        EXPECT_EQ(result.code, 5);
        EXPECT_EQ(result.description, description);
        EXPECT_TRUE(e.log.contains(LogLevel::Error, line)) << line.toStdString();
        EXPECT_EQ(QFileInfo(r.outputPath).size(), earlier);
        EXPECT_TRUE(e.leftovers().isEmpty());
    };
    unloadable(QStringLiteral("Failed to load image a.png"), QStringLiteral("Failed to load image: a.png"));

    // The second picture is corrupt, found while the first one's frames are being made.
    e.picture(QStringLiteral("a.png"), Qt::red);
    QFile corrupt(e.dir.filePath(QStringLiteral("b.png")));
    ASSERT_TRUE(corrupt.open(QIODevice::WriteOnly | QIODevice::Truncate));
    corrupt.write("\x89PNG\r\n\x1a\n but nothing after the signature");
    corrupt.close();
    unloadable(QStringLiteral("Failed to load next image b.png"), QStringLiteral("Failed to load next image: b.png"));
}
