#include "AudioManager.h"

#include "core/Logger.h"

#include <QMetaObject>

#include <algorithm>

namespace tb {

AudioManager::AudioManager(AudioPlayers& players, QObject* parent) : QObject(parent), players(players) {}

AudioManager::~AudioManager() = default;

void AudioManager::setAudioTracks(QList<AudioTrack> newTracks)
{
    tracks = std::move(newTracks);
    Q_EMIT audioTracksChanged();
    if (tracks.isEmpty())
        cleanup();
}

void AudioManager::setVolume(double volume)
{
    level = std::clamp(volume, 0.0, 1.0);
    if (audioPlayer)
        audioPlayer->setVolume(level);
    Q_EMIT volumeChanged();
}

void AudioManager::setLooping(bool loop)
{
    if (looping == loop)
        return;
    looping = loop;
    Q_EMIT isLoopingChanged();
}

void AudioManager::setCurrentTrackIndex(int index)
{
    if (trackIndex == index)
        return;
    trackIndex = index;
    Q_EMIT currentTrackIndexChanged();
}

void AudioManager::setPlaying(bool on)
{
    if (playing == on)
        return;
    playing = on;
    Q_EMIT isPlayingChanged();
}

AudioTrack AudioManager::makeTrack(const QUrl& url) const { return AudioTrack::fromFile(url, players.duration(url)); }

void AudioManager::loadTrack(int index)
{
    if (index < 0 || index >= tracks.size())
        return;
    const AudioTrack& track = tracks[index];
    QString error;
    std::unique_ptr<AudioPlayer> player = players.open(track.url, error);
    if (!player) {
        logError(QStringLiteral("Failed to load audio track: ") + error);
        return;
    }
    // The old player goes without being stopped first.
    audioPlayer = std::move(player);
    audioPlayer->prepareToPlay();
    audioPlayer->setVolume(level);
    audioPlayer->setEndHandler([this, filename = track.filename](AudioPlayerEnd end, const QString& reason) {
        audioPlayerDidFinishPlaying(end, reason, filename);
    });
    setCurrentTrackIndex(index);
    logInfo(QStringLiteral("Audio track prepared: ") + track.filename);
}

void AudioManager::play()
{
    if (tracks.isEmpty()) {
        logInfo(QStringLiteral("Cannot play: no audio tracks available"));
        return;
    }
    if (!audioPlayer)
        loadTrack(trackIndex);
    // With a failed load there is no player, yet the playlist counts as playing, as it always has.
    if (audioPlayer)
        audioPlayer->play();
    setPlaying(true);
    logInfo(QStringLiteral("Audio playback started"));
}

void AudioManager::stop()
{
    stopPlayer();
    logInfo(QStringLiteral("Audio playback stopped"));
}

void AudioManager::stopPlayer()
{
    if (audioPlayer)
        audioPlayer->stop();
    setPlaying(false);
}

void AudioManager::pausePlayer()
{
    if (audioPlayer)
        audioPlayer->pause();
    setPlaying(false);
}

void AudioManager::nextTrack()
{
    if (tracks.isEmpty())
        return;
    const bool wasPlaying = playing;
    stop();
    setCurrentTrackIndex(int((trackIndex + 1) % tracks.size()));
    loadTrack(trackIndex);
    if (wasPlaying)
        play();
}

void AudioManager::playTrack(int index)
{
    if (index < 0 || index >= tracks.size())
        return;
    stop();
    loadTrack(index);
    play();
}

void AudioManager::cleanup()
{
    stop();
    audioPlayer.reset();
    setCurrentTrackIndex(0);
    logInfo(QStringLiteral("Audio player cleaned up"));
}

void AudioManager::prepareForNewSlideshow()
{
    stop();
    if (!tracks.isEmpty()) {
        setCurrentTrackIndex(0);
        loadTrack(0);
    } else {
        cleanup();
    }
    logInfo(QStringLiteral("Audio manager prepared for new slideshow"));
}

void AudioManager::removeAllTracks()
{
    stop();
    setAudioTracks({});
}

void AudioManager::audioPlayerDidFinishPlaying(AudioPlayerEnd end, const QString& error, const QString& filename)
{
    if (end == AudioPlayerEnd::failedBeforePlaying) {
        // Going on would reach the same file, or another that is gone too, at once and forever:
        // the playlist stops here instead.
        QMetaObject::invokeMethod(
            this,
            [this, error, filename] {
                stopPlayer();
                logError(QStringLiteral("Audio playback stopped: the track ") + filename +
                         QStringLiteral(" could not be played: ") + error);
            },
            Qt::QueuedConnection);
        return;
    }
    // Any other end, an error included, is the track's end. The decision is taken now, with the
    // list as it stands; the action follows in its own call.
    const bool lastTrack = trackIndex >= tracks.size() - 1;
    if (lastTrack && looping) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                setCurrentTrackIndex(0);
                loadTrack(0);
                play();
            },
            Qt::QueuedConnection);
    } else if (lastTrack) {
        // The player stays loaded on the last track: a later play() repeats it.
        QMetaObject::invokeMethod(
            this, [this] { setPlaying(false); }, Qt::QueuedConnection);
    } else {
        QMetaObject::invokeMethod(
            this, [this] { nextTrack(); }, Qt::QueuedConnection);
    }
}

} // namespace tb
