#include "audio/AudioManager.h"
#include "audio/AudioOptionsView.h"
#include "support/AccessibilityWalk.h"
#include "support/AudioDoubles.h"
#include "support/LogCapture.h"
#include "support/ScriptedUserDialogs.h"

#include <QCoreApplication>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

struct Playlist : ::testing::Test {
    FakeAudioPlayers players;
    AudioManager audio{players};
    ScriptedUserDialogs dialogs;
    LogCapture log;

    void setTracks(std::initializer_list<const char*> names)
    {
        QList<AudioTrack> tracks;
        for (const char* name : names)
            tracks.append(audio.makeTrack(QUrl::fromLocalFile(QStringLiteral("/music/") + QLatin1String(name))));
        audio.setAudioTracks(tracks);
    }
    // The current player reaches its end; the playlist acts in a call of its own.
    void endTrack(AudioPlayerEnd how = AudioPlayerEnd::finished)
    {
        ASSERT_NE(players.current, nullptr);
        players.current->end(how);
        QCoreApplication::sendPostedEvents();
    }
    QStringList lines() const { return log.all(); }
    QString currentName() const { return audio.audioTracks()[audio.currentTrackIndex()].filename; }
};

} // namespace

TEST_F(Playlist, EndsOfTracksFollowTheListAndTheLoopFlag)
{
    setTracks({"a.mp3"});
    EXPECT_EQ(audio.audioTracks()[0].path, QStringLiteral("/music"));
    audio.play();
    endTrack();
    EXPECT_EQ(players.opened, 2) << "a looping single track is loaded afresh";
    EXPECT_TRUE(audio.isPlaying());
    EXPECT_EQ(players.journal.mid(2), (QStringList{"prepare a.mp3", "play a.mp3"}));

    audio.setLooping(false);
    const QStringList before = lines();
    endTrack();
    EXPECT_FALSE(audio.isPlaying());
    EXPECT_TRUE(audio.hasPlayer()) << "the last track stays loaded";
    EXPECT_EQ(lines(), before) << "the end of the list is silent";

    // Three tracks: the end of the first plays the second; a selection made meanwhile decides
    // what follows.
    setTracks({"a.mp3", "b.mp3", "c.mp3"});
    audio.setLooping(true);
    audio.playTrack(0);
    endTrack();
    EXPECT_EQ(currentName(), QStringLiteral("b.mp3"));
    EXPECT_EQ(players.journal.last(), QStringLiteral("play b.mp3"));
    AudioOptionsView panel(audio, dialogs);
    panel.selectTrack(0);
    EXPECT_EQ(players.current->name, QStringLiteral("b.mp3")) << "selecting loads nothing";
    endTrack();
    EXPECT_EQ(currentName(), QStringLiteral("b.mp3")) << "the track after the selected one";
    panel.selectTrack(2);
    endTrack();
    EXPECT_EQ(currentName(), QStringLiteral("a.mp3")) << "the last track loops to the first";
    EXPECT_TRUE(audio.isPlaying());
}

TEST_F(Playlist, BadFilesNeitherCrashNorSpin)
{
    audio.play();
    EXPECT_EQ(lines(), QStringList{"Cannot play: no audio tracks available"});
    EXPECT_FALSE(audio.isPlaying());

    audio.setVolume(0.3);
    setTracks({"a.mp3", "gone.mp3"});
    players.unopenable.insert(QStringLiteral("gone.mp3"));
    audio.play();
    EXPECT_DOUBLE_EQ(players.current->volume, 0.3) << "the stored volume reaches the next player";
    audio.setVolume(0.5);
    EXPECT_DOUBLE_EQ(players.current->volume, 0.5);

    // The second track cannot be opened: the first player stays and plays again, while the
    // index has moved on.
    endTrack();
    EXPECT_TRUE(log.contains(LogLevel::Error, "Failed to load audio track: cannot open gone.mp3"));
    EXPECT_EQ(audio.currentTrackIndex(), 1);
    EXPECT_EQ(players.journal.last(), QStringLiteral("play a.mp3"));
    EXPECT_TRUE(audio.isPlaying());

    // A track that fails as soon as it is played stops the playlist, with one line naming it.
    const int errorsBefore = int(log.messages(LogLevel::Error).size());
    endTrack(AudioPlayerEnd::failedBeforePlaying);
    EXPECT_FALSE(audio.isPlaying());
    const QStringList errors = log.messages(LogLevel::Error).mid(errorsBefore);
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains(QStringLiteral("a.mp3"))) << errors[0].toStdString();

    // Playing with a file that never opens: counted as playing, as it always has been.
    audio.removeAllTracks();
    setTracks({"gone.mp3"});
    audio.play();
    EXPECT_FALSE(audio.hasPlayer());
    EXPECT_TRUE(audio.isPlaying());
    EXPECT_EQ(lines().last(), QStringLiteral("Audio playback started"));
}

TEST_F(Playlist, ThePanelMovesAndDeletesAroundTheCurrentTrack)
{
    AudioOptionsView panel(audio, dialogs);
    dialogs.openAnswers.append({"/music/a.mp3", "/music/b.mp3", "/music/c.mp3", "/music/d.mp3"});
    panel.addAudioTracks();
    ASSERT_EQ(audio.trackCount(), 4);
    EXPECT_FALSE(audio.hasPlayer()) << "adding loads nothing";
    EXPECT_EQ(lines().last(), QStringLiteral("Added 4 audio tracks. Total tracks: 4"));
    ASSERT_EQ(dialogs.prompts.size(), 1);
    EXPECT_TRUE(dialogs.prompts[0].open.allowsMultipleSelection);
    for (const char* pattern : {"*.mp3", "*.wav", "*.aac", "*.aiff", "*.m4a", "*.flac", "*.ogg"})
        EXPECT_TRUE(dialogs.prompts[0].open.nameFilters.join(' ').contains(QLatin1String(pattern))) << pattern;
    panel.addAudioTracks(); // cancelled
    EXPECT_EQ(audio.trackCount(), 4);

    panel.selectTrack(1); // b
    panel.moveTrackUp(1);
    EXPECT_EQ(currentName(), QStringLiteral("b.mp3"));
    EXPECT_EQ(audio.currentTrackIndex(), 0);
    panel.moveTrackUp(0);   // nothing above the first
    panel.moveTrackDown(1); // a goes below c, away from the current track
    EXPECT_EQ(audio.currentTrackIndex(), 0);
    panel.moveTrackUp(1); // c passes b
    EXPECT_EQ(currentName(), QStringLiteral("b.mp3"));
    EXPECT_EQ(audio.currentTrackIndex(), 1);
    EXPECT_TRUE(lines().contains(QStringLiteral("Moved track up from index 1 to 0")));
    EXPECT_TRUE(lines().contains(QStringLiteral("Moved track down from index 1 to 2")));

    // Deleting another track keeps the current one; deleting the playing one plays the first.
    panel.deleteTrack(0);
    EXPECT_EQ(currentName(), QStringLiteral("b.mp3"));
    audio.play();
    panel.deleteTrack(audio.currentTrackIndex());
    EXPECT_EQ(audio.currentTrackIndex(), 0);
    EXPECT_EQ(players.journal.last(), QStringLiteral("play ") + audio.audioTracks()[0].filename);
    EXPECT_EQ(lines().mid(lines().size() - 2), (QStringList{"Audio playback started", "Deleted track at index 0"}));

    // An index left past the end falls back to the last track.
    audio.setCurrentTrackIndex(7);
    panel.deleteTrack(0);
    EXPECT_EQ(audio.currentTrackIndex(), 0);
    panel.deleteTrack(0);
    EXPECT_EQ(audio.trackCount(), 0);
    EXPECT_EQ(audio.currentTrackIndex(), 0);
    EXPECT_FALSE(audio.hasPlayer()) << "emptying the list drops the player";
    EXPECT_FALSE(audio.isPlaying());
    EXPECT_EQ(lines().last(), QStringLiteral("Deleted track at index 0"));

    EXPECT_EQ(AudioOptionsView::durationText(3600.0), QStringLiteral("60:00"));
    EXPECT_EQ(AudioOptionsView::durationText(125.9), QStringLiteral("2:05"));
}

// The panel's own buttons, a row's included, reach the playlist; every control has a name.
TEST_F(Playlist, ThePanelsControlsAreNamedAndWork)
{
    setTracks({"a.mp3", "b.mp3"});
    AudioOptionsView panel(audio, dialogs);
    int checked = 0;
    EXPECT_EQ(unnamedFocusableControls(&panel, checked), QStringList());
    EXPECT_GE(checked, 10);

    QToolButton* down = nullptr;
    for (QToolButton* button : panel.findChildren<QToolButton*>()) {
        if (button->toolTip() == QLatin1String("Move down") && button->parentWidget()->accessibleName() == "a.mp3")
            down = button;
    }
    ASSERT_NE(down, nullptr);
    down->click(); // rebuilds the rows from inside the click
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(audio.audioTracks()[0].filename, QStringLiteral("b.mp3"));
    EXPECT_EQ(lines().last(), QStringLiteral("Moved track down from index 0 to 1"));
}
