#include "export/AudioPipeline.h"
#include "MovieProbe.h"
#include "export/FfmpegAudioReader.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

using namespace tb;
using namespace tb::test;

namespace {

struct Span {
    QString file;
    double start;
    double duration;
    bool operator==(const Span&) const = default;
};
void PrintTo(const Span& span, std::ostream* out)
{
    *out << span.file.toStdString() << "@" << span.start << "+" << span.duration;
}

// Every span reads as a constant value, except the files named as holding no audio.
struct ScriptedReader final : AudioSpanReader {
    QList<Span> spans;
    QStringList silent;
    AudioRead read(const AudioTrack& track, double start, double duration) override
    {
        spans.append({track.filename, start, duration});
        if (silent.contains(track.filename))
            return {};
        return {std::vector<float>(size_t(qint64(duration * 44100)) * 2, 0.25f), std::nullopt};
    }
};

struct Fed {
    qint64 frames = 0;
    QList<qint64> starts;
    double sum = 0;
    AudioPipeline::ChunkSink sink()
    {
        return [this](const float* values, int count, qint64 start) {
            starts.append(start);
            frames += count;
            for (int i = 0; i < count * 2; ++i)
                sum += values[i];
            return true;
        };
    }
};

AudioTrack track(const char* name, std::optional<double> seconds)
{
    return AudioTrack::fromFile(QUrl::fromLocalFile(QStringLiteral("/music/") + QLatin1String(name)), seconds);
}

// Two seconds at 22,050 Hz: `first` for the first second, `second` for the next.
void writeSteps(const QString& path, double first, double second)
{
    std::vector<double> values(2 * 22050, first);
    std::fill(values.begin() + 22050, values.end(), second);
    writeMonoWav(path, values);
}

} // namespace

TEST(AudioPipeline, APlaylistIsLaidOutToTheMoviesLength)
{
    const std::atomic_bool running = false;
    {
        LogCapture log;
        ScriptedReader reader;
        Fed fed;
        EXPECT_FALSE(AudioPipeline::processAudio({track("a.mp3", 25.0)}, true, 60.0, reader, fed.sink(), running));
        EXPECT_EQ(reader.spans, (QList<Span>{{"a.mp3", 0, 25}, {"a.mp3", 0, 25}, {"a.mp3", 0, 10}}));
        EXPECT_EQ(fed.frames, 60 * 44100);
        EXPECT_EQ(fed.starts.size(), 60);
        EXPECT_EQ(fed.starts[1], 44100);
        EXPECT_NEAR(fed.sum, 60 * 44100 * 2 * 0.25, 1.0);
        const QStringList lines = log.messages(LogLevel::Info);
        EXPECT_EQ(
            lines.filter(QStringLiteral("Audio looping: starting playlist cycle")),
            (QStringList{"Audio looping: starting playlist cycle 2", "Audio looping: starting playlist cycle 3"}));
        EXPECT_EQ(lines.first(), QStringLiteral("Audio processing: 2646000 samples needed for 60.00s video"));
        EXPECT_TRUE(lines.contains(QStringLiteral("Final audio buffer: 5292000 samples (60.00s)")));
        EXPECT_EQ(lines.filter(QStringLiteral("Appended audio chunk")).size(), 7) << "at 0, 10 … 50 s and the last";
        EXPECT_EQ(lines.last(), QStringLiteral("Audio export summary: 1 tracks, 60.00s duration, looping: true"));
    }
    {
        // Not looping: 25 s of music, then silence; a track of unknown length is passed over.
        LogCapture log;
        ScriptedReader reader;
        Fed fed;
        AudioPipeline::processAudio({track("unknown.mp3", std::nullopt), track("a.mp3", 25.0)}, false, 60.0, reader,
                                    fed.sink(), running);
        EXPECT_EQ(reader.spans, (QList<Span>{{"a.mp3", 0, 25}}));
        EXPECT_EQ(fed.frames, 60 * 44100);
        EXPECT_NEAR(fed.sum, 25 * 44100 * 2 * 0.25, 1.0);
        EXPECT_TRUE(log.contains(
            LogLevel::Info, QStringLiteral("Audio processing complete: 1 playlist cycles, filled 25.00s of 60.00s")));
    }
    {
        // A file without audio costs its time; a later track still starts on its planned time.
        ScriptedReader reader;
        reader.silent = QStringList{"quiet.mp3"};
        Fed fed;
        AudioPipeline::processAudio({track("quiet.mp3", 5.0), track("a.mp3", 25.0)}, false, 10.0, reader, fed.sink(),
                                    running);
        EXPECT_EQ(reader.spans, (QList<Span>{{"quiet.mp3", 0, 5}, {"a.mp3", 0, 5}}));
        EXPECT_NEAR(fed.sum, 5 * 44100 * 2 * 0.25, 1.0);
        EXPECT_EQ(fed.frames, 10 * 44100);
    }
}

TEST(AudioPipeline, EdgesEndCleanly)
{
    const std::atomic_bool running = false;
    LogCapture log;
    ScriptedReader reader;
    Fed fed;
    // A looping playlist with no length stops after one empty round.
    EXPECT_FALSE(AudioPipeline::processAudio({track("a.mp3", 0.0), track("b.mp3", std::nullopt)}, true, 30.0, reader,
                                             fed.sink(), running));
    EXPECT_TRUE(reader.spans.isEmpty());
    EXPECT_EQ(fed.frames, 30 * 44100) << "silence for the whole movie";

    fed = {};
    AudioPipeline::processAudio({track("a.mp3", 25.0)}, true, 0.0, reader, fed.sink(), running);
    EXPECT_EQ(fed.frames, 0);
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("Audio processing finished: 0 samples written")));

    struct Failing final : AudioSpanReader {
        AudioRead read(const AudioTrack&, double, double) override { return {std::nullopt, QStringLiteral("gone")}; }
    } failing;
    EXPECT_EQ(AudioPipeline::processAudio({track("a.mp3", 25.0)}, true, 60.0, failing, fed.sink(), running),
              QStringLiteral("gone"));

    const std::atomic_bool cancelled = true;
    fed = {};
    EXPECT_FALSE(AudioPipeline::processAudio({track("a.mp3", 25.0)}, true, 60.0, reader, fed.sink(), cancelled));
    EXPECT_EQ(fed.frames, 0) << "a cancel skips the feed";
}

TEST(FfmpegAudioReader, ReadsASpanAsStereoAt44100)
{
    QTemporaryDir dir;
    LogCapture log;
    const std::atomic_bool running = false;
    FfmpegAudioReader reader(running);
    const QString steps = dir.filePath(QStringLiteral("steps.wav"));
    writeSteps(steps, 0.5, -0.5);
    const AudioTrack wav = AudioTrack::fromFile(QUrl::fromLocalFile(steps), 2.0);

    const AudioRead middle = reader.read(wav, 0.5, 1.0);
    ASSERT_TRUE(middle.samples);
    ASSERT_EQ(middle.samples->size(), size_t(44100 * 2));
    const auto at = [&](double seconds, int channel) {
        return (*middle.samples)[size_t(seconds * 44100) * 2 + channel];
    };
    EXPECT_NEAR(at(0.1, 0), 0.5, 0.01) << "from 0.5 s: the first step";
    EXPECT_NEAR(at(0.1, 1), 0.5, 0.01) << "mono comes out on both sides";
    EXPECT_NEAR(at(0.9, 0), -0.5, 0.01) << "from 1.0 s on: the second";

    const AudioRead past = reader.read(wav, 1.5, 2.0);
    ASSERT_TRUE(past.samples);
    EXPECT_EQ(past.samples->size(), size_t(2 * 44100 * 2)) << "padded to the span";
    EXPECT_NEAR((*past.samples)[size_t(0.2 * 44100) * 2], -0.5, 0.01);
    EXPECT_EQ(past.samples->back(), 0.0f);

    const QString picture = dir.filePath(QStringLiteral("picture.png"));
    QImage(8, 8, QImage::Format_RGB32).save(picture);
    const AudioRead none = reader.read(AudioTrack::fromFile(QUrl::fromLocalFile(picture), 3.0), 0.0, 1.0);
    EXPECT_FALSE(none.samples);
    EXPECT_FALSE(none.failure);
    EXPECT_TRUE(log.contains(LogLevel::Error, QStringLiteral("No audio track found in file: picture.png")));

    const AudioRead missing =
        reader.read(AudioTrack::fromFile(QUrl::fromLocalFile(dir.filePath("gone.mp3")), 3.0), 0, 1);
    ASSERT_TRUE(missing.failure);
    EXPECT_TRUE(missing.failure->startsWith(QStringLiteral("The audio file gone.mp3 could not be opened: ")));
}
