#include "BeaconFixture.h"

#include "support/LogCapture.h"

#include <QCryptographicHash>
#include <QRegularExpression>

using namespace tb;
using namespace tb::test;

namespace {

struct BeaconConnectionTest : BeaconFixture {};

const QStringList essentials{"app_key", "device_id", "t", "timestamp", "hour", "dow", "tz", "sdk_version", "sdk_name"};

qint64 timestampOf(const Request& request) { return request.value(QStringLiteral("timestamp")).toLongLong(); }

} // namespace

TEST_F(BeaconConnectionTest, RequestsCarryTheirParametersInOrderAndTimestampsKeepRising)
{
    BeaconConfig withMetric = config();
    withMetric.customMetrics = {{QStringLiteral("edition"), QStringLiteral("home & office")}};
    start(withMetric);
    ASSERT_TRUE(received(1));
    const Request begin = server.requests()[0];
    EXPECT_EQ(begin.method, "GET");
    EXPECT_EQ(begin.path, QStringLiteral("/i"));
    EXPECT_EQ(begin.keys(), (essentials + QStringList{"begin_session", "metrics", "av", "rr"}));
    const QList<std::pair<QString, QString>> expected{
        {"app_key", "test-key"},
        {"device_id", *settings->stringForKey(QStringLiteral("kBeaconStoredDeviceIDKey"))},
        {"t", "2"},
        {"timestamp", QString::number(now.toMSecsSinceEpoch())},
        {"hour", "10"},
        {"dow", "0"}, // Sunday
        {"tz", "-300"},
        {"sdk_version", "1.0"},
        {"sdk_name", "tallowbrook-cpp"},
        {"begin_session", "1"},
        {"av", "2.5.1"},
        {"rr", "0"},
    };
    for (const auto& [key, value] : expected)
        EXPECT_EQ(begin.value(key), value) << key.toStdString();
    const QJsonObject metrics = QJsonDocument::fromJson(begin.value(QStringLiteral("metrics")).toUtf8()).object();
    const QList<std::pair<QString, QString>> expectedMetrics{
        {"_resolution", "2880x1800"}, {"_density", "@2x"},       {"_os", "Linux"},
        {"_device_type", "desktop"},  {"_app_version", "2.5.1"}, {"edition", "home & office"},
    };
    for (const auto& [key, value] : expectedMetrics)
        EXPECT_EQ(metrics[key].toString(), value) << key.toStdString();
    EXPECT_FALSE(metrics[QLatin1String("_device")].toString().isEmpty());

    // The system clock steps back an hour: what follows still comes later.
    now = now.addSecs(-3600);
    beacon->recordEvent(QStringLiteral("afterTheStep"));
    scheduler.advance(60);
    ASSERT_TRUE(received(3));
    const Request update = server.requests()[1];
    const Request sent = server.requests()[2];
    EXPECT_EQ(update.keys(), (essentials + QStringList{"session_duration", "av", "rr"}));
    EXPECT_EQ(update.value(QStringLiteral("session_duration")), QStringLiteral("60"));
    EXPECT_EQ(update.value(QStringLiteral("hour")), QStringLiteral("9"));
    EXPECT_EQ(update.value(QStringLiteral("rr")), QStringLiteral("0")) << "counted as it goes, before the events join";
    EXPECT_EQ(sent.keys(), (essentials + QStringList{"events", "av", "rr"}));
    const qint64 eventTime = qint64(events(sent)[0][QLatin1String("timestamp")].toDouble());
    EXPECT_LT(timestampOf(begin), eventTime);
    EXPECT_LT(eventTime, timestampOf(update));
    EXPECT_LT(timestampOf(update), timestampOf(sent));
}

TEST_F(BeaconConnectionTest, ChecksumCoversWhatIsSentAndLongQueriesGoByPost)
{
    BeaconConfig salted = config();
    salted.secretSalt = QStringLiteral("pepper");
    salted.eventSendThreshold = 1;
    salted.maxValueLength = 10000;
    random.fixed = 0; // event ids of one length, so a query's length follows the value's
    start(salted);
    ASSERT_TRUE(received(1));
    auto sendValue = [&](int length) {
        beacon->recordEvent(QStringLiteral("size"), {{QStringLiteral("v"), QString(length, QLatin1Char('x'))}});
        const int count = int(server.requests().size()) + 1;
        EXPECT_TRUE(received(count));
        return server.requests().value(count - 1);
    };
    sendValue(1); // the first event has no previous event id; the rest have one of equal length
    const int base = int(sendValue(100).query.size()) - 100;
    const Request longestGet = sendValue(2048 - base);
    EXPECT_EQ(longestGet.method, "GET");
    EXPECT_EQ(longestGet.query.size(), 2048);
    const Request shortestPost = sendValue(2049 - base);
    EXPECT_EQ(shortestPost.method, "POST");
    EXPECT_EQ(shortestPost.path, QStringLiteral("/i"));
    EXPECT_EQ(shortestPost.query.size(), 2049);
    EXPECT_EQ(events(shortestPost)[0][QLatin1String("segmentation")][QLatin1String("v")].toString().size(),
              2049 - base);

    // The server recomputes each checksum from the query it received.
    const QRegularExpression tail(QStringLiteral("&checksum256=([0-9a-f]{64})$"));
    for (const Request& request : server.requests()) {
        const QRegularExpressionMatch match = tail.match(QString::fromLatin1(request.query));
        ASSERT_TRUE(match.hasMatch()) << request.query.toStdString();
        const QByteArray signedPart = request.query.left(match.capturedStart()) + "pepper";
        EXPECT_EQ(match.captured(1),
                  QString::fromLatin1(QCryptographicHash::hash(signedPart, QCryptographicHash::Sha256).toHex()));
    }
}

TEST_F(BeaconConnectionTest, AFailedRequestStaysFirstUntilTheServerConfirmsIt)
{
    using Reply = RecordingHttpServer::Reply;
    server.script({Reply::answer(500, R"({"result":"x"})"), Reply::answer(200, "{}"), Reply::answer(200, "not json")});
    // Then connections closed without an answer (Qt itself may try a GET again first).
    server.setDefaultReply(Reply::close());
    BeaconConfig debug = config();
    debug.enableDebug = true;
    LogCapture log;
    start(debug);
    for (int attempt = 1; attempt <= 3; ++attempt) {
        ASSERT_TRUE(received(attempt));
        EXPECT_EQ(queued(), attempt) << "a failure keeps the request, and each tick adds one";
        scheduler.advance(60); // the next tick sends the same first request again
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return server.requests().size() > 3; }));
    ASSERT_TRUE(settled());
    EXPECT_EQ(queued(), 4);

    const QList<Request> failed = server.requests();
    for (const Request& request : failed) {
        EXPECT_EQ(request.value(QStringLiteral("begin_session")), QStringLiteral("1"));
        EXPECT_EQ(timestampOf(request), timestampOf(failed[0]));
    }
    server.setDefaultReply({});
    server.clearRequests();
    scheduler.advance(60);
    ASSERT_TRUE(received(5));
    EXPECT_EQ(queued(), 0);
    const QList<Request> requests = server.requests();
    EXPECT_EQ(timestampOf(requests[0]), timestampOf(failed[0]));
    for (int i = 1; i < 5; ++i) {
        EXPECT_EQ(requests[i].value(QStringLiteral("session_duration")), QStringLiteral("60"));
        EXPECT_LT(timestampOf(requests[i - 1]), timestampOf(requests[i]));
    }
    const QStringList warnings = log.messages(LogLevel::Warning);
    EXPECT_TRUE(warnings.contains(QStringLiteral("HTTP status code is not 2XX series.")));
    EXPECT_TRUE(warnings.contains(QStringLiteral("Server reply is not a valid JSON!")));
    const QRegularExpression failure(
        QStringLiteral(R"(^Request <0x[0-9a-f]+> failed!\n(Server reply: .*|Error: .+)$)"));
    EXPECT_EQ(warnings.filter(failure).size(), 4) << warnings.join(QLatin1Char('|')).toStdString();
}

TEST_F(BeaconConnectionTest, RequestsWaitForAServerThatIsDownOrHangingAndGoOnceInOrder)
{
    using Reply = RecordingHttpServer::Reply;
    BeaconConfig config = this->config();
    config.eventSendThreshold = 1;
    config.storedRequestsLimit = 3;
    server.stop();
    start(config);
    beacon->recordEvent(QStringLiteral("a"));
    ASSERT_TRUE(settled());
    EXPECT_EQ(queued(), 2);

    // Back, but holding its first answer: meanwhile new requests only queue, past the limit.
    ASSERT_TRUE(server.start());
    server.script({Reply::hold()});
    scheduler.advance(60); // a session update and its proceed
    ASSERT_TRUE(QTest::qWaitFor([&] { return server.heldCount() == 1; }));
    for (const char* key : {"b", "c", "d"}) {
        beacon->recordEvent(QString::fromLatin1(key));
        QCoreApplication::processEvents(); // its send, before the next event joins it
    }
    EXPECT_TRUE(beacon->connectionManager().isRequestInFlight());
    EXPECT_EQ(queued(), 6);
    EXPECT_EQ(server.requests().size(), 1);

    server.release();
    ASSERT_TRUE(received(6));
    const QList<Request> requests = server.requests();
    EXPECT_EQ(requests[0].value(QStringLiteral("begin_session")), QStringLiteral("1"));
    EXPECT_EQ(eventKeys(requests[1]), QStringList{"a"});
    EXPECT_EQ(requests[2].value(QStringLiteral("session_duration")), QStringLiteral("60"));
    EXPECT_EQ(eventKeys(requests[3]) + eventKeys(requests[4]) + eventKeys(requests[5]), (QStringList{"b", "c", "d"}));
    EXPECT_EQ(queued(), 0);
}
