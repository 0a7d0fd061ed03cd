#include "QtAudioPlayers.h"

#include "media/AudioProbe.h"
#include "media/ClipProbe.h"

#include <QAudioOutput>
#include <QFileInfo>
#include <QMediaPlayer>
#include <QMetaObject>

#include <utility>

namespace tb {

namespace {

class QtAudioPlayer final : public AudioPlayer {
public:
    explicit QtAudioPlayer(const QUrl& url) : url(url)
    {
        player.setAudioOutput(&output);
        // Once: the playlist decides what follows a track.
        player.setLoops(QMediaPlayer::Once);
        QObject::connect(&player, &QMediaPlayer::mediaStatusChanged, &player, [this](QMediaPlayer::MediaStatus status) {
            if (status == QMediaPlayer::EndOfMedia)
                end(AudioPlayerEnd::finished, {});
        });
        QObject::connect(&player, &QMediaPlayer::errorOccurred, &player,
                         [this](QMediaPlayer::Error, const QString& text) { fail(text); });
        QObject::connect(&player, &QMediaPlayer::positionChanged, &player, [this](qint64 position) {
            if (position > 0)
                progressed = true;
        });
    }

    void prepareToPlay() override
    {
        if (player.source().isEmpty())
            player.setSource(url);
    }

    void play() override
    {
        prepareToPlay();
        if (player.playbackState() != QMediaPlayer::PausedState)
            progressed = false;
        reported = false;
        started = true;
        // A file that went away since it was opened: the backend may still hold it open and
        // play it again, or fail after a while; the playlist hears at once. So it does of an
        // error the backend found while preparing.
        QString error = std::exchange(preparationError, QString());
        if (error.isEmpty() && !QFileInfo(url.toLocalFile()).isReadable())
            error = QStringLiteral("The file is no longer there");
        if (!error.isEmpty()) {
            QMetaObject::invokeMethod(
                &player, [this, error] { fail(error); }, Qt::QueuedConnection);
            return;
        }
        player.play();
    }

    void pause() override { player.pause(); }
    void stop() override { player.stop(); }
    void setVolume(double volume) override { output.setVolume(float(volume)); }

private:
    void fail(const QString& text)
    {
        if (!started) {
            preparationError = text;
            return;
        }
        end(progressed ? AudioPlayerEnd::failed : AudioPlayerEnd::failedBeforePlaying, text);
    }

    // The backend may report one failure in several ways; the playlist hears of each play's end
    // once.
    void end(AudioPlayerEnd how, const QString& text)
    {
        if (reported)
            return;
        reported = true;
        reportEnd(how, text);
    }

    const QUrl url;
    QMediaPlayer player;
    QAudioOutput output;
    bool progressed = false;
    bool reported = false;
    bool started = false;
    QString preparationError;
};

} // namespace

std::unique_ptr<AudioPlayer> QtAudioPlayers::open(const QUrl& url, QString& error)
{
    error = audioOpenError(url.toLocalFile());
    if (!error.isEmpty())
        return nullptr;
    return std::make_unique<QtAudioPlayer>(url);
}

std::optional<double> QtAudioPlayers::duration(const QUrl& url) { return clipDuration(url.toLocalFile()); }

} // namespace tb
