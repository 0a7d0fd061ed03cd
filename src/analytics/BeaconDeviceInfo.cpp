#include "BeaconDeviceInfo.h"

#include "BeaconLog.h"
#include "BeaconPersistency.h"
#include "core/SettingsStore.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QSysInfo>
#include <QUuid>

namespace tb {

BeaconDeviceInfo::BeaconDeviceInfo(SettingsStore& settings, const BeaconLog& log, BeaconScreen screen,
                                   QString appVersion)
    : settings(settings), log(log), screen(screen), appVersion(std::move(appVersion))
{
}

BeaconDeviceIDType BeaconDeviceInfo::typeOf(const QString& deviceID, bool custom)
{
    if (deviceID == QLatin1String(temporaryDeviceID))
        return BeaconDeviceIDType::BCNDeviceIDTypeTemporary;
    return custom ? BeaconDeviceIDType::BCNDeviceIDTypeCustom : BeaconDeviceIDType::BCNDeviceIDTypeNSUUID;
}

bool BeaconDeviceInfo::useStoredDeviceID()
{
    const std::optional<QString> stored = settings.stringForKey(QLatin1String(kBeaconStoredDeviceIDKey));
    if (!stored || stored->isEmpty())
        return false;
    id = *stored;
    type = typeOf(id, settings.boolForKey(QLatin1String(kBeaconIsCustomDeviceIDKey)));
    return true;
}

void BeaconDeviceInfo::initializeDeviceID(const QString& givenID)
{
    const bool custom = !givenID.isEmpty();
    if (custom) {
        id = givenID;
    } else {
        const QString generatedKey = QLatin1String(kBeaconStoredNSUUIDKey);
        const std::optional<QString> generated = settings.stringForKey(generatedKey);
        if (generated && !generated->isEmpty()) {
            id = *generated;
        } else {
            id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
            settings.setString(generatedKey, id);
        }
    }
    type = typeOf(id, custom);
    settings.setString(QLatin1String(kBeaconStoredDeviceIDKey), id);
    settings.setBool(QLatin1String(kBeaconIsCustomDeviceIDKey), custom);
    log.info(QStringLiteral("Device ID successfully stored in UserDefaults: %1").arg(id));
}

int BeaconDeviceInfo::deviceIDTypeValue(BeaconDeviceIDType idType) const
{
    switch (idType) {
    case BeaconDeviceIDType::BCNDeviceIDTypeCustom:
    case BeaconDeviceIDType::BCNDeviceIDTypeIDFV:
    case BeaconDeviceIDType::BCNDeviceIDTypeNSUUID:
    case BeaconDeviceIDType::BCNDeviceIDTypeTemporary:
        return int(idType);
    }
    log.warning(QStringLiteral("Device ID type is not one of the defined types."));
    return -1;
}

QString BeaconDeviceInfo::device()
{
    QFile file(QStringLiteral("/sys/class/dmi/id/product_name"));
    if (file.open(QIODevice::ReadOnly)) {
        // A firmware table is a few bytes; the bound keeps an odd file system from feeding us more.
        const QString model = QString::fromUtf8(file.read(256)).trimmed();
        if (!model.isEmpty())
            return model;
    }
    return QStringLiteral("Linux PC");
}

QString BeaconDeviceInfo::resolution() const
{
    const double ratio = screen.devicePixelRatio;
    return QStringLiteral("%1x%2").arg(QString::number(screen.size.width() * ratio, 'g', 6),
                                       QString::number(screen.size.height() * ratio, 'g', 6));
}

// The scale as a whole number, cut rather than rounded: a 1.5 screen reports "@1x".
QString BeaconDeviceInfo::density() const { return QStringLiteral("@%1x").arg(int(screen.devicePixelRatio)); }

QString BeaconDeviceInfo::metrics(const QMap<QString, QString>& customMetrics) const
{
    QJsonObject values{
        {QStringLiteral("_device"), device()},
        {QStringLiteral("_device_type"), QStringLiteral("desktop")},
        {QStringLiteral("_os"), QStringLiteral("Linux")},
        {QStringLiteral("_os_version"), QSysInfo::productVersion()},
        {QStringLiteral("_app_version"), appVersion},
        {QStringLiteral("_resolution"), resolution()},
        {QStringLiteral("_density"), density()},
        {QStringLiteral("_locale"), QLocale::system().name()},
    };
    for (auto it = customMetrics.cbegin(); it != customMetrics.cend(); ++it)
        values.insert(it.key(), it.value());
    return QString::fromUtf8(QJsonDocument(values).toJson(QJsonDocument::Compact));
}

} // namespace tb
