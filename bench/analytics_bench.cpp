// The analytics client while its server is away: 5,000 events recorded one per turn of the event
// loop (three to a request, so over 1,600 requests) against a server that refuses every
// connection, then the server comes back and the queue drains. Reports the queue's peak and final
// length, whether the newest requests survived in order, the size of Beacon.dat, the worst stall
// of the GUI thread (10 ms probe) in each phase, and the drain time.
// Usage: analytics_bench [events] [milliseconds between events]
#include "StallProbe.h"
#include "analytics/Beacon.h"
#include "core/QtScheduler.h"
#include "core/RandomSource.h"
#include "core/SettingsStore.h"
#include "support/RecordingHttpServer.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrlQuery>

#include <algorithm>
#include <cstdio>

using namespace tb;

namespace {

// The event numbers a queued request carries, in order; none for a session request.
QList<int> eventNumbers(const QString& query)
{
    QList<int> numbers;
    const QString events = QUrlQuery(query).queryItemValue(QStringLiteral("events"), QUrl::FullyDecoded);
    for (const QJsonValue& event : QJsonDocument::fromJson(events.toUtf8()).array())
        numbers.append(event[QLatin1String("segmentation")][QLatin1String("n")].toString().toInt());
    return numbers;
}

// Runs the event loop until done() holds.
template <typename Condition> void runUntil(Condition done)
{
    while (!done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int eventCount = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 5000;
    const int pace = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 1;

    QTemporaryDir work;
    SettingsStore settings(work.filePath(QStringLiteral("settings.conf")));
    QtScheduler scheduler;
    SystemRandomSource random;
    test::RecordingHttpServer server;
    server.stop();

    Beacon beacon({scheduler, [] { return QDateTime::currentDateTime(); }, settings, work.path(), QStringLiteral("1.0"),
                   BeaconScreen{QSizeF(1920, 1080), 1.0}, random});
    BeaconConfig config;
    config.host = server.url();
    config.appKey = QStringLiteral("7c3e91ab24d05f6e8b1a4d2c9f07e36b51c8d4a0");
    config.eventSendThreshold = 3;
    beacon.startWithConfig(config);
    BeaconPersistency& queue = beacon.persistency();
    BeaconConnectionManager& connections = beacon.connectionManager();

    // Recording, one event per turn of the loop, with the server refusing.
    StallProbe recordingProbe;
    recordingProbe.start();
    int recorded = 0;
    int peak = 0;
    QElapsedTimer clock;
    clock.start();
    QTimer pacer;
    QObject::connect(&pacer, &QTimer::timeout, [&] {
        beacon.recordEvent(QStringLiteral("slideshowStarted"), {{QStringLiteral("n"), QString::number(recorded)}});
        ++recorded;
        peak = std::max(peak, queue.remainingRequestCount());
        if (recorded == eventCount) {
            pacer.stop();
            connections.sendEvents(); // the rest, as the session timer's next tick would
        }
    });
    pacer.start(pace);
    runUntil([&] { return recorded == eventCount && !connections.isRequestInFlight(); });
    const double recordingSeconds = double(clock.elapsed()) / 1000;
    const double recordingStall = recordingProbe.worstMs();
    peak = std::max(peak, queue.remainingRequestCount());

    // What waits: the newest requests, each holding the next three events.
    const QStringList waiting = queue.queuedRequests();
    QList<int> numbers;
    for (const QString& request : waiting)
        numbers += eventNumbers(request);
    bool inOrder = !numbers.isEmpty() && numbers.last() == eventCount - 1;
    for (qsizetype i = 1; i < numbers.size(); ++i)
        inOrder = inOrder && numbers[i] == numbers[i - 1] + 1;
    queue.saveToFileSync();
    const qint64 fileSize = QFileInfo(queue.filePath()).size();

    // The server returns; the next tick of the session timer would proceed, as this does.
    StallProbe drainProbe;
    drainProbe.start();
    server.start();
    clock.restart();
    connections.proceedOnQueue();
    runUntil([&] { return queue.remainingRequestCount() == 0 && !connections.isRequestInFlight(); });
    const double drainSeconds = double(clock.elapsed()) / 1000;
    QList<int> delivered;
    for (const test::RecordingHttpServer::Request& request : server.requests())
        delivered += eventNumbers(QString::fromUtf8(request.query));

    std::printf("events recorded: %d, one each %d ms, in %.1f s, server down; queue peak %d, at rest %lld\n",
                eventCount, pace, recordingSeconds, peak, static_cast<long long>(waiting.size()));
    std::printf("waiting events: %lld, newest last and in order: %s; Beacon.dat %.1f KiB\n",
                static_cast<long long>(numbers.size()), inOrder ? "yes" : "NO", double(fileSize) / 1024);
    std::printf("drain: %lld requests in %.2f s, events delivered as queued: %s\n",
                static_cast<long long>(server.requests().size()), drainSeconds, delivered == numbers ? "yes" : "NO");
    std::printf("worst GUI stall: %.1f ms recording, %.1f ms draining\n", recordingStall, drainProbe.worstMs());
    beacon.applicationWillTerminate();
    return inOrder && delivered == numbers ? 0 : 1;
}
