#pragma once

#include "analytics/Beacon.h"
#include "core/ManualScheduler.h"
#include "core/RandomSource.h"
#include "core/SettingsStore.h"
#include "support/QtPrinting.h"
#include "support/RecordingHttpServer.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <random>

namespace tb::test {

// Seeded, or one fixed value when event ids must have a known length.
class TestRandom final : public RandomSource {
public:
    std::uint64_t next64() override { return fixed ? *fixed : engine(); }
    std::optional<std::uint64_t> fixed;
    std::mt19937_64 engine{7};
};

using Request = RecordingHttpServer::Request;

// A client over a temporary folder and settings file, talking to a local recording server, with
// its time in the test's hands: the session timer on a ManualScheduler, the wall clock fixed at
// Sunday 7 January 2024, 10:30 in New York.
struct BeaconFixture : ::testing::Test {
    static void SetUpTestSuite()
    {
        setenv("TZ", "America/New_York", 1);
        tzset();
    }
    static void TearDownTestSuite()
    {
        unsetenv("TZ");
        tzset();
    }

    QTemporaryDir dir;
    RecordingHttpServer server;
    ManualScheduler scheduler;
    std::unique_ptr<SettingsStore> settings = std::make_unique<SettingsStore>(dir.filePath(QStringLiteral("t.conf")));
    QDateTime now{QDate(2024, 1, 7), QTime(15, 30), Qt::UTC};
    TestRandom random;
    std::unique_ptr<Beacon> beacon;

    std::unique_ptr<Beacon> makeBeacon()
    {
        return std::make_unique<Beacon>(Beacon::Services{scheduler, [this] { return now; }, *settings,
                                                         dir.filePath(QStringLiteral("data")), QStringLiteral("2.5.1"),
                                                         BeaconScreen{QSizeF(1440, 900), 2.0}, random});
    }

    BeaconConfig config() const
    {
        BeaconConfig config;
        config.host = server.url();
        config.appKey = QStringLiteral("test-key");
        config.features = {QLatin1String(BCNCrashReporting)};
        config.eventSendThreshold = 3;
        return config;
    }

    Beacon& start(const BeaconConfig& config)
    {
        beacon = makeBeacon();
        beacon->startWithConfig(config);
        return *beacon;
    }

    // The queued hops run, and no request is on its way.
    bool settled()
    {
        QCoreApplication::processEvents();
        return QTest::qWaitFor([this] { return !beacon->connectionManager().isRequestInFlight(); }, 10000);
    }
    // The server has seen `count` requests and the client has heard every answer.
    bool received(int count)
    {
        return QTest::qWaitFor([&] { return server.requests().size() >= count; }, 10000) && settled() &&
               server.requests().size() == count;
    }
    int queued() { return beacon->persistency().remainingRequestCount(); }

    static QJsonArray events(const Request& request)
    {
        return QJsonDocument::fromJson(request.value(QStringLiteral("events")).toUtf8()).array();
    }
    static QStringList eventKeys(const Request& request)
    {
        QStringList keys;
        for (const QJsonValue& event : events(request))
            keys.append(event[QLatin1String("key")].toString());
        return keys;
    }
};

} // namespace tb::test
