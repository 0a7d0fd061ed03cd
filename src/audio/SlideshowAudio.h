#pragma once

namespace tb {

// What a show asks of the background playlist. The playlist writes its own log lines for
// starting playback; the players write the pause and stop lines.
class SlideshowAudio {
public:
    virtual ~SlideshowAudio() = default;
    virtual int trackCount() const = 0;
    virtual bool isPlaying() const = 0;
    virtual void prepareForNewSlideshow() = 0;
    virtual void play() = 0;
    // Pause or stop the player and clear isPlaying.
    virtual void pausePlayer() = 0;
    virtual void stopPlayer() = 0;
};

} // namespace tb
