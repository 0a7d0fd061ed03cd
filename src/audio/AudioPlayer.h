#pragma once

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace tb {

// How a player's playback came to an end.
enum class AudioPlayerEnd {
    finished = 0,
    // An error after some of the track had played: counted as the track's end.
    failed = 1,
    // An error before any of it played since the last play(): playing on would only fail again.
    failedBeforePlaying = 2,
};

// A player for one audio file: plays it once, never loops by itself, and reports the end of
// playback once per play through the end handler.
class AudioPlayer {
public:
    using EndHandler = std::function<void(AudioPlayerEnd end, const QString& error)>;

    virtual ~AudioPlayer() = default;
    virtual void prepareToPlay() = 0;
    virtual void play() = 0;
    // Keeps the position; play() goes on from it.
    virtual void pause() = 0;
    virtual void stop() = 0;
    // Linear, 0.0 to 1.0.
    virtual void setVolume(double volume) = 0;

    void setEndHandler(EndHandler handler) { endHandler = std::move(handler); }

protected:
    void reportEnd(AudioPlayerEnd end, const QString& error = {})
    {
        if (endHandler)
            endHandler(end, error);
    }

private:
    EndHandler endHandler;
};

// Opens players and reads durations; the program's is Qt Multimedia over FFmpeg probes, tests
// have their own.
class AudioPlayers {
public:
    virtual ~AudioPlayers() = default;
    // A player for the file, or nothing with `error` saying why the file cannot be played.
    virtual std::unique_ptr<AudioPlayer> open(const QUrl& url, QString& error) = 0;
    // The file's length in seconds, from its container, without decoding.
    virtual std::optional<double> duration(const QUrl& url) = 0;
};

} // namespace tb
