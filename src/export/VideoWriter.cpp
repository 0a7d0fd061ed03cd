#include "VideoWriter.h"

#include "export/FrameKernels.h"
#include "media/ClipProbe.h"

#include <algorithm>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/buffer.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
}

namespace tb {

namespace {

constexpr AVPixelFormat moviePixelFormat = AV_PIX_FMT_YUV420P;
// The encoders' vector code reads whole 32-byte rows.
constexpr int planeAlignment = 32;

struct CodecChoice {
    const char* encoder;
    const char* profile;
    int64_t bitRate; // the same for every size, so a 720p movie gets a 4K movie's rate
    const char* muxer;
};

CodecChoice codecFor(ContainerFormat format)
{
    if (format == ContainerFormat::mov)
        return {"libx265", "main", 60'000'000, "mov"};
    return {"libx264", "high", 50'000'000, "mp4"};
}

bool isQtPixelLayout(QImage::Format format)
{
    return format == QImage::Format_ARGB32 || format == QImage::Format_ARGB32_Premultiplied ||
           format == QImage::Format_RGB32;
}

} // namespace

void VideoWriter::FrameFree::operator()(AVFrame* frame) const { av_frame_free(&frame); }

VideoWriter::Tuning VideoWriter::defaultTuning(ContainerFormat format, bool moving)
{
    if (format == ContainerFormat::mov)
        return {QStringLiteral("faster"), QStringLiteral("limit-sao=1:psy-rd=0"), {}};
    if (moving)
        return {QStringLiteral("ultrafast"), QStringLiteral("8x8dct=1:aq-mode=1:subme=1:bframes=3:deblock=0,0"), {}};
    return {QStringLiteral("veryfast"), QStringLiteral("subme=6:trellis=1:me=dia:aq-mode=0:no-dct-decimate=1:psy=0"),
            QStringLiteral("subme=1,partitions=none")};
}

VideoWriter::VideoWriter(const VideoWriterSettings& settings)
    : settings(settings), keyframes(stillKeyframes(settings.stills))
{
}

std::unique_ptr<VideoWriter> VideoWriter::open(const VideoWriterSettings& settings, ExportError& error)
{
    quietFFmpeg();
    std::unique_ptr<VideoWriter> writer(new VideoWriter(settings));
    const ExportError failure = writer->start();
    if (failure.code != 0) {
        error = failure;
        return nullptr;
    }
    return writer;
}

ExportError VideoWriter::start()
{
    const CodecChoice choice = codecFor(settings.format);
    const QByteArray path = settings.path.toUtf8();
    const auto startFailure = [](int code) {
        const QString text = ffmpegErrorText(code);
        return ExportError{3, QStringLiteral("Failed to start writing: ") + text, text};
    };

    int result = avformat_alloc_output_context2(&format, nullptr, choice.muxer, path.constData());
    if (result < 0 || !format)
        return startFailure(result < 0 ? result : AVERROR(ENOMEM));

    QString detail;
    if (!addVideoStream(detail))
        return {2, QStringLiteral("Cannot add video writer input."), detail};
    if (settings.withAudio && !addAudioStream(detail))
        return {2, QStringLiteral("Cannot add audio writer input."), detail};

    if (!(format->oformat->flags & AVFMT_NOFILE)) {
        result = avio_open(&format->pb, path.constData(), AVIO_FLAG_WRITE);
        if (result < 0)
            return startFailure(result);
    }
    // No interleaving options and no faststart: packets go straight to the file as they come
    // (av_write_frame), and moving the index to the front would mean writing the movie twice.
    result = avformat_write_header(format, nullptr);
    if (result < 0)
        return startFailure(result);

    if (!makePixelPool())
        return {4, QStringLiteral("Failed to create pixel buffer"), {}};

    encoder = std::thread([this] { runEncoder(); });
    return {};
}

bool VideoWriter::addVideoStream(QString& detail)
{
    const CodecChoice choice = codecFor(settings.format);
    const AVCodec* codec = avcodec_find_encoder_by_name(choice.encoder);
    if (!codec) {
        detail = QStringLiteral("FFmpeg has no %1 encoder").arg(QLatin1String(choice.encoder));
        return false;
    }
    videoStream = avformat_new_stream(format, nullptr);
    videoCodec = avcodec_alloc_context3(codec);
    if (!videoStream || !videoCodec) {
        detail = ffmpegErrorText(AVERROR(ENOMEM));
        return false;
    }
    videoCodec->width = settings.width;
    videoCodec->height = settings.height;
    videoCodec->pix_fmt = moviePixelFormat;
    videoCodec->time_base = AVRational{1, frameRate};
    videoCodec->framerate = AVRational{frameRate, 1};
    videoCodec->bit_rate = choice.bitRate;
    // FFmpeg's default of one thread would keep x264 to a single core; 0 lets it use them all.
    videoCodec->thread_count = 0;
    // Players guess BT.601 for small pictures and BT.709 for large ones; saying it outright (and
    // converting with the same matrix) keeps colours the same at every size.
    videoCodec->color_primaries = AVCOL_PRI_BT709;
    videoCodec->color_trc = AVCOL_TRC_BT709;
    videoCodec->colorspace = AVCOL_SPC_BT709;
    videoCodec->color_range = AVCOL_RANGE_MPEG;
    if (format->oformat->flags & AVFMT_GLOBALHEADER)
        videoCodec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (settings.format == ContainerFormat::mov)
        videoCodec->codec_tag = MKTAG('h', 'v', 'c', '1');

    const Tuning tuning = defaultTuning(settings.format, settings.moving);
    const bool ownTuning = settings.preset.isEmpty();
    const QByteArray preset = (ownTuning ? tuning.preset : settings.preset).toUtf8();
    QByteArray params = (ownTuning ? tuning.params : settings.params).toUtf8();
    int result = av_opt_set(videoCodec->priv_data, "preset", preset.constData(), 0);
    if (result >= 0)
        result = av_opt_set(videoCodec->priv_data, "profile", choice.profile, 0);
    // x265 reports its settings on standard error unless told otherwise.
    if (settings.format == ContainerFormat::mov)
        params = params.isEmpty() ? QByteArray("log-level=error") : "log-level=error:" + params;
    else if (const QByteArray zones = interZones(ownTuning ? tuning.interParams : settings.interParams);
             !zones.isEmpty())
        params = params.isEmpty() ? "zones=" + zones : params + ":zones=" + zones;
    if (result >= 0 && !params.isEmpty())
        result =
            av_opt_set(videoCodec->priv_data, settings.format == ContainerFormat::mov ? "x265-params" : "x264-params",
                       params.constData(), 0);
    if (result >= 0)
        result = avcodec_open2(videoCodec, codec, nullptr);
    if (result >= 0)
        result = avcodec_parameters_from_context(videoStream->codecpar, videoCodec);
    if (result < 0) {
        detail = QStringLiteral("%1 (%2 at %3x%4, preset %5)")
                     .arg(ffmpegErrorText(result), QLatin1String(choice.encoder))
                     .arg(settings.width)
                     .arg(settings.height)
                     .arg(QString::fromUtf8(preset));
        return false;
    }
    videoStream->time_base = videoCodec->time_base;
    videoStream->avg_frame_rate = videoCodec->framerate;
    return true;
}

bool VideoWriter::addAudioStream(QString& detail)
{
    const AVCodec* codec = avcodec_find_encoder_by_name("aac");
    if (!codec) {
        detail = QStringLiteral("FFmpeg has no aac encoder");
        return false;
    }
    audioStream = avformat_new_stream(format, nullptr);
    audioCodec = avcodec_alloc_context3(codec);
    audioFifo = av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, channelCount, sampleRate);
    if (!audioStream || !audioCodec || !audioFifo) {
        detail = ffmpegErrorText(AVERROR(ENOMEM));
        return false;
    }
    audioCodec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    audioCodec->sample_rate = sampleRate;
    av_channel_layout_default(&audioCodec->ch_layout, channelCount);
    audioCodec->bit_rate = 128'000;
    audioCodec->time_base = AVRational{1, sampleRate};
    if (format->oformat->flags & AVFMT_GLOBALHEADER)
        audioCodec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    int result = avcodec_open2(audioCodec, codec, nullptr);
    if (result >= 0)
        result = avcodec_parameters_from_context(audioStream->codecpar, audioCodec);
    if (result < 0) {
        detail = ffmpegErrorText(result);
        return false;
    }
    audioStream->time_base = audioCodec->time_base;
    return true;
}

// x264's zones between the stills' keyframes, each option set applying to its frames as the
// encoder reaches them. A keyframe sets the picture that all its repeats show, so it gets the
// thorough analysis; the repeats cost nothing to code but are analysed all the same, and the
// dissolves between stills change a little at a time.
QByteArray VideoWriter::interZones(const QString& interParams) const
{
    if (interParams.isEmpty() || keyframes.empty())
        return {};
    const QByteArray options = interParams.toUtf8();
    const FrameSpan& lastStill = settings.stills.back();
    QByteArray zones;
    for (size_t i = 0; i < keyframes.size(); ++i) {
        const qint64 first = keyframes[i] + 1;
        const qint64 last = (i + 1 < keyframes.size() ? keyframes[i + 1] : lastStill.first + lastStill.count) - 1;
        if (last < first)
            continue;
        if (!zones.isEmpty())
            zones += '/';
        zones += QByteArray::number(first) + ',' + QByteArray::number(last) + ',' + options;
    }
    return zones;
}

std::vector<qint64> VideoWriter::stillKeyframes(const std::vector<FrameSpan>& stills)
{
    std::vector<qint64> frames;
    for (const FrameSpan& still : stills)
        for (qint64 frame = still.first; frame < still.first + still.count; frame += keyframeInterval)
            frames.push_back(frame);
    return frames;
}

bool VideoWriter::isKeyframe(qint64 frameIndex)
{
    while (nextKeyframe < keyframes.size() && keyframes[nextKeyframe] < frameIndex)
        ++nextKeyframe;
    return nextKeyframe < keyframes.size() && keyframes[nextKeyframe] == frameIndex;
}

bool VideoWriter::makePixelPool()
{
    const int frameBytes = av_image_get_buffer_size(moviePixelFormat, settings.width, settings.height, planeAlignment);
    if (frameBytes > 0)
        pixelPool = av_buffer_pool_init(size_t(frameBytes), nullptr);
    packet = av_packet_alloc();
    return pixelPool && packet;
}

VideoWriter::~VideoWriter()
{
    cancel();

    jobs.clear();
    lastFrame.reset();
    av_buffer_pool_uninit(&pixelPool); // frees itself once the last frame comes back
    av_packet_free(&packet);
    if (audioFifo)
        av_audio_fifo_free(audioFifo);
    avcodec_free_context(&videoCodec);
    avcodec_free_context(&audioCodec);
    avformat_free_context(format);
}

bool VideoWriter::accepting() const { return !failed && !cancelled; }

void VideoWriter::fail(const QString& text)
{
    {
        std::lock_guard lock(mutex);
        if (firstError.isEmpty())
            firstError = text;
        failed = true;
    }
    spaceFreed.notify_all();
    workArrived.notify_all();
}

bool VideoWriter::appendFrame(const Picture& picture, qint64 frameIndex)
{
    if (!accepting())
        return false;
    if (videoFinished) {
        fail(QStringLiteral("A frame came after the end of the video."));
        return false;
    }
    if (!picture || picture->width() != settings.width || picture->height() != settings.height) {
        const QSize size = picture ? picture->size() : QSize();
        fail(QStringLiteral("A picture of %1x%2 does not fit the movie's %3x%4.")
                 .arg(size.width())
                 .arg(size.height())
                 .arg(settings.width)
                 .arg(settings.height));
        return false;
    }
    if (frameIndex <= lastFrameIndex) {
        fail(QStringLiteral("Frame %1 came after frame %2.").arg(frameIndex).arg(lastFrameIndex));
        return false;
    }
    if (picture != lastPicture || !lastFrame) {
        lastFrame.reset();
        lastPicture.reset();
        lastFrame = convert(*picture);
        if (!lastFrame)
            return false;
        lastPicture = picture;
    }
    // A new reference to the same pixels: the encoder may hold several, and nobody writes into
    // them, because every distinct picture gets a buffer of its own from the pool.
    FramePtr frame(av_frame_clone(lastFrame.get()));
    if (!frame) {
        fail(QStringLiteral("Failed to create pixel buffer"));
        return false;
    }
    frame->pts = frameIndex;
    frame->pict_type = isKeyframe(frameIndex) ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    lastFrameIndex = frameIndex;
    Job job;
    job.frame = std::move(frame);
    return enqueue(std::move(job));
}

VideoWriter::FramePtr VideoWriter::convert(const QImage& picture)
{
    QImage copy;
    const QImage* source = &picture;
    if (!isQtPixelLayout(picture.format())) {
        copy = picture.convertToFormat(QImage::Format_ARGB32);
        source = &copy;
    }
    FramePtr frame(av_frame_alloc());
    AVBufferRef* buffer = av_buffer_pool_get(pixelPool);
    if (!frame || !buffer) {
        av_buffer_unref(&buffer);
        fail(QStringLiteral("Failed to create pixel buffer"));
        return nullptr;
    }
    frame->buf[0] = buffer;
    frame->format = moviePixelFormat;
    frame->width = settings.width;
    frame->height = settings.height;
    av_image_fill_arrays(frame->data, frame->linesize, buffer->data, moviePixelFormat, settings.width, settings.height,
                         planeAlignment);

    FrameKernels::toYuv420(*source, frame->data, frame->linesize);
    ++converted;
    return frame;
}

bool VideoWriter::enqueue(Job job)
{
    std::unique_lock lock(mutex);
    const size_t capacity = size_t(std::max(1, settings.queueCapacity));
    spaceFreed.wait(lock, [&] { return failed || cancelled || jobs.size() < capacity; });
    if (failed || cancelled)
        return false;
    jobs.push_back(std::move(job));
    lock.unlock();
    workArrived.notify_one();
    return true;
}

void VideoWriter::finishVideo()
{
    if (videoFinished)
        return;
    videoFinished = true;
    lastPicture.reset();
    lastFrame.reset();
    Job job;
    job.kind = JobKind::endOfVideo;
    enqueue(std::move(job));
}

bool VideoWriter::appendAudio(const float* interleaved, int frames, qint64 startFrame)
{
    if (!accepting())
        return false;
    if (!audioCodec) {
        fail(QStringLiteral("Sound came for a movie without a sound track."));
        return false;
    }
    if (frames < 0 || (frames > 0 && !interleaved) || startFrame < 0) {
        fail(QStringLiteral("A sound chunk of %1 frames at %2 is not valid.").arg(frames).arg(startFrame));
        return false;
    }
    finishVideo();
    if (frames == 0)
        return true;
    Job job;
    job.kind = JobKind::audio;
    job.audioStart = startFrame;
    job.left.resize(size_t(frames));
    job.right.resize(size_t(frames));
    for (int i = 0; i < frames; ++i) {
        job.left[size_t(i)] = interleaved[2 * i];
        job.right[size_t(i)] = interleaved[2 * i + 1];
    }
    return enqueue(std::move(job));
}

bool VideoWriter::finish(QString& error)
{
    finishVideo();
    {
        std::lock_guard lock(mutex);
        inputDone = true;
    }
    workArrived.notify_all();
    stopEncoder();

    QString closeError;
    const bool closed = closeFile(closeError);
    if (!closed)
        fail(closeError);

    std::lock_guard lock(mutex);
    if (cancelled && firstError.isEmpty()) {
        error = QStringLiteral("Writing was cancelled.");
        return false;
    }
    if (failed || cancelled || !trailerWritten) {
        error = firstError.isEmpty() ? QStringLiteral("The movie was not finished.") : firstError;
        return false;
    }
    error.clear();
    return true;
}

void VideoWriter::cancel()
{
    {
        std::lock_guard lock(mutex);
        cancelled = true;
    }
    workArrived.notify_all();
    spaceFreed.notify_all();
    stopEncoder();
    QString ignored;
    closeFile(ignored);
}

void VideoWriter::stopEncoder()
{
    std::lock_guard lock(lifecycle);
    if (encoder.joinable())
        encoder.join();
}

bool VideoWriter::closeFile(QString& error)
{
    std::lock_guard lock(lifecycle);
    if (fileClosed || !format || !format->pb)
        return true;
    fileClosed = true;
    // avio_close() flushes but forgets a failed flush; the context keeps it until then.
    avio_flush(format->pb);
    int result = format->pb->error;
    const int closeResult = avio_closep(&format->pb);
    if (result >= 0)
        result = closeResult;
    if (result < 0) {
        error = QStringLiteral("Cannot write the movie file: ") + ffmpegErrorText(result);
        return false;
    }
    return true;
}

// --- The encoder thread ---

void VideoWriter::runEncoder()
{
    for (;;) {
        Job job;
        {
            std::unique_lock lock(mutex);
            workArrived.wait(lock, [&] { return failed || cancelled || inputDone || !jobs.empty(); });
            if (failed || cancelled)
                return;
            if (jobs.empty())
                break;
            job = std::move(jobs.front());
            jobs.pop_front();
        }
        spaceFreed.notify_one();
        if (!process(job))
            return;
    }
    if (!endVideo() || !endAudio())
        return;
    const int result = av_write_trailer(format);
    if (result < 0) {
        fail(QStringLiteral("Cannot finish the movie file: ") + ffmpegErrorText(result));
        return;
    }
    trailerWritten = true;
}

bool VideoWriter::process(Job& job)
{
    switch (job.kind) {
    case JobKind::video: {
        const int result = avcodec_send_frame(videoCodec, job.frame.get());
        job.frame.reset();
        if (result < 0) {
            fail(QStringLiteral("The video encoder failed: ") + ffmpegErrorText(result));
            return false;
        }
        return drain(videoCodec, videoStream, "video");
    }
    case JobKind::endOfVideo:
        return endVideo();
    case JobKind::audio:
        return endVideo() && queueAudio(job);
    }
    return false;
}

bool VideoWriter::endVideo()
{
    if (videoEnded)
        return true;
    videoEnded = true;
    const int result = avcodec_send_frame(videoCodec, nullptr);
    if (result < 0) {
        fail(QStringLiteral("The video encoder failed: ") + ffmpegErrorText(result));
        return false;
    }
    return drain(videoCodec, videoStream, "video");
}

bool VideoWriter::queueAudio(Job& job)
{
    if (!audioStarted) {
        audioStarted = true;
        audioFifoStart = audioNext = job.audioStart;
    }
    if (job.audioStart > audioNext && !queueSilence(job.audioStart - audioNext))
        return false;
    const qint64 frames = qint64(job.left.size());
    const qint64 overlap = std::min(audioNext - job.audioStart, frames);
    if (overlap >= frames)
        return true;
    float* planes[channelCount] = {job.left.data() + overlap, job.right.data() + overlap};
    const int count = int(frames - overlap);
    const int written = av_audio_fifo_write(audioFifo, reinterpret_cast<void**>(planes), count);
    if (written != count) {
        fail(QStringLiteral("The audio encoder failed: ") + ffmpegErrorText(written < 0 ? written : AVERROR(ENOMEM)));
        return false;
    }
    audioNext += count;
    return encodeAudio(false);
}

bool VideoWriter::queueSilence(qint64 frames)
{
    // In encoder-sized steps, so that a long hole never sits in the FIFO as a whole.
    const int step = audioCodec->frame_size > 0 ? audioCodec->frame_size : 1024;
    std::vector<float> zeros(size_t(step), 0.0f);
    float* planes[channelCount] = {zeros.data(), zeros.data()};
    while (frames > 0) {
        const int count = int(std::min<qint64>(frames, step));
        const int written = av_audio_fifo_write(audioFifo, reinterpret_cast<void**>(planes), count);
        if (written != count) {
            fail(QStringLiteral("The audio encoder failed: ") +
                 ffmpegErrorText(written < 0 ? written : AVERROR(ENOMEM)));
            return false;
        }
        frames -= count;
        audioNext += count;
        if (!encodeAudio(false))
            return false;
    }
    return true;
}

bool VideoWriter::encodeAudio(bool includingPartial)
{
    // The AAC encoder takes exactly frame_size samples per frame, except for a shorter last one.
    const int frameSize = audioCodec->frame_size > 0 ? audioCodec->frame_size : 1024;
    while (av_audio_fifo_size(audioFifo) >= frameSize || (includingPartial && av_audio_fifo_size(audioFifo) > 0)) {
        if (cancelled)
            return false;
        const int count = std::min(av_audio_fifo_size(audioFifo), frameSize);
        FramePtr frame(av_frame_alloc());
        int result = frame ? 0 : AVERROR(ENOMEM);
        if (result >= 0) {
            frame->nb_samples = count;
            frame->format = audioCodec->sample_fmt;
            frame->sample_rate = audioCodec->sample_rate;
            result = av_channel_layout_copy(&frame->ch_layout, &audioCodec->ch_layout);
        }
        if (result >= 0)
            result = av_frame_get_buffer(frame.get(), 0);
        if (result >= 0) {
            result = av_audio_fifo_read(audioFifo, reinterpret_cast<void**>(frame->data), count);
            result = result == count ? 0 : AVERROR_BUG;
        }
        if (result >= 0) {
            frame->pts = audioFifoStart;
            audioFifoStart += count;
            result = avcodec_send_frame(audioCodec, frame.get());
        }
        if (result < 0) {
            fail(QStringLiteral("The audio encoder failed: ") + ffmpegErrorText(result));
            return false;
        }
        if (!drain(audioCodec, audioStream, "audio"))
            return false;
    }
    return true;
}

bool VideoWriter::endAudio()
{
    if (!audioCodec || audioEnded)
        return true;
    audioEnded = true;
    if (!encodeAudio(true))
        return false;
    const int result = avcodec_send_frame(audioCodec, nullptr);
    if (result < 0) {
        fail(QStringLiteral("The audio encoder failed: ") + ffmpegErrorText(result));
        return false;
    }
    return drain(audioCodec, audioStream, "audio");
}

bool VideoWriter::drain(AVCodecContext* codec, AVStream* stream, const char* what)
{
    for (;;) {
        if (cancelled)
            return false;
        int result = avcodec_receive_packet(codec, packet);
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return true;
        if (result < 0) {
            fail(QStringLiteral("The %1 encoder failed: ").arg(QLatin1String(what)) + ffmpegErrorText(result));
            return false;
        }
        // x264 and x265 leave the duration open; without it the last frame would last no time.
        if (codec == videoCodec && packet->duration == 0)
            packet->duration = 1;
        av_packet_rescale_ts(packet, codec->time_base, stream->time_base);
        packet->stream_index = stream->index;
        // Straight to the file: with the sound coming only after the last frame, an interleaving
        // muxer would hold the whole video in memory waiting for it.
        result = av_write_frame(format, packet);
        av_packet_unref(packet);
        if (result < 0) {
            fail(QStringLiteral("Cannot write the movie file: ") + ffmpegErrorText(result));
            return false;
        }
    }
}

} // namespace tb
