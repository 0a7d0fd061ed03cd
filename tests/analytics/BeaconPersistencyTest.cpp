#include "analytics/BeaconPersistency.h"
#include "analytics/BeaconClock.h"
#include "analytics/BeaconLog.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

struct BeaconPersistencyTest : ::testing::Test {
    QTemporaryDir dir;
    QDateTime now{QDate(2024, 1, 7), QTime(15, 30), Qt::UTC};
    BeaconClock clock{[this] { return now; }};
    BeaconLog log;
    bool inFlight = false;

    std::unique_ptr<BeaconPersistency> make()
    {
        return std::make_unique<BeaconPersistency>(dir.filePath(QStringLiteral("data")), QStringLiteral("2.5.1"), clock,
                                                   log, [this] { return inFlight; });
    }
    QString path() const { return dir.filePath(QStringLiteral("data/Beacon.dat")); }
};

QString request(int n) { return QStringLiteral("n=%1&av=2.5.1").arg(n); }

} // namespace

TEST_F(BeaconPersistencyTest, QueueKeepsItsLimitWhenNothingIsInFlight)
{
    auto persistency = make();
    for (int n = 0; n <= 1000; ++n)
        persistency->addToQueue(QStringLiteral("n=%1").arg(n));
    EXPECT_EQ(persistency->remainingRequestCount(), 1000);
    EXPECT_EQ(persistency->firstItemInQueue(), request(1));

    inFlight = true; // the first request is on its way and must stay
    persistency->addToQueue(QStringLiteral("n=1001"));
    persistency->addToQueue(QStringLiteral("n=1002"));
    EXPECT_EQ(persistency->remainingRequestCount(), 1002);
    inFlight = false;
    persistency->addToQueue(QStringLiteral("n=1003"));
    EXPECT_EQ(persistency->remainingRequestCount(), 1002);
    EXPECT_EQ(persistency->firstItemInQueue(), request(2));
    EXPECT_EQ(persistency->queuedRequests().last(), request(1003));

    // A request past the drop age goes before the oldest young one.
    persistency->requestDropAgeHours = 2;
    const qint64 threeHoursAgo = now.addSecs(-3 * 3600).toMSecsSinceEpoch();
    persistency->removeFromQueue(request(5)); // not the first: stays
    EXPECT_EQ(persistency->remainingRequestCount(), 1002);
    persistency->addToQueue(QStringLiteral("timestamp=%1").arg(threeHoursAgo));
    EXPECT_EQ(persistency->remainingRequestCount(), 1001);
    EXPECT_EQ(persistency->firstItemInQueue(), request(3));
    EXPECT_EQ(persistency->queuedRequests().last(), request(1003));
}

TEST_F(BeaconPersistencyTest, QueueSurvivesARestartAndAnUnreadableFileGivesAnEmptyOne)
{
    {
        auto persistency = make();
        // Background writes pile up while requests arrive; the newest queue must win.
        for (int n = 0; n < 300; ++n) {
            persistency->addToQueue(QStringLiteral("n=%1").arg(n));
            persistency->saveToFile();
        }
        persistency->removeFromQueue(request(0));
        persistency->saveToFile();
    } // waits for the writes
    auto reloaded = make();
    ASSERT_EQ(reloaded->remainingRequestCount(), 299);
    EXPECT_EQ(reloaded->firstItemInQueue(), request(1));
    EXPECT_EQ(reloaded->queuedRequests().last(), request(299));
    reloaded->saveToFileSync();
    EXPECT_EQ(make()->remainingRequestCount(), 299);

    for (const QByteArray& bytes : {QByteArray("\x00garbage", 8),
                                    QByteArray(R"({"kBeaconQueuedRequestsPersistencyKey":[1]})"), QByteArray("[]")}) {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        LogCapture capture;
        EXPECT_EQ(make()->remainingRequestCount(), 0) << bytes.toStdString();
        ASSERT_EQ(capture.messages(LogLevel::Warning).size(), 1);
        EXPECT_TRUE(capture.messages(LogLevel::Warning)[0].contains(QStringLiteral("cannot be read")));
    }
}
