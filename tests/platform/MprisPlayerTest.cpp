#include "platform/MprisPlayer.h"
#include "support/LogCapture.h"
#include "support/PrivateDBusDaemon.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QTest>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

using Command = MediaRemote::Command;
using Status = MediaRemote::Status;

const QString rootInterface = QStringLiteral("org.mpris.MediaPlayer2");
const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");

// A dictionary as QtDBus hands it over: nested ones arrive still marshalled.
QVariantMap asMap(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QDBusArgument>())
        return qdbus_cast<QVariantMap>(value.value<QDBusArgument>());
    return value.toMap();
}

// What a media applet hears of the player's changes.
class ChangeListener final : public QObject {
    Q_OBJECT
public:
    QList<QVariantMap> changes;

public Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList&)
    {
        if (interface == playerInterface)
            changes.append(changed);
    }
};

// A private session bus, with the player on a connection of its own and the remote on another.
// The player answers from this thread's event loop, so the remote's calls keep it running.
struct MprisBus : ::testing::Test {
    PrivateDBusDaemon bus;
    QString address;
    std::unique_ptr<MprisPlayer> player;
    QList<Command> pressed;

    void SetUp() override
    {
        if (!bus.launch())
            GTEST_SKIP() << "dbus-daemon is not installed";
        address = bus.waitForAddress();
        ASSERT_FALSE(address.isEmpty());
        player = std::make_unique<MprisPlayer>(QDBusConnection::connectToBus(address, QStringLiteral("player")));
    }
    void TearDown() override
    {
        player.reset();
        for (const QString& name : {QStringLiteral("player"), QStringLiteral("remote"), QStringLiteral("rival")})
            QDBusConnection::disconnectFromBus(name);
    }
    QDBusConnection remote() { return QDBusConnection::connectToBus(address, QStringLiteral("remote")); }
    QDBusMessage call(const QString& interface, const QString& method, const QVariantList& arguments = {})
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall(MprisPlayer::serviceName, MprisPlayer::objectPath, interface, method);
        message.setArguments(arguments);
        return remote().call(message, QDBus::BlockWithGui, 5000);
    }
    QVariantMap properties(const QString& interface)
    {
        const QDBusMessage reply =
            call(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"), {interface});
        return reply.type() == QDBusMessage::ReplyMessage ? asMap(reply.arguments().value(0)) : QVariantMap();
    }
    bool isTaken(const QString& name) { return remote().interface()->isServiceRegistered(name).value(); }
    void offer()
    {
        player->offer([this](Command command) { pressed.append(command); });
    }
};

MediaRemote::Item picture(const QString& name)
{
    return {QUuid::createUuid(), QUrl::fromLocalFile(QStringLiteral("/show/") + name), name};
}

} // namespace

TEST_F(MprisBus, AnOfferedShowTellsTheDesktopWhatPlaysAndHearsEveryButton)
{
    EXPECT_FALSE(isTaken(MprisPlayer::serviceName));
    const MediaRemote::Item shown = picture(QStringLiteral("a b.png"));
    player->setStatus(Status::playing);
    player->setItem(shown);
    offer();
    ASSERT_TRUE(isTaken(MprisPlayer::serviceName));

    const QVariantMap root = properties(rootInterface);
    EXPECT_EQ(root.value(QStringLiteral("Identity")).toString(), QStringLiteral("Tallowbrook"));
    EXPECT_EQ(root.value(QStringLiteral("DesktopEntry")).toString(), QStringLiteral("com.tallowbrook.Tallowbrook"));
    for (const char* flag : {"CanQuit", "CanRaise", "HasTrackList"})
        EXPECT_EQ(root.value(QLatin1String(flag)), QVariant(false)) << flag;
    for (const char* list : {"SupportedUriSchemes", "SupportedMimeTypes"}) {
        ASSERT_TRUE(root.contains(QLatin1String(list))) << list;
        EXPECT_TRUE(root.value(QLatin1String(list)).toStringList().isEmpty()) << list;
    }

    QVariantMap transport = properties(playerInterface);
    EXPECT_EQ(transport.value(QStringLiteral("PlaybackStatus")).toString(), QStringLiteral("Playing"));
    for (const char* flag : {"CanGoNext", "CanGoPrevious", "CanPlay", "CanPause", "CanControl"})
        EXPECT_EQ(transport.value(QLatin1String(flag)), QVariant(true)) << flag;
    EXPECT_EQ(transport.value(QStringLiteral("CanSeek")), QVariant(false));
    QVariantMap metadata = asMap(transport.value(QStringLiteral("Metadata")));
    EXPECT_EQ(metadata.value(QStringLiteral("mpris:trackid")).value<QDBusObjectPath>().path(),
              QStringLiteral("/com/tallowbrook/Tallowbrook/Item/") + shown.id.toString(QUuid::Id128));
    EXPECT_EQ(metadata.value(QStringLiteral("xesam:title")).toString(), QStringLiteral("a b.png"));
    EXPECT_EQ(metadata.value(QStringLiteral("xesam:url")).toString(), QStringLiteral("file:///show/a%20b.png"));
    EXPECT_EQ(metadata.value(QStringLiteral("mpris:artUrl")).toString(), QStringLiteral("file:///show/a%20b.png"));

    // A clip has no picture to show as art; no item is no track.
    MediaRemote::Item clip = picture(QStringLiteral("clip.mp4"));
    clip.isVideo = true;
    player->setItem(clip);
    metadata = asMap(properties(playerInterface).value(QStringLiteral("Metadata")));
    EXPECT_EQ(metadata.value(QStringLiteral("xesam:title")).toString(), QStringLiteral("clip.mp4"));
    EXPECT_FALSE(metadata.contains(QStringLiteral("mpris:artUrl")));
    player->setItem(std::nullopt);
    transport = properties(playerInterface);
    ASSERT_TRUE(transport.contains(QStringLiteral("Metadata")));
    EXPECT_TRUE(asMap(transport.value(QStringLiteral("Metadata"))).isEmpty());

    for (const char* button : {"PlayPause", "Play", "Pause", "Next", "Previous", "Stop"})
        EXPECT_EQ(call(playerInterface, QLatin1String(button)).type(), QDBusMessage::ReplyMessage) << button;
    ASSERT_TRUE(QTest::qWaitFor([this] { return pressed.size() >= 6; }, 5000));
    EXPECT_EQ(pressed, (QList<Command>{Command::playPause, Command::play, Command::pause, Command::next,
                                       Command::previous, Command::stop}));

    player->withdraw();
    EXPECT_FALSE(isTaken(MprisPlayer::serviceName));
    EXPECT_EQ(call(playerInterface, QStringLiteral("Next")).type(), QDBusMessage::ErrorMessage);
    offer();
    EXPECT_TRUE(isTaken(MprisPlayer::serviceName)) << "the next show is offered again";
}

// Each change is announced once, with only what changed; nothing is announced before the offer.
TEST_F(MprisBus, ChangesAreAnnouncedOnceEach)
{
    ChangeListener listener;
    QDBusConnection bus = remote();
    ASSERT_TRUE(bus.connect(QString(), MprisPlayer::objectPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                            QStringLiteral("PropertiesChanged"), &listener,
                            SLOT(propertiesChanged(QString, QVariantMap, QStringList))));
    isTaken(MprisPlayer::serviceName); // a round trip: the bus has the listener's match rule now

    const MediaRemote::Item first = picture(QStringLiteral("first.png"));
    const MediaRemote::Item second = picture(QStringLiteral("second.png"));
    player->setStatus(Status::playing);
    player->setItem(first);
    offer();
    player->setStatus(Status::paused);
    player->setStatus(Status::paused);
    player->setItem(second);
    player->setItem(second);
    player->setStatus(Status::playing);
    ASSERT_TRUE(QTest::qWaitFor([&] { return listener.changes.size() >= 3; }, 5000));
    ASSERT_EQ(listener.changes[0].keys(), QStringList{QStringLiteral("PlaybackStatus")});
    EXPECT_EQ(listener.changes[0].value(QStringLiteral("PlaybackStatus")).toString(), QStringLiteral("Paused"));
    ASSERT_EQ(listener.changes[1].keys(), QStringList{QStringLiteral("Metadata")});
    EXPECT_EQ(
        asMap(listener.changes[1].value(QStringLiteral("Metadata"))).value(QStringLiteral("xesam:title")).toString(),
        QStringLiteral("second.png"));
    EXPECT_EQ(listener.changes[2].value(QStringLiteral("PlaybackStatus")).toString(), QStringLiteral("Playing"));
}

// A second copy of the program started on purpose holds our name; ours gets an instance suffix.
// Without a session bus a show is offered to nobody, says so once, and goes on.
TEST_F(MprisBus, ATakenNameGetsAnInstanceSuffixAndNoBusIsSaidOnce)
{
    QDBusConnection rival = QDBusConnection::connectToBus(address, QStringLiteral("rival"));
    ASSERT_TRUE(rival.registerService(MprisPlayer::serviceName));
    offer();
    const QString instance =
        MprisPlayer::serviceName + QStringLiteral(".instance") + QString::number(QCoreApplication::applicationPid());
    EXPECT_EQ(player->busName(), instance);
    EXPECT_TRUE(isTaken(instance));
    player->withdraw();
    EXPECT_FALSE(isTaken(instance));
    EXPECT_TRUE(player->busName().isEmpty());

    LogCapture log;
    MprisPlayer busless(
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("busless")));
    for (int show = 0; show < 2; ++show) {
        busless.setStatus(Status::playing);
        busless.offer([](Command) {});
        busless.setItem(picture(QStringLiteral("a.png")));
        busless.withdraw();
    }
    EXPECT_TRUE(busless.busName().isEmpty());
    EXPECT_EQ(log.all(), QStringList{QStringLiteral("No session bus: media keys and remote controls cannot reach "
                                                    "the show")});
    QDBusConnection::disconnectFromBus(QStringLiteral("busless"));
}

#include "MprisPlayerTest.moc"
