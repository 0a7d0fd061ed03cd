#include "audio/QtAudioPlayers.h"
#include "audio/AudioManager.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

// A mono 16-bit PCM WAV of a quiet tone.
void writeWav(const QString& path, double seconds)
{
    const int rate = 8000;
    const int samples = int(rate * seconds);
    QByteArray pcm(samples * 2, Qt::Uninitialized);
    for (int i = 0; i < samples; ++i)
        qToLittleEndian<qint16>(qint16((i / 8 % 2) ? 2000 : -2000), pcm.data() + 2 * i);
    QByteArray wav;
    auto u32 = [&wav](quint32 v) { wav.append(reinterpret_cast<const char*>(&v), 4); };
    auto u16 = [&wav](quint16 v) { wav.append(reinterpret_cast<const char*>(&v), 2); };
    wav.append("RIFF");
    u32(quint32(36 + pcm.size()));
    wav.append("WAVEfmt ");
    u32(16);
    u16(1); // PCM
    u16(1); // mono
    u32(rate);
    u32(rate * 2);
    u16(2);
    u16(16);
    wav.append("data");
    u32(quint32(pcm.size()));
    wav.append(pcm);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(wav);
}

struct RealPlayers : ::testing::Test {
    QTemporaryDir dir;
    QtAudioPlayers players;
    AudioManager audio{players};
    LogCapture log;

    QUrl wav(const char* name, double seconds)
    {
        const QString path = dir.filePath(QLatin1String(name));
        writeWav(path, seconds);
        return QUrl::fromLocalFile(path);
    }
    QStringList prepared() const
    {
        QStringList names = log.messages(LogLevel::Info);
        names.removeIf([](const QString& line) { return !line.startsWith(QLatin1String("Audio track prepared: ")); });
        return names;
    }
};

} // namespace

TEST_F(RealPlayers, TwoTracksPlayInTurnAndLoop)
{
    const QUrl a = wav("a.wav", 0.3);
    const QUrl b = wav("b.wav", 0.3);
    audio.setAudioTracks({audio.makeTrack(a), audio.makeTrack(b)});
    ASSERT_TRUE(audio.audioTracks()[0].duration);
    EXPECT_NEAR(*audio.audioTracks()[0].duration, 0.3, 0.01);
    audio.play();
    QTRY_VERIFY_WITH_TIMEOUT(prepared().size() >= 3, 20000);
    EXPECT_EQ(prepared().mid(0, 3), (QStringList{"Audio track prepared: a.wav", "Audio track prepared: b.wav",
                                                 "Audio track prepared: a.wav"}));
    EXPECT_TRUE(log.messages(LogLevel::Error).isEmpty()) << log.messages(LogLevel::Error).join('\n').toStdString();
    audio.stop();
}

TEST_F(RealPlayers, VanishedAndFakeFilesEndPlaybackWithAFewLines)
{
    const QString text = dir.filePath(QStringLiteral("notes.mp3"));
    QFile file(text);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("these are not the sounds you are looking for\n");
    file.close();
    audio.setAudioTracks({audio.makeTrack(QUrl::fromLocalFile(text))});
    EXPECT_FALSE(audio.audioTracks()[0].duration);
    audio.loadTrack(0);
    ASSERT_EQ(log.messages(LogLevel::Error).size(), 1);
    EXPECT_TRUE(log.messages(LogLevel::Error)[0].startsWith(QLatin1String("Failed to load audio track: ")));
    EXPECT_FALSE(audio.hasPlayer());

    // Both files of a looping list go while the first plays.
    const QUrl a = wav("a.wav", 0.5);
    const QUrl b = wav("b.wav", 0.5);
    audio.setAudioTracks({audio.makeTrack(a), audio.makeTrack(b)});
    audio.play();
    ASSERT_TRUE(QFile::remove(a.toLocalFile()));
    ASSERT_TRUE(QFile::remove(b.toLocalFile()));
    QTRY_VERIFY_WITH_TIMEOUT(!audio.isPlaying(), 20000);
    EXPECT_LE(log.all().size(), 14) << log.all().join('\n').toStdString();
    const QStringList errors = log.messages(LogLevel::Error);
    EXPECT_TRUE(errors.last().contains(QLatin1String("a.wav"))) << errors.join('\n').toStdString();
}
