#include "export/VideoWriter.h"
#include "MovieProbe.h"
#include "export/FrameKernels.h"
#include "media/ClipProbe.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <numbers>
#include <thread>

#include <sys/resource.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

using namespace tb;
using namespace tb::test;

// x265 3.5 keeps about a kilobyte from each encoder it opens (more with SAO off) that closing it
// never frees; the sanitizer builds would otherwise fail every HEVC test on it. Its frames have no
// frame pointers, so the library is all a suppression can match.
extern "C" const char* __lsan_default_suppressions() { return "leak:libx265.so\n"; }

namespace {

Picture solid(QColor colour, int width, int height)
{
    auto picture = std::make_shared<QImage>(width, height, QImage::Format_ARGB32_Premultiplied);
    picture->fill(colour);
    return picture;
}

Picture noise(int width, int height, quint32 seed = 7)
{
    auto picture = std::make_shared<QImage>(width, height, QImage::Format_ARGB32);
    QRandomGenerator random(seed);
    for (int y = 0; y < height; ++y)
        random.fillRange(reinterpret_cast<quint32*>(picture->scanLine(y)), width);
    return picture;
}

} // namespace

TEST(VideoWriter, Mp4IsH264HighAndConvertsEachPictureOnce)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("movie.mp4"));
    ExportError error;
    auto writer = VideoWriter::open({.path = path, .width = 320, .height = 240, .format = ContainerFormat::mp4}, error);
    ASSERT_TRUE(writer) << error.description.toStdString() << " " << error.detail.toStdString();

    const Picture red = solid(Qt::red, 320, 240);
    const Picture blue = solid(Qt::blue, 320, 240);
    for (int i = 0; i < 45; ++i)
        ASSERT_TRUE(writer->appendFrame(i < 15 ? red : blue, i));
    QString text;
    ASSERT_TRUE(writer->finish(text)) << text.toStdString();
    EXPECT_EQ(writer->convertedPictures(), 2);

    const auto streams = probe(path);
    ASSERT_EQ(streams.size(), 1u);
    const StreamFacts& video = streams[0];
    EXPECT_EQ(video.codec, AV_CODEC_ID_H264);
    EXPECT_EQ(video.profile, FF_PROFILE_H264_HIGH);
    EXPECT_EQ(video.width, 320);
    EXPECT_EQ(video.height, 240);
    EXPECT_EQ(video.frameCount, 45);
    EXPECT_EQ(video.decodedFrames, 45);
    EXPECT_NEAR(video.duration, 1.5, 1.0 / 30);
    EXPECT_EQ(video.colourSpace, AVCOL_SPC_BT709);
    // Red has a high V and blue a high U: a swapped byte order would show the other way round.
    ASSERT_EQ(video.chroma.size(), 45u);
    EXPECT_GT(video.chroma.front().second, 200);
    EXPECT_LT(video.chroma.front().first, 128);
    EXPECT_GT(video.chroma.back().first, 200);
    EXPECT_LT(video.chroma.back().second, 128);
}

TEST(VideoWriter, EveryStillStartsWithAKeyframeAndLongStillsGetMore)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("movie.mp4"));
    // A 20-frame still, a 10-frame dissolve that ends on the next picture (as the exporter's do,
    // so the encoder sees no cut), and a still longer than the keyframe interval.
    const std::vector<FrameSpan> stills = {{0, 20}, {30, 300}};
    ExportError error;
    auto writer = VideoWriter::open(
        {.path = path, .width = 160, .height = 120, .format = ContainerFormat::mp4, .stills = stills}, error);
    ASSERT_TRUE(writer) << error.description.toStdString() << " " << error.detail.toStdString();
    const Picture first = noise(160, 120, 1);
    const Picture second = noise(160, 120, 2);
    for (int i = 0; i < 330; ++i) {
        Picture frame = i < 20 ? first : second;
        if (i >= 20 && i < 29) {
            auto mix = std::make_shared<QImage>(160, 120, QImage::Format_ARGB32);
            FrameKernels::blend(*first, *second, (i - 19) / 10.0, *mix);
            frame = mix;
        }
        ASSERT_TRUE(writer->appendFrame(frame, i));
    }
    QString text;
    ASSERT_TRUE(writer->finish(text)) << text.toStdString();

    const auto streams = probe(path);
    ASSERT_EQ(streams.size(), 1u);
    EXPECT_EQ(streams[0].decodedFrames, 330);
    std::vector<int64_t> inStills;
    for (const int64_t keyframe : streams[0].keyframes)
        if (keyframe < 20 || keyframe >= 30) // the encoder may add its own in the dissolve
            inStills.push_back(keyframe);
    EXPECT_EQ(inStills, (std::vector<int64_t>{0, 30, 280}));
}

TEST(VideoWriter, MovIsHevcMainTaggedHvc1WithSoundAfterTheVideo)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("movie.mov"));
    ExportError error;
    auto writer = VideoWriter::open(
        {.path = path, .width = 320, .height = 240, .format = ContainerFormat::mov, .withAudio = true}, error);
    ASSERT_TRUE(writer) << error.description.toStdString() << " " << error.detail.toStdString();

    const Picture grey = solid(Qt::gray, 320, 240);
    for (int i = 0; i < 60; ++i)
        ASSERT_TRUE(writer->appendFrame(grey, i));
    writer->finishVideo();
    // Two seconds of a 440 Hz tone at half scale, a second at a time.
    std::vector<float> second(2 * VideoWriter::sampleRate);
    for (int chunk = 0; chunk < 2; ++chunk) {
        for (int i = 0; i < VideoWriter::sampleRate; ++i) {
            const double t = double(chunk * VideoWriter::sampleRate + i) / VideoWriter::sampleRate;
            second[size_t(2 * i)] = second[size_t(2 * i + 1)] = float(0.5 * std::sin(2 * std::numbers::pi * 440 * t));
        }
        ASSERT_TRUE(
            writer->appendAudio(second.data(), VideoWriter::sampleRate, qint64(chunk) * VideoWriter::sampleRate));
    }
    QString text;
    ASSERT_TRUE(writer->finish(text)) << text.toStdString();

    const auto streams = probe(path);
    ASSERT_EQ(streams.size(), 2u);
    const StreamFacts& video = streams[0];
    EXPECT_EQ(video.codec, AV_CODEC_ID_HEVC);
    EXPECT_EQ(video.tag, MKTAG('h', 'v', 'c', '1'));
    EXPECT_EQ(video.profile, FF_PROFILE_HEVC_MAIN);
    EXPECT_EQ(video.colourSpace, AVCOL_SPC_BT709);
    EXPECT_EQ(video.decodedFrames, 60);
    const StreamFacts& audio = streams[1];
    EXPECT_EQ(audio.codec, AV_CODEC_ID_AAC);
    EXPECT_EQ(audio.sampleRate, 44100);
    EXPECT_EQ(audio.channels, 2);
    EXPECT_NEAR(audio.duration, 2.0, 0.05);
    EXPECT_NEAR(audio.decodedFrames, 2 * 44100, 2048);
    EXPECT_NEAR(audio.rms, 0.5 / std::sqrt(2.0), 0.03);
}

TEST(VideoWriter, FailuresEndInAnErrorNeverInAHang)
{
    ExportError error;
    EXPECT_FALSE(VideoWriter::open(
        {.path = QStringLiteral("/nonexistent-tallowbrook-folder/movie.mp4"), .width = 320, .height = 240}, error));
    EXPECT_EQ(error.code, 3);
    EXPECT_TRUE(error.description.startsWith(QStringLiteral("Failed to start writing: ")))
        << error.description.toStdString();

    // A full disk at the start: /dev/full takes no byte, not even the header's.
    EXPECT_FALSE(VideoWriter::open({.path = QStringLiteral("/dev/full"), .width = 320, .height = 240}, error));
    EXPECT_EQ(error.description, QStringLiteral("Failed to start writing: ") + ffmpegErrorText(AVERROR(ENOSPC)));

    // A disk that fills up on the way: the file may not grow past 16 KiB, so the header fits and
    // the frames do not.
    QTemporaryDir dir;
    QString text;
    {
        auto limited = VideoWriter::open(
            {.path = dir.filePath(QStringLiteral("limited.mp4")), .width = 320, .height = 240}, error);
        ASSERT_TRUE(limited) << error.description.toStdString();
        const FileSizeLimit limit(16 * 1024);
        const Picture noisy = noise(320, 240);
        for (int i = 0; i < 30 && limited->appendFrame(noisy, i); ++i) {
        }
        EXPECT_FALSE(limited->finish(text));
    }
    EXPECT_TRUE(text.contains(ffmpegErrorText(AVERROR(EFBIG)))) << text.toStdString();

    // A picture of the wrong size stops the run instead of being read past its end.
    auto wrongSize =
        VideoWriter::open({.path = dir.filePath(QStringLiteral("small.mp4")), .width = 320, .height = 240}, error);
    ASSERT_TRUE(wrongSize);
    EXPECT_FALSE(wrongSize->appendFrame(solid(Qt::gray, 160, 120), 0));
    EXPECT_FALSE(wrongSize->finish(text));
    EXPECT_TRUE(text.contains(QStringLiteral("160x120"))) << text.toStdString();

    // A cancel from another thread while the appender waits on a 4K encoder.
    auto slow = VideoWriter::open({.path = dir.filePath(QStringLiteral("big.mp4")),
                                   .width = 3840,
                                   .height = 2160,
                                   .preset = QStringLiteral("ultrafast"),
                                   .queueCapacity = 2},
                                  error);
    ASSERT_TRUE(slow);
    std::atomic<int> appended = 0;
    std::atomic<bool> appending = true;
    std::thread appender([&, picture = solid(Qt::darkGreen, 3840, 2160)] {
        while (slow->appendFrame(picture, appended))
            ++appended;
        appending = false;
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return appended >= 6; }, 30000));
    slow->cancel();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !appending; }, 10000));
    appender.join();
    EXPECT_FALSE(slow->appendFrame(solid(Qt::darkGreen, 3840, 2160), 1000));
    EXPECT_FALSE(slow->finish(text));
    EXPECT_EQ(text, QStringLiteral("Writing was cancelled."));
}
