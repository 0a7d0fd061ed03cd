#include "LinuxFileRevealer.h"

#include "core/Logger.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace tb {

void LinuxFileRevealer::reveal(const QString& filePath)
{
    const QUrl fileUrl = QUrl::fromLocalFile(QFileInfo(filePath).absoluteFilePath());
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
        call << QStringList{fileUrl.toString()} << QString();
        // A short timeout: with no file manager registered, D-Bus activation may otherwise stall.
        const QDBusMessage reply = bus.call(call, QDBus::Block, 3000);
        if (reply.type() == QDBusMessage::ReplyMessage)
            return;
    }
    const QUrl folder = QUrl::fromLocalFile(QFileInfo(filePath).absolutePath());
    if (!QDesktopServices::openUrl(folder))
        logWarning(QStringLiteral("Could not open the file manager at: ") + folder.toLocalFile());
}

} // namespace tb
