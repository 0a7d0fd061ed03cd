#include "BeaconFixture.h"

#include "support/LogCapture.h"

#include <QRegularExpression>
#include <QSet>
#include <QUuid>

#include <thread>
#include <vector>

using namespace tb;
using namespace tb::test;

namespace {

struct BeaconSessionTest : BeaconFixture {};

QString field(const QJsonValue& event, const char* key) { return event[QLatin1String(key)].toString(); }

} // namespace

TEST_F(BeaconSessionTest, EventsGoOutInRecordedOrderChainedToTheOneBefore)
{
    BeaconConfig debug = config();
    debug.enableDebug = true;
    LogCapture log;
    start(debug);
    ASSERT_TRUE(received(1));

    beacon->recordEvent(QStringLiteral("first"), {{QStringLiteral("k"), QStringLiteral("v")}});
    beacon->recordEvent(QStringLiteral("second"));
    beacon->recordEvent(QString()); // nothing
    ASSERT_TRUE(settled());
    EXPECT_EQ(queued(), 0) << "two events wait for a third or the tick";
    beacon->recordEvent(QStringLiteral("third"), {}, 0);
    ASSERT_TRUE(received(2));
    const QJsonArray batch = events(server.requests()[1]);
    ASSERT_EQ(batch.size(), 3);
    const QRegularExpression idPattern(QStringLiteral(R"(^[A-Za-z0-9+/]{8}\d{13}$)"));
    QString previous;
    for (const QJsonValue& event : batch) {
        EXPECT_TRUE(idPattern.match(field(event, "id")).hasMatch()) << field(event, "id").toStdString();
        EXPECT_EQ(field(event, "peid"), previous);
        EXPECT_EQ(event[QLatin1String("count")].toInt(), 1);
        EXPECT_EQ(event[QLatin1String("dow")].toInt(), 0);
        EXPECT_EQ(event[QLatin1String("hour")].toInt(), 10);
        previous = field(event, "id");
    }
    EXPECT_EQ(eventKeys(server.requests()[1]), (QStringList{"first", "second", "third"}));
    EXPECT_EQ(batch[0][QLatin1String("segmentation")][QLatin1String("k")].toString(), QStringLiteral("v"));
    EXPECT_FALSE(batch[1].toObject().contains(QLatin1String("segmentation")));

    // Timed events keep their first start; a reserved event stays out of the chain; long keys are cut.
    beacon->startEvent(QStringLiteral("timed"));
    beacon->startEvent(QStringLiteral("timed"));
    now = now.addSecs(5);
    beacon->endEvent(QStringLiteral("timed"), {}, 1, 2.5);
    beacon->endEvent(QStringLiteral("never started"));
    beacon->recordEvent(QLatin1String(BeaconEvent::viewEvent));
    beacon->recordEvent(QString(130, QLatin1Char('k')));
    scheduler.advance(60);
    ASSERT_TRUE(received(4));
    EXPECT_EQ(server.requests()[2].value(QStringLiteral("session_duration")), QStringLiteral("60"));
    const QJsonArray later = events(server.requests()[3]);
    ASSERT_EQ(later.size(), 3);
    EXPECT_EQ(field(later[0], "key"), QStringLiteral("timed"));
    EXPECT_NEAR(later[0][QLatin1String("dur")].toDouble(), 5.0, 0.01);
    EXPECT_EQ(later[0][QLatin1String("sum")].toDouble(), 2.5);
    EXPECT_EQ(field(later[0], "peid"), previous);
    EXPECT_EQ(field(later[1], "peid"), QString());
    EXPECT_EQ(field(later[2], "peid"), field(later[0], "id"));
    EXPECT_EQ(field(later[2], "key"), QString(128, QLatin1Char('k')));

    const QStringList warnings = log.messages(LogLevel::Warning);
    EXPECT_TRUE(warnings.contains(QStringLiteral("Event with key 'timed' already started!")));
    EXPECT_TRUE(
        warnings.contains(QStringLiteral("Event with key 'never started' not started yet or cancelled/ended before!")));
    EXPECT_TRUE(
        warnings.contains(QStringLiteral("Event key length is more than the limit (128)! So, it will be truncated: ") +
                          QString(128, QLatin1Char('k')) + QLatin1Char('.')));
}

TEST_F(BeaconSessionTest, EventsFromManyThreadsFormOneChain)
{
    BeaconConfig config = this->config();
    config.eventSendThreshold = 50;
    start(config);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([this, t] {
            for (int i = 0; i < 50; ++i)
                beacon->recordEvent(QStringLiteral("t%1-%2").arg(t).arg(i));
        });
    for (std::thread& thread : threads)
        thread.join();
    scheduler.advance(60); // whatever the threshold left behind
    QList<QJsonValue> all;
    ASSERT_TRUE(QTest::qWaitFor([&] {
        all.clear();
        for (const Request& request : server.requests())
            for (const QJsonValue& event : events(request))
                all.append(event);
        return all.size() == 200;
    }));
    QString previous;
    QSet<QString> keys;
    for (const QJsonValue& event : all) {
        EXPECT_EQ(field(event, "peid"), previous);
        previous = field(event, "id");
        keys.insert(field(event, "key"));
    }
    EXPECT_EQ(keys.size(), 200);
}

TEST_F(BeaconSessionTest, ManualSessionsSendWholeSecondsAndKeepTheFraction)
{
    BeaconConfig manual = config();
    manual.manualSessionHandling = true;
    start(manual);
    ASSERT_TRUE(settled());
    EXPECT_EQ(queued(), 0) << "no automatic session";
    beacon->beginSession();
    for (int i = 0; i < 2; ++i) {
        scheduler.advance(10.4);
        beacon->updateSession();
    }
    scheduler.advance(10.4);
    beacon->endSession();
    ASSERT_TRUE(received(4));
    const QList<Request> requests = server.requests();
    EXPECT_EQ(requests[0].value(QStringLiteral("begin_session")), QStringLiteral("1"));
    EXPECT_EQ(requests[1].value(QStringLiteral("session_duration")), QStringLiteral("10"));
    EXPECT_EQ(requests[2].value(QStringLiteral("session_duration")), QStringLiteral("10")); // 10.8
    EXPECT_EQ(requests[3].value(QStringLiteral("session_duration")), QStringLiteral("11")); // 11.2
    EXPECT_EQ(requests[3].value(QStringLiteral("end_session")), QStringLiteral("1"));
}

TEST_F(BeaconSessionTest, StartChecksItsConfigurationOnceAndKeepsTheDeviceID)
{
    beacon = makeBeacon();
    BeaconConfig bad = config();
    for (const QString& key : {QString(), QStringLiteral("YOUR_APP_KEY")}) {
        bad.appKey = key;
        EXPECT_THROW(beacon->startWithConfig(bad), BeaconAppKeyNotSetException);
    }
    bad = config();
    bad.host.clear();
    try {
        beacon->startWithConfig(bad);
        ADD_FAILURE() << "an empty host starts the client";
    } catch (const BeaconHostNotSetException& error) {
        EXPECT_STREQ(error.what(), "host property on BeaconConfig object is not set");
    }
    EXPECT_FALSE(beacon->isStarted());
    beacon->recordEvent(QStringLiteral("dropped"));

    BeaconConfig good = config();
    good.host += QLatin1Char('/');
    beacon->startWithConfig(good);
    BeaconConfig other = config();
    other.appKey = QStringLiteral("other-key");
    beacon->startWithConfig(other);
    beacon->beginSession(); // the client's own sessions: the program's calls do nothing
    beacon->endSession();
    beacon->applicationWillTerminate(); // sends what was recorded: nothing, and no session end
    ASSERT_TRUE(received(1));
    const Request begin = server.requests()[0];
    EXPECT_EQ(begin.path, QStringLiteral("/i"));
    EXPECT_EQ(begin.value(QStringLiteral("app_key")), QStringLiteral("test-key"));
    const QString deviceID = begin.value(QStringLiteral("device_id"));
    EXPECT_FALSE(QUuid::fromString(deviceID).isNull()) << deviceID.toStdString();

    // A later run over the same settings reports the same device.
    beacon.reset();
    settings = std::make_unique<SettingsStore>(dir.filePath(QStringLiteral("t.conf")));
    start(config());
    ASSERT_TRUE(received(2));
    EXPECT_EQ(server.requests()[1].value(QStringLiteral("device_id")), deviceID);
}

TEST_F(BeaconSessionTest, NothingIsRecordedOrSentWithoutConsent)
{
    BeaconConfig consent = config();
    consent.requiresConsent = true;
    consent.eventSendThreshold = 1;
    consent.enableDebug = true;
    LogCapture log;
    start(consent);
    beacon->recordEvent(QStringLiteral("unseen"));
    scheduler.advance(60);
    ASSERT_TRUE(settled());
    EXPECT_EQ(queued(), 0);
    EXPECT_TRUE(log.contains(LogLevel::Info, QStringLiteral("Events consent not given! Event will not be recorded.")));

    beacon->giveConsentForFeatures({BeaconFeature::Sessions, BeaconFeature::Events});
    beacon->recordEvent(QStringLiteral("seen"));
    ASSERT_TRUE(received(3));
    const QList<Request> requests = server.requests();
    EXPECT_EQ(QJsonDocument::fromJson(requests[0].value(QStringLiteral("consent")).toUtf8()).object(),
              (QJsonObject{{"sessions", true}, {"events", true}}));
    EXPECT_EQ(requests[1].value(QStringLiteral("begin_session")), QStringLiteral("1"));
    EXPECT_EQ(eventKeys(requests[2]), QStringList{"seen"});
}

TEST_F(BeaconSessionTest, TheQueueOutlivesTheProgram)
{
    server.stop();
    start(config());
    beacon->recordEvent(QStringLiteral("a"));
    beacon->recordEvent(QStringLiteral("b"));
    ASSERT_TRUE(settled());
    beacon->applicationWillTerminate();
    EXPECT_EQ(queued(), 2);
    beacon.reset();

    ASSERT_TRUE(server.start());
    now = now.addSecs(3600);
    start(config());
    ASSERT_TRUE(received(3));
    const QList<Request> requests = server.requests();
    EXPECT_EQ(requests[0].value(QStringLiteral("begin_session")), QStringLiteral("1"));
    EXPECT_EQ(requests[0].value(QStringLiteral("rr")), QStringLiteral("2"));
    EXPECT_EQ(eventKeys(requests[1]), (QStringList{"a", "b"}));
    EXPECT_EQ(requests[2].value(QStringLiteral("begin_session")), QStringLiteral("1"));
    EXPECT_EQ(requests[2].value(QStringLiteral("timestamp")).toLongLong(), now.toMSecsSinceEpoch());
}
