#include "core/IdleTimeChain.h"
#include "platform/DBusIdleTimeSource.h"
#include "platform/X11IdleTimeSource.h"
#include "support/LogCapture.h"
#include "support/PrivateDBusDaemon.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

using namespace tb;
using tb::test::LogCapture;
using tb::test::PrivateDBusDaemon;

namespace {

// A desktop's idle service: answers its interface's calls with `idleMs` (as the method's own
// type), or never when it hangs.
class FakeIdleService final : public QDBusVirtualObject {
public:
    FakeIdleService(QString interface, qulonglong idleMs, bool hangs)
        : interface(std::move(interface)), idleMs(idleMs), hangs(hangs)
    {
    }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (message.interface() != interface)
            return false;
        if (hangs) {
            message.setDelayedReply(true); // and no reply ever comes
            return true;
        }
        const QVariant value = message.member() == QLatin1String("GetIdletime") ? QVariant::fromValue(idleMs)
                                                                                : QVariant::fromValue(uint(idleMs));
        return connection.send(message.createReply(value));
    }

private:
    QString interface;
    qulonglong idleMs;
    bool hangs;
};

// A private session bus; each fake service has a connection of its own and answers from a thread
// of its own, since the source blocks the thread that asks.
struct PrivateBus : ::testing::Test {
    PrivateDBusDaemon bus;
    QString address;
    QThread serviceThread;
    QList<FakeIdleService*> services;

    void SetUp() override
    {
        if (!bus.launch())
            GTEST_SKIP() << "dbus-daemon is not installed";
        address = bus.waitForAddress();
        ASSERT_FALSE(address.isEmpty());
        serviceThread.start();
    }
    void TearDown() override
    {
        for (const QString& name : {QStringLiteral("mutter"), QStringLiteral("screensaver"), QStringLiteral("client")})
            QDBusConnection::disconnectFromBus(name);
        serviceThread.quit();
        serviceThread.wait();
        qDeleteAll(services);
    }
    void serve(const char* connection, const char* name, const char* path, const char* interface, qulonglong idleMs,
               bool hangs = false)
    {
        QDBusConnection bus = QDBusConnection::connectToBus(address, QLatin1String(connection));
        ASSERT_TRUE(bus.isConnected());
        ASSERT_TRUE(bus.registerService(QLatin1String(name)));
        services.append(new FakeIdleService(QLatin1String(interface), idleMs, hangs));
        services.last()->moveToThread(&serviceThread);
        ASSERT_TRUE(bus.registerVirtualObject(QLatin1String(path), services.last()));
    }
    double idle()
    {
        return DBusIdleTimeSource(QDBusConnection::connectToBus(address, QStringLiteral("client"))).idleSeconds();
    }
    std::optional<double> ask()
    {
        return DBusIdleTimeSource(QDBusConnection::connectToBus(address, QStringLiteral("client"))).ask();
    }
};

} // namespace

TEST_F(PrivateBus, MutterFirstThenTheFreedesktopScreenSaverElseNothing)
{
    EXPECT_EQ(idle(), 0.0) << "no service answers";
    serve("screensaver", "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver",
          42500);
    EXPECT_DOUBLE_EQ(idle(), 42.5) << "milliseconds, as KDE answers";
    serve("mutter", "org.gnome.Mutter.IdleMonitor", "/org/gnome/Mutter/IdleMonitor/Core",
          "org.gnome.Mutter.IdleMonitor", 301000);
    EXPECT_DOUBLE_EQ(idle(), 301.0);
}

// Mutter never answers; the freedesktop service does, once Mutter's bounded wait is over.
TEST_F(PrivateBus, AHungServiceCostsOneBoundedWait)
{
    serve("mutter", "org.gnome.Mutter.IdleMonitor", "/org/gnome/Mutter/IdleMonitor/Core",
          "org.gnome.Mutter.IdleMonitor", 9000, true);
    serve("screensaver", "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver",
          7000);
    EXPECT_DOUBLE_EQ(idle(), 7.0);
}

// Asked as a probe, a session without either service says it does not know, while a user who
// has just been active is known to have been idle 0 s.
TEST_F(PrivateBus, AsAProbeNoServiceMeansNoAnswer)
{
    EXPECT_EQ(ask(), std::nullopt);
    serve("screensaver", "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver",
          0);
    EXPECT_EQ(ask(), std::optional<double>(0.0));
}

namespace {

// Answers what the test sets (nothing = "don't know") and notes in `asked` that it was asked.
struct ScriptedProbe final : IdleTimeProbe {
    ScriptedProbe(char name, QString& asked) : name(name), asked(asked) {}
    std::optional<double> ask() override
    {
        asked += QLatin1Char(name);
        return answer;
    }
    char name;
    QString& asked;
    std::optional<double> answer;
};

} // namespace

TEST(IdleTimeChain, TheFirstProbeThatKnowsAnswersAndTheRestAreNotAsked)
{
    QString asked;
    ScriptedProbe desktop('d', asked), xServer('x', asked);
    IdleTimeChain chain({&desktop, &xServer});
    LogCapture log;
    EXPECT_EQ(chain.idleSeconds(), 0.0) << "nobody knows";
    EXPECT_EQ(chain.idleSeconds(), 0.0);
    EXPECT_EQ(log.messages(LogLevel::Warning).size(), 1) << "said once while nobody knows";
    xServer.answer = 75.0;
    EXPECT_EQ(chain.idleSeconds(), 75.0);
    // A desktop that has just seen input knows the idle time is 0: the X server is not asked.
    desktop.answer = 0.0;
    EXPECT_EQ(chain.idleSeconds(), 0.0);
    EXPECT_EQ(asked, QStringLiteral("dxdxdxd")); // both three times, the desktop alone
}

namespace {

// A virtual X server of the test's own; it writes its display number once it is ready, and does
// not reset (refusing connections meanwhile) each time the probe's last connection closes.
struct XServer : ::testing::Test {
    QProcess server;
    QByteArray display;
    QElapsedTimer sinceStart;

    void start(const QStringList& extra = {})
    {
        if (!X11IdleTimeSource::builtWithX11)
            GTEST_SKIP() << "built without the X libraries";
        sinceStart.start();
        server.start(QStringLiteral("Xvfb"),
                     QStringList{QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-nolisten"),
                                 QStringLiteral("tcp"), QStringLiteral("-noreset")} +
                         extra);
        if (!server.waitForStarted(5000))
            GTEST_SKIP() << "Xvfb is not installed";
        ASSERT_TRUE(QTest::qWaitFor([this] { return server.canReadLine(); }, 10000)) << "Xvfb gave no display";
        display = ":" + server.readLine().trimmed();
    }
    void TearDown() override
    {
        server.terminate();
        server.waitForFinished();
    }
    // Input as a user's, through the XTEST extension.
    void movePointer()
    {
        QProcess xdotool;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(display));
        xdotool.setProcessEnvironment(environment);
        xdotool.start(QStringLiteral("xdotool"),
                      {QStringLiteral("mousemove_relative"), QStringLiteral("5"), QStringLiteral("5")});
        ASSERT_TRUE(xdotool.waitForFinished(10000));
        ASSERT_EQ(xdotool.exitCode(), 0);
    }
};

} // namespace

TEST_F(XServer, IdleTimeGrowsWithoutInputAndInputResetsIt)
{
    start();
    X11IdleTimeSource source(display);
    std::optional<double> idle;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            idle = source.ask();
            return !idle || *idle >= 0.5;
        },
        10000));
    ASSERT_TRUE(idle.has_value()) << "Xvfb has the MIT-SCREEN-SAVER extension";
    // Seconds, not the extension's milliseconds: no longer than the server has been up.
    EXPECT_LE(*idle, double(sinceStart.elapsed()) / 1000.0);
    movePointer();
    const std::optional<double> afterInput = source.ask();
    ASSERT_TRUE(afterInput.has_value());
    EXPECT_LT(*afterInput, *idle);
}

TEST_F(XServer, NoExtensionNoServerOrNotOnX11MeansNoAnswer)
{
    start({QStringLiteral("-extension"), QStringLiteral("MIT-SCREEN-SAVER")});
    EXPECT_EQ(X11IdleTimeSource(display).ask(), std::nullopt) << "a server without the extension";
    EXPECT_EQ(X11IdleTimeSource(":" + QByteArray::number(display.mid(1).toInt() + 1000)).ask(), std::nullopt)
        << "no server";
    // The tests' application draws offscreen, as a Wayland one would not be on X11 either.
    EXPECT_EQ(X11IdleTimeSource().ask(), std::nullopt);
}
