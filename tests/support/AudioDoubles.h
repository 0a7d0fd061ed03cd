#pragma once

#include "audio/AudioPlayer.h"

#include <QSet>
#include <QStringList>

#include <memory>

namespace tb::test {

// Players that record what is asked of them in one shared journal ("play a.mp3", "stop a.mp3").
// Files named in `unopenable` fail to open; a test ends a track with finish() or fail().
class FakeAudioPlayers final : public AudioPlayers {
public:
    class Player final : public AudioPlayer {
    public:
        Player(FakeAudioPlayers& owner, QString name) : owner(owner), name(std::move(name)) {}
        ~Player() override
        {
            if (owner.current == this)
                owner.current = nullptr;
        }
        void prepareToPlay() override { owner.journal.append(QStringLiteral("prepare ") + name); }
        void play() override { owner.journal.append(QStringLiteral("play ") + name); }
        void pause() override { owner.journal.append(QStringLiteral("pause ") + name); }
        void stop() override { owner.journal.append(QStringLiteral("stop ") + name); }
        void setVolume(double value) override { volume = value; }
        void end(AudioPlayerEnd how) { reportEnd(how, QStringLiteral("decoder gave up")); }

        FakeAudioPlayers& owner;
        const QString name;
        double volume = -1.0;
    };

    std::unique_ptr<AudioPlayer> open(const QUrl& url, QString& error) override
    {
        if (unopenable.contains(url.fileName())) {
            error = QStringLiteral("cannot open ") + url.fileName();
            return nullptr;
        }
        auto player = std::make_unique<Player>(*this, url.fileName());
        current = player.get();
        ++opened;
        return player;
    }
    std::optional<double> duration(const QUrl& url) override
    {
        return unopenable.contains(url.fileName()) ? std::nullopt : std::optional<double>(125.0);
    }

    // The newest player still alive, as the playlist's own would be.
    Player* current = nullptr;
    int opened = 0;
    QStringList journal;
    QSet<QString> unopenable;
};

} // namespace tb::test
