#include "platform/DBusSleepInhibitor.h"
#include "support/PrivateDBusDaemon.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QTest>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

// A desktop's org.freedesktop.ScreenSaver, as KDE and others have it.
class FakeScreenSaver final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    QStringList calls;
public Q_SLOTS:
    uint Inhibit(const QString& application, const QString& reason)
    {
        calls.append(application + QLatin1Char('/') + reason);
        return 7;
    }
    void UnInhibit(uint cookie) { calls.append(QStringLiteral("release %1").arg(cookie)); }
};

// The desktop portal's Inhibit, and the request object it hands back.
class FakePortalRequest final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")
public:
    int closes = 0;
public Q_SLOTS:
    void Close() { ++closes; }
};

class FakePortal final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Inhibit")
public:
    static inline const QString requestPath = QStringLiteral("/org/freedesktop/portal/desktop/request/1_1/t");
    QList<std::pair<uint, QString>> inhibits; // flags, reason
public Q_SLOTS:
    QDBusObjectPath Inhibit(const QString&, uint flags, const QVariantMap& options)
    {
        inhibits.append({flags, options.value(QStringLiteral("reason")).toString()});
        return QDBusObjectPath(requestPath);
    }
};

struct SleepBus : ::testing::Test {
    PrivateDBusDaemon bus;
    QString address;
    FakeScreenSaver screenSaver;
    FakePortal portal;
    FakePortalRequest request;

    void SetUp() override
    {
        if (!bus.launch())
            GTEST_SKIP() << "dbus-daemon is not installed";
        address = bus.waitForAddress();
        ASSERT_FALSE(address.isEmpty());
    }
    void TearDown() override
    {
        for (const QString& name : {QStringLiteral("desktop"), QStringLiteral("program")})
            QDBusConnection::disconnectFromBus(name);
    }
    QDBusConnection desktop() { return QDBusConnection::connectToBus(address, QStringLiteral("desktop")); }
    void offerScreenSaver()
    {
        ASSERT_TRUE(desktop().registerService(QStringLiteral("org.freedesktop.ScreenSaver")));
        ASSERT_TRUE(desktop().registerObject(QStringLiteral("/org/freedesktop/ScreenSaver"), &screenSaver,
                                             QDBusConnection::ExportAllSlots));
    }
    void offerPortal()
    {
        ASSERT_TRUE(desktop().registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
        ASSERT_TRUE(desktop().registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal,
                                             QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(desktop().registerObject(FakePortal::requestPath, &request, QDBusConnection::ExportAllSlots));
    }
    // Inhibits, then releases, waiting for each answer; the results as text.
    std::pair<QString, QString> holdAndRelease()
    {
        DBusSleepInhibitor inhibitor(QDBusConnection::connectToBus(address, QStringLiteral("program")));
        std::optional<std::variant<quint32, QString>> held;
        inhibitor.inhibit(QStringLiteral("Slideshow is playing"), [&](const auto& result) { held = result; });
        if (!QTest::qWaitFor([&] { return held.has_value(); }, 10000))
            return {QStringLiteral("no answer"), {}};
        if (const auto* error = std::get_if<QString>(&*held))
            return {*error, {}};
        std::optional<std::optional<QString>> released;
        inhibitor.uninhibit(std::get<quint32>(*held), [&](const auto& error) { released = error; });
        if (!QTest::qWaitFor([&] { return released.has_value(); }, 10000))
            return {QStringLiteral("held"), QStringLiteral("no answer")};
        return {QStringLiteral("held"), released->value_or(QStringLiteral("released"))};
    }
};

} // namespace

// The screen saver is asked first, and the portal only where the desktop has none; the hold
// let go is the one taken.
TEST_F(SleepBus, TheScreenSaverIsAskedFirstAndThePortalWhereThereIsNone)
{
    offerScreenSaver();
    offerPortal();
    EXPECT_EQ(holdAndRelease(), std::make_pair(QStringLiteral("held"), QStringLiteral("released")));
    EXPECT_EQ(screenSaver.calls,
              QStringList({QStringLiteral("Tallowbrook/Slideshow is playing"), QStringLiteral("release 7")}));
    EXPECT_TRUE(portal.inhibits.isEmpty());

    ASSERT_TRUE(desktop().unregisterService(QStringLiteral("org.freedesktop.ScreenSaver")));
    EXPECT_EQ(holdAndRelease(), std::make_pair(QStringLiteral("held"), QStringLiteral("released")));
    ASSERT_EQ(portal.inhibits.size(), 1);
    EXPECT_EQ(portal.inhibits.front(), std::make_pair(8u, QStringLiteral("Slideshow is playing")))
        << "the idle flag and the reason";
    EXPECT_EQ(request.closes, 1);
}

// With neither, the error says no one answers; a bus that is gone says so at once.
TEST_F(SleepBus, ADesktopWithNeitherAnswersWithTheBusError)
{
    EXPECT_EQ(holdAndRelease().first, QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"));

    DBusSleepInhibitor orphan(QDBusConnection(QStringLiteral("never connected")));
    QString error;
    orphan.inhibit(QStringLiteral("Slideshow is playing"),
                   [&](const auto& result) { error = std::get<QString>(result); });
    EXPECT_EQ(error, QStringLiteral("org.freedesktop.DBus.Error.Disconnected"));
}

#include "DBusSleepInhibitorTest.moc"
