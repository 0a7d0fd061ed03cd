#include "MprisPlayer.h"

#include "core/Logger.h"

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QStringList>
#include <QVariantMap>

namespace tb {

const QString MprisPlayer::serviceName = QStringLiteral("org.mpris.MediaPlayer2.tallowbrook");
const QString MprisPlayer::objectPath = QStringLiteral("/org/mpris/MediaPlayer2");

namespace {

const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");

QString statusText(MediaRemote::Status status)
{
    switch (status) {
    case MediaRemote::Status::playing:
        return QStringLiteral("Playing");
    case MediaRemote::Status::paused:
        return QStringLiteral("Paused");
    case MediaRemote::Status::stopped:
        break;
    }
    return QStringLiteral("Stopped");
}

// MPRIS keeps paths under /org/mpris for itself; ours name the queue item.
QDBusObjectPath trackPath(const QUuid& id)
{
    return QDBusObjectPath(QStringLiteral("/com/tallowbrook/Tallowbrook/Item/") +
                           QString::fromLatin1(id.toByteArray(QUuid::Id128)));
}

// No item, no track: MPRIS wants an empty map then, not a map without a track id.
QVariantMap metadataOf(const std::optional<MediaRemote::Item>& item)
{
    if (!item)
        return {};
    const QString url = item->url.toString(QUrl::FullyEncoded);
    QVariantMap metadata{{QStringLiteral("mpris:trackid"), QVariant::fromValue(trackPath(item->id))},
                         {QStringLiteral("xesam:title"), item->title},
                         {QStringLiteral("xesam:url"), url}};
    // Applets draw the art as a picture; a clip's file is none, and they would show a broken one.
    if (!item->isVideo)
        metadata.insert(QStringLiteral("mpris:artUrl"), url);
    return metadata;
}

} // namespace

// The members' names below are the interfaces' own, as D-Bus callers spell them.

// Who we are. The program is neither raised nor quit from a remote: the show's window is in front
// already, and ending the program is not what a media applet's close means.
class MprisRootAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ no)
    Q_PROPERTY(bool CanRaise READ no)
    Q_PROPERTY(bool HasTrackList READ no)
    Q_PROPERTY(QString Identity READ identity)
    // The .desktop file's base name, which is how the desktop finds our name and icon.
    Q_PROPERTY(QString DesktopEntry READ desktopEntry)
    Q_PROPERTY(QStringList SupportedUriSchemes READ none)
    Q_PROPERTY(QStringList SupportedMimeTypes READ none)
public:
    explicit MprisRootAdaptor(QObject* object) : QDBusAbstractAdaptor(object) {}

    bool no() const { return false; }
    QString identity() const { return QStringLiteral("Tallowbrook"); }
    QString desktopEntry() const { return QStringLiteral("com.tallowbrook.Tallowbrook"); }
    QStringList none() const { return {}; }

public Q_SLOTS:
    void Raise() {}
    void Quit() {}
};

// The transport. A show has no length, no position and no rate of its own, so those stand still
// and seeking is refused; steps, pause and stop are the show's keys.
class MprisPlayerAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Rate READ one WRITE setRate)
    Q_PROPERTY(double MinimumRate READ one)
    Q_PROPERTY(double MaximumRate READ one)
    Q_PROPERTY(double Volume READ one WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(bool CanGoNext READ yes)
    Q_PROPERTY(bool CanGoPrevious READ yes)
    Q_PROPERTY(bool CanPlay READ yes)
    Q_PROPERTY(bool CanPause READ yes)
    Q_PROPERTY(bool CanSeek READ no)
    Q_PROPERTY(bool CanControl READ yes)
public:
    MprisPlayerAdaptor(QObject* object, const MprisPlayer& owner, std::function<void(MediaRemote::Command)> press)
        : QDBusAbstractAdaptor(object), owner(owner), press(std::move(press))
    {
    }

    QString playbackStatus() const { return statusText(owner.status()); }
    QVariantMap metadata() const { return metadataOf(owner.item()); }
    double one() const { return 1.0; }
    // The playlist's volume is the audio panel's; a remote does not move it.
    void setRate(double) {}
    void setVolume(double) {}
    qlonglong position() const { return 0; }
    bool yes() const { return true; }
    bool no() const { return false; }

public Q_SLOTS:
    void PlayPause() { press(MediaRemote::Command::playPause); }
    void Play() { press(MediaRemote::Command::play); }
    void Pause() { press(MediaRemote::Command::pause); }
    void Next() { press(MediaRemote::Command::next); }
    void Previous() { press(MediaRemote::Command::previous); }
    void Stop() { press(MediaRemote::Command::stop); }
    void Seek(qlonglong) {}
    void SetPosition(const QDBusObjectPath&, qlonglong) {}
    // No scheme is supported (SupportedUriSchemes is empty), so callers do not ask.
    void OpenUri(const QString&) {}

Q_SIGNALS:
    void Seeked(qlonglong position);

private:
    const MprisPlayer& owner;
    std::function<void(MediaRemote::Command)> press;
};

MprisPlayer::MprisPlayer(QDBusConnection bus) : bus(std::move(bus))
{
    new MprisRootAdaptor(&root);
    // The button's call is answered first and the show acts afterwards: a stop withdraws the
    // object that the call is still running on.
    new MprisPlayerAdaptor(&root, *this, [this](Command command) {
        QMetaObject::invokeMethod(
            &root, [this, command] { deliver(command); }, Qt::QueuedConnection);
    });
}

MprisPlayer::~MprisPlayer() { withdraw(); }

void MprisPlayer::setStatus(Status status)
{
    if (status == currentStatus)
        return;
    currentStatus = status;
    announce(QStringLiteral("PlaybackStatus"), statusText(status));
}

void MprisPlayer::setItem(const std::optional<Item>& item)
{
    if (item == currentItem)
        return;
    currentItem = item;
    announce(QStringLiteral("Metadata"), metadataOf(item));
}

void MprisPlayer::offer(CommandHandler commands)
{
    handler = std::move(commands);
    if (!name.isEmpty())
        return;
    if (!bus.isConnected()) {
        if (!toldNoBus)
            logInfo(QStringLiteral("No session bus: media keys and remote controls cannot reach the show"));
        toldNoBus = true;
        return;
    }
    if (!bus.registerObject(objectPath, &root, QDBusConnection::ExportAdaptors)) {
        logWarning(QStringLiteral("Media keys and remote controls cannot reach the show: ") +
                   bus.lastError().message());
        return;
    }
    exported = true;
    const QString instance =
        serviceName + QStringLiteral(".instance") + QString::number(QCoreApplication::applicationPid());
    for (const QString& candidate : {serviceName, instance}) {
        if (bus.registerService(candidate)) {
            name = candidate;
            return;
        }
    }
    logWarning(QStringLiteral("Media keys and remote controls cannot reach the show: the bus name ") + serviceName +
               QStringLiteral(" is taken"));
    bus.unregisterObject(objectPath);
    exported = false;
}

void MprisPlayer::withdraw()
{
    handler = nullptr;
    if (!name.isEmpty()) {
        bus.unregisterService(name);
        name.clear();
    }
    if (exported) {
        bus.unregisterObject(objectPath);
        exported = false;
    }
}

void MprisPlayer::announce(const QString& property, const QVariant& value)
{
    if (!exported)
        return;
    QDBusMessage changed = QDBusMessage::createSignal(objectPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                      QStringLiteral("PropertiesChanged"));
    changed << playerInterface << QVariantMap{{property, value}} << QStringList();
    bus.send(changed);
}

void MprisPlayer::deliver(Command command)
{
    if (!handler)
        return; // pressed while the show was ending
    // A copy: the command may end the show, and the show's end withdraws the handler.
    const CommandHandler run = handler;
    run(command);
}

} // namespace tb

#include "MprisPlayer.moc"
