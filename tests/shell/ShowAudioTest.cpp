#include "ShellFixture.h"

#include "audio/AudioManager.h"
#include "playback/PlayerWindow.h"
#include "playback/SessionControl.h"
#include "shell/ScreenPlayerPresenter.h"
#include "support/LogCapture.h"

#include <QTest>

using namespace tb;
using namespace tb::test;

namespace {

struct ShowAudioCase {
    const char* name;
    int displayMode;
    bool manual;
    int tracks;
    QStringList start, pause, resume, escape;
};

const QStringList prepared{"Audio playback stopped", "Audio track prepared: a.wav",
                           "Audio manager prepared for new slideshow", "Audio playback started"};
const QStringList paused{"Audio playback paused"};
const QStringList started{"Audio playback started"};
const QStringList noTracks{"Cannot play: no audio tracks available"};

} // namespace

// What a show does with the playlist, step by step, through the main window's real session and
// player window: single shows touch the playlist whatever it holds, grids only when it has tracks.
TEST_F(ShellFixture, ShowsDriveTheirWindowsPlaylistAtEachStep)
{
    const QStringList pausedStartedStopped = paused + started + QStringList{"Audio playback stopped"};
    const ShowAudioCase cases[] = {
        {"single without tracks", 0, false, 0, {}, paused, noTracks, noTracks + QStringList{"Audio playback stopped"}},
        {"single with tracks", 0, false, 2, prepared, paused, started, pausedStartedStopped},
        {"manual single with tracks", 0, true, 2, prepared, paused, started, pausedStartedStopped},
        {"grid without tracks", 2, false, 0, {}, {}, {}, {}},
        {"grid with tracks", 2, false, 2, prepared, paused, started, paused},
    };
    ContentView& window = openWindow();
    for (int n = 0; n < 4; ++n)
        window.queue().append({makeItem(QUrl::fromLocalFile(savePicture(QString::number(n) + ".png")))});
    settings.set(Settings::startInWindowedMode, true);
    AudioManager& audio = window.audio();
    for (const ShowAudioCase& c : cases) {
        SCOPED_TRACE(c.name);
        QList<AudioTrack> tracks;
        for (const char* name : {"a.wav", "b.wav"}) {
            if (tracks.size() < c.tracks)
                tracks.append(audio.makeTrack(QUrl::fromLocalFile(dir.filePath(QLatin1String(name)))));
        }
        audio.setAudioTracks(tracks);
        settings.set(Settings::displayMode, c.displayMode);
        settings.set(Settings::isManualMode, c.manual);

        auto audioLines = [](const LogCapture& log) {
            QStringList lines = log.all();
            lines.removeIf([](const QString& line) { return !line.contains(QLatin1String("udio")); });
            return lines;
        };
        auto step = [&](const QStringList& expected, const std::function<void()>& action) {
            LogCapture log;
            action();
            EXPECT_EQ(audioLines(log), expected);
        };
        PlayerWindow* player = nullptr;
        step(c.start, [&] {
            window.session().startCommand();
            player = window.presenter().currentWindow();
        });
        ASSERT_NE(player, nullptr);
        step(c.pause, [&] { QTest::keyClick(player, Qt::Key_Space); });
        step(c.resume, [&] { QTest::keyClick(player, Qt::Key_Space); });
        step(c.escape, [&] { QTest::keyClick(player, Qt::Key_Escape); });
        EXPECT_FALSE(audio.isPlaying());
        EXPECT_FALSE(slideshowManager.isSlideshowRunning());
        QTRY_VERIFY(window.presenter().currentWindow() == nullptr);
    }
}
