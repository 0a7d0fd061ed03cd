#include "DisplayManager.h"

#include <QCryptographicHash>
#include <QGuiApplication>
#include <QScreen>

namespace tb {

DisplayManager::DisplayManager(QObject* parent) : QObject(parent)
{
    refreshScreens();
    // Screens come and go while the program runs; the list follows from the event loop.
    auto refreshLater = [this] {
        QMetaObject::invokeMethod(this, &DisplayManager::refreshScreens, Qt::QueuedConnection);
    };
    connect(qGuiApp, &QGuiApplication::screenAdded, this, refreshLater);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, refreshLater);
}

int DisplayManager::screenId(const QScreen* screen)
{
    // A hash that does not change between runs or Qt versions.
    const QByteArray key = (screen->name() + QLatin1Char('\n') + screen->serialNumber()).toUtf8();
    const QByteArray digest = QCryptographicHash::hash(key, QCryptographicHash::Sha256);
    const quint32 bits = (quint32(uchar(digest[0])) << 24) | (quint32(uchar(digest[1])) << 16) |
                         (quint32(uchar(digest[2])) << 8) | quint32(uchar(digest[3]));
    const int id = int(bits & 0x7fffffff);
    return id == 0 ? 1 : id;
}

QString DisplayManager::screenName(const QScreen* screen)
{
    const QString model = QStringList{screen->manufacturer(), screen->model()}.join(QLatin1Char(' ')).trimmed();
    return model.isEmpty() ? screen->name() : model;
}

void DisplayManager::refreshScreens()
{
    QList<ScreenInfo> list{{0, QStringLiteral("Default (App Window's Screen)")}};
    int count = 0;
    for (const QScreen* screen : QGuiApplication::screens())
        list.append({screenId(screen), QStringLiteral("Display %1: %2").arg(++count).arg(screenName(screen))});
    if (list == screens)
        return;
    screens = list;
    Q_EMIT availableScreensChanged();
}

QScreen* DisplayManager::screen(int id) const
{
    for (QScreen* candidate : QGuiApplication::screens())
        if (screenId(candidate) == id)
            return candidate;
    return nullptr;
}

} // namespace tb
