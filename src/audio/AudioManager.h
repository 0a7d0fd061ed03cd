#pragma once

#include "AudioPlayer.h"
#include "AudioTrack.h"
#include "SlideshowAudio.h"

#include <QList>
#include <QObject>

#include <memory>

namespace tb {

// The background playlist of one main window: tracks played one after another behind a show,
// with a volume, a loop flag and the index of the current track. Everything runs on the GUI
// thread; the end of a track is decided when it is reported and acted on in a queued call.
class AudioManager final : public QObject, public SlideshowAudio {
    Q_OBJECT
public:
    explicit AudioManager(AudioPlayers& players, QObject* parent = nullptr);
    ~AudioManager() override;

    const QList<AudioTrack>& audioTracks() const { return tracks; }
    // An empty list runs cleanup().
    void setAudioTracks(QList<AudioTrack> newTracks);
    bool isPlaying() const override { return playing; }
    double volume() const { return level; }
    // Also sets the player's volume, when there is one; else the next loadTrack applies it.
    void setVolume(double volume);
    bool isLooping() const { return looping; }
    void setLooping(bool loop);
    int currentTrackIndex() const { return trackIndex; }
    void setCurrentTrackIndex(int index);
    bool hasPlayer() const { return bool(audioPlayer); }

    // A track for the file, its duration read from the file; nothing is loaded.
    AudioTrack makeTrack(const QUrl& url) const;

    void loadTrack(int index);
    void play() override;
    void stop();
    void nextTrack();
    void playTrack(int index);
    void cleanup();
    void prepareForNewSlideshow() override;
    void removeAllTracks();

    // What a show asks.
    int trackCount() const override { return int(tracks.size()); }
    void pausePlayer() override;
    void stopPlayer() override;

Q_SIGNALS:
    void audioTracksChanged();
    void isPlayingChanged();
    void volumeChanged();
    void isLoopingChanged();
    void currentTrackIndexChanged();

private:
    void audioPlayerDidFinishPlaying(AudioPlayerEnd end, const QString& error, const QString& filename);
    void setPlaying(bool on);

    AudioPlayers& players;
    QList<AudioTrack> tracks;
    bool playing = false;
    double level = 0.8;
    bool looping = true;
    int trackIndex = 0;
    std::unique_ptr<AudioPlayer> audioPlayer;
};

} // namespace tb
