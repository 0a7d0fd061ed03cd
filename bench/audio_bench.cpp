// The background playlist: adding many tracks (a duration probe each, nothing decoded) and the
// GUI thread's longest stall while tracks change under a playing list.
// Usage: audio_bench <folder of audio files>
#include "StallProbe.h"
#include "audio/AudioManager.h"
#include "audio/QtAudioPlayers.h"
#include "core/Logger.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    if (argc < 2) {
        std::fprintf(stderr, "usage: audio_bench <folder>\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    tb::QtAudioPlayers players;
    tb::AudioManager audio(players);

    QElapsedTimer clock;
    clock.start();
    QList<tb::AudioTrack> tracks;
    for (const QString& name : names)
        tracks.append(audio.makeTrack(QUrl::fromLocalFile(folder.filePath(name))));
    audio.setAudioTracks(tracks);
    const double addMs = double(clock.nsecsElapsed()) / 1e6;

    // Twenty track changes while the list plays, half a second apart; each change is timed on
    // its own and the stall probe sees everything else the player does meanwhile.
    StallProbe probe;
    QList<double> changes;
    int left = 20;
    QTimer change;
    QObject::connect(&change, &QTimer::timeout, [&] {
        QElapsedTimer one;
        one.start();
        audio.nextTrack();
        changes.append(double(one.nsecsElapsed()) / 1e6);
        if (--left == 0)
            QTimer::singleShot(500, &app, &QCoreApplication::quit);
    });
    audio.play();
    probe.start();
    change.start(500);
    app.exec();
    audio.stop();
    std::sort(changes.begin(), changes.end());
    std::printf("added %lld tracks in %.1f ms; track change median %.1f ms, worst %.1f ms; worst GUI stall %.1f ms\n",
                static_cast<long long>(tracks.size()), addMs, changes[changes.size() / 2], changes.last(),
                probe.worstMs());
    return 0;
}
