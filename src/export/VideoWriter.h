#pragma once

#include "export/ExportError.h"
#include "export/ExportPlan.h"

#include <QImage>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

struct AVAudioFifo;
struct AVBufferPool;
struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVStream;

namespace tb {

struct VideoWriterSettings {
    QString path;  // written in place; the caller picks a temporary name and renames on success
    int width = 0; // even, as 4:2:0 chroma needs
    int height = 0;
    // mp4: H.264 (libx264), High profile, 50 Mbit/s. mov: HEVC (libx265), Main profile, 60 Mbit/s,
    // tagged 'hvc1' so that QuickTime-minded players take it.
    ContainerFormat format = ContainerFormat::mp4;
    bool withAudio = false;   // AAC, 44.1 kHz stereo, 128 kbit/s
    bool moving = false;      // every frame differs (Ken Burns): the encoder is tuned for motion
    QString preset = {};      // the encoder's preset; empty takes defaultTuning()'s preset and params
    QString params = {};      // x264-params / x265-params on top of a given preset
    QString interParams = {}; // with a given preset: x264 options between keyframes, as "subme=1,trellis=0"
    // Frames that repeat one picture. Each starts with a keyframe, and another follows every
    // keyframeInterval frames; in H.264 the frames between them get the tuning's inter options.
    std::vector<FrameSpan> stills = {};
    int queueCapacity = 3; // frames waiting for the encoder thread
};

// A picture of exactly the movie's size in QImage::Format_ARGB32 or _Premultiplied (B, G, R, A
// bytes on little-endian machines); other formats are accepted at the cost of a conversion.
using Picture = std::shared_ptr<const QImage>;

// Where an export's frames and sound go: the movie writer, or in a benchmark the raw frames.
class MovieSink {
public:
    virtual ~MovieSink() = default;
    // Queues one frame shown at frameIndex / 30 s. False once the sink has failed or was
    // cancelled: the caller stops appending.
    virtual bool appendFrame(const Picture& picture, qint64 frameIndex) = 0;
    virtual void finishVideo() = 0;
    virtual bool appendAudio(const float* interleaved, int frames, qint64 startFrame) = 0;
    // False with the first failure of the whole run in `error`.
    virtual bool finish(QString& error) = 0;
    // From any thread: wakes a waiting appendFrame; every later call fails.
    virtual void cancel() = 0;
};

// Encodes frames and sound into a movie file with FFmpeg. One thread (the exporter's) appends;
// the encoders and the muxer run on the writer's own thread behind a short queue, whose limit is
// the back-pressure that keeps the exporter from rendering far ahead. Only cancel() may be called
// from another thread.
class VideoWriter final : public MovieSink {
public:
    static constexpr int frameRate = 30;
    static constexpr int sampleRate = 44100;
    static constexpr int channelCount = 2;
    // The encoders' own default distance between keyframes.
    static constexpr int keyframeInterval = 250;

    // Streams, encoders, the file and its header. On failure nothing is returned and `error` holds
    // code 2 (an encoder), 3 (the file or its header) or 4 (the frame converter).
    static std::unique_ptr<VideoWriter> open(const VideoWriterSettings& settings, ExportError& error);
    // The encoder's preset and its parameters on top, chosen by measurement (bench/run_presets.sh,
    // two cores, 50 and 60 Mbit/s):
    //  - still pictures and dissolves in H.264: the bit rate is never reached (a still costs
    //    nothing after its first frame), so the quantiser sits at its floor and the encoder's
    //    mode decisions set the quality. Each picture starts with a keyframe, which its repeats
    //    copy: that alone is 2 dB closer than P-frames refining the end of a dissolve. The
    //    keyframes get "veryfast" with rate-distortion mode decision (subme=6), trellis, the
    //    diamond search and no adaptive quantisation, DCT decimation or psycho-visual weighting
    //    (which trades fidelity for apparent grain: 0.07 dB). Between keyframes, x264 zones drop
    //    to the simplest sub-pixel search and no sub-partitions: identical frames still get
    //    analysed, and this takes 30 % off the whole encode for 0.05 dB. Dropping trellis there
    //    as well saves another 15 % but doubles the dissolves' error (1.4 dB); subme=8 with
    //    trellis=2 halves the keyframes' error for a third more time.
    //  - moving pictures (Ken Burns) in H.264: every frame is new, so at 50 Mbit/s the entropy
    //    coder dominates. "ultrafast" with CAVLC but with the 8x8 transform, adaptive
    //    quantisation, the simplest sub-pixel search, B-frames and the deblocking filter back
    //    matches "superfast" in SSIM at about 80 % of its time, and "superfast" takes 40 % of
    //    "faster"'s time for 1 dB less; plain "ultrafast" loses 2.3 dB against "superfast".
    //  - HEVC: "faster" equals "medium" in SSIM at 54 % of its time; "fast" gains 0.13 dB for
    //    a third more time. At 4K the sample-adaptive offset search is the encoder's largest
    //    single cost: limiting it saves a sixth of the time for 0.3 dB, and leaving out the
    //    psycho-visual weighting (which trades fidelity for apparent grain) wins 0.1 dB back.
    struct Tuning {
        QString preset;
        QString params;      // x264-params or x265-params
        QString interParams; // x264 options between the keyframes of stills, comma-separated
    };
    static Tuning defaultTuning(ContainerFormat format, bool moving);

    ~VideoWriter() override;
    VideoWriter(const VideoWriter&) = delete;
    VideoWriter& operator=(const VideoWriter&) = delete;

    // Queues one frame shown at frameIndex / 30 s; waits while the queue is full. A picture handed
    // in again for the following frames (the same pointer) is not converted again. False once the
    // writer has failed or was cancelled: the caller stops appending.
    bool appendFrame(const Picture& picture, qint64 frameIndex) override;
    // No more frames. The video encoder drains before any sound is encoded, so the file holds the
    // video first and the sound after it.
    void finishVideo() override;
    // Interleaved float stereo at 44.1 kHz starting at startFrame / 44100 s. Holes between chunks
    // are filled with silence and overlaps dropped, so the track stays continuous.
    bool appendAudio(const float* interleaved, int frames, qint64 startFrame) override;
    // Drains both encoders, writes the index and closes the file. False with the first failure of
    // the whole run (encoder, muxer or disk) in `error`.
    bool finish(QString& error) override;
    // From any thread: wakes a waiting appendFrame, stops the encoder thread after the frame it is
    // on and closes the file. Every later call fails.
    void cancel() override;

    // Distinct pictures converted to the encoder's pixel format so far.
    int convertedPictures() const { return converted.load(); }

private:
    struct FrameFree {
        void operator()(AVFrame* frame) const;
    };
    using FramePtr = std::unique_ptr<AVFrame, FrameFree>;

    enum class JobKind : int { video = 0, endOfVideo = 1, audio = 2 };
    struct Job {
        JobKind kind = JobKind::video;
        FramePtr frame;
        std::vector<float> left; // audio, one vector per channel as the encoder takes it
        std::vector<float> right;
        qint64 audioStart = 0;
    };

    explicit VideoWriter(const VideoWriterSettings& settings);
    ExportError start();
    bool addVideoStream(QString& detail);
    bool addAudioStream(QString& detail);
    bool makePixelPool();
    static std::vector<qint64> stillKeyframes(const std::vector<FrameSpan>& stills);
    QByteArray interZones(const QString& interParams) const;
    bool isKeyframe(qint64 frameIndex);

    FramePtr convert(const QImage& picture);
    bool enqueue(Job job);
    bool accepting() const;
    void fail(const QString& text);

    void runEncoder();
    bool process(Job& job);
    bool endVideo();
    bool queueAudio(Job& job);
    bool queueSilence(qint64 frames);
    bool encodeAudio(bool includingPartial);
    bool endAudio();
    bool drain(AVCodecContext* codec, AVStream* stream, const char* what);

    void stopEncoder();
    bool closeFile(QString& error);

    const VideoWriterSettings settings;
    const std::vector<qint64> keyframes; // forced ones, in order: each still's first frame and every interval after

    // Made by open() and read-only afterwards, apart from what each thread owns below.
    AVFormatContext* format = nullptr;
    AVCodecContext* videoCodec = nullptr; // encoder thread
    AVCodecContext* audioCodec = nullptr; // encoder thread
    AVStream* videoStream = nullptr;
    AVStream* audioStream = nullptr;

    // The appending thread's.
    AVBufferPool* pixelPool = nullptr; // frames come back to it when the encoder lets go of them
    Picture lastPicture;               // kept alive so that a new picture never shares its address
    FramePtr lastFrame;
    qint64 lastFrameIndex = -1;
    size_t nextKeyframe = 0; // the first forced keyframe not before the last frame
    bool videoFinished = false;
    std::atomic<int> converted = 0;

    // The encoder thread's.
    AVPacket* packet = nullptr;
    AVAudioFifo* audioFifo = nullptr;
    qint64 audioFifoStart = 0; // time of the first sample waiting in the FIFO
    qint64 audioNext = 0;      // time of the sample after the last one received
    bool audioStarted = false;
    bool videoEnded = false;
    bool audioEnded = false;
    bool trailerWritten = false;

    // Shared between the threads — guarded by `mutex`.
    mutable std::mutex mutex;
    std::condition_variable workArrived;
    std::condition_variable spaceFreed;
    std::deque<Job> jobs;
    bool inputDone = false;
    QString firstError;
    std::atomic<bool> failed = false;    // written under `mutex`, read anywhere
    std::atomic<bool> cancelled = false; // written under `mutex`, read anywhere

    // Joining the thread and closing the file happen once, whoever gets there first (finish,
    // cancel or the destructor) — guarded by `lifecycle`.
    std::mutex lifecycle;
    std::thread encoder;
    bool fileClosed = false;
};

} // namespace tb
