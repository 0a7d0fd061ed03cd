#include "SettingsStore.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>

namespace tb {

namespace {

// Values reloaded from the file come back as text, values written in this run keep their type;
// both must read the same.
std::optional<double> toDouble(const QVariant& v)
{
    bool ok = false;
    const double d = v.toDouble(&ok);
    return ok && std::isfinite(d) ? std::optional<double>(d) : std::nullopt;
}

std::optional<int> toInt(const QVariant& v)
{
    bool ok = false;
    const qlonglong i = v.toLongLong(&ok);
    if (ok && i >= std::numeric_limits<int>::min() && i <= std::numeric_limits<int>::max())
        return int(i);
    if (const auto d = toDouble(v); d && std::abs(*d) < 2147483648.0)
        return int(std::trunc(*d));
    return std::nullopt;
}

std::optional<bool> toBool(const QVariant& v)
{
    if (v.typeId() == QMetaType::Bool)
        return v.toBool();
    const QString text = v.toString().trimmed().toLower();
    if (text == QLatin1String("true"))
        return true;
    if (text == QLatin1String("false"))
        return false;
    if (const auto d = toDouble(v))
        return *d != 0.0;
    return std::nullopt;
}

} // namespace

SettingsStore::SettingsStore(QObject* parent)
    : QObject(parent),
      settings(std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Tallowbrook"),
                                           QStringLiteral("Tallowbrook")))
{
}

SettingsStore::SettingsStore(const QString& filePath, QObject* parent)
    : QObject(parent), settings(std::make_unique<QSettings>(filePath, QSettings::IniFormat))
{
}

SettingsStore::~SettingsStore() = default;

std::optional<QVariant> SettingsStore::raw(const QString& key) const
{
    QMutexLocker lock(&mutex);
    QVariant v = settings->value(key);
    if (!v.isValid())
        return std::nullopt;
    return v;
}

bool SettingsStore::contains(const QString& key) const { return raw(key).has_value(); }

double SettingsStore::doubleForKey(const QString& key) const
{
    const auto v = raw(key);
    return v ? toDouble(*v).value_or(0.0) : 0.0;
}

int SettingsStore::integerForKey(const QString& key) const
{
    const auto v = raw(key);
    return v ? toInt(*v).value_or(0) : 0;
}

bool SettingsStore::boolForKey(const QString& key) const
{
    const auto v = raw(key);
    return v ? toBool(*v).value_or(false) : false;
}

std::optional<QString> SettingsStore::stringForKey(const QString& key) const
{
    const auto v = raw(key);
    if (!v || v->typeId() != QMetaType::QString)
        return std::nullopt;
    return v->toString();
}

std::optional<QByteArray> SettingsStore::dataForKey(const QString& key) const
{
    const auto v = raw(key);
    if (!v || v->typeId() != QMetaType::QByteArray)
        return std::nullopt;
    return v->toByteArray();
}

double SettingsStore::value(DoubleSetting setting, double readerDefault) const
{
    const auto v = raw(QLatin1String(setting.name));
    return v ? toDouble(*v).value_or(readerDefault) : readerDefault;
}

int SettingsStore::value(IntSetting setting, int readerDefault) const
{
    const auto v = raw(QLatin1String(setting.name));
    return v ? toInt(*v).value_or(readerDefault) : readerDefault;
}

bool SettingsStore::value(BoolSetting setting, bool readerDefault) const
{
    const auto v = raw(QLatin1String(setting.name));
    return v ? toBool(*v).value_or(readerDefault) : readerDefault;
}

QString SettingsStore::value(StringSetting setting) const
{
    return stringForKey(QLatin1String(setting.name)).value_or(QString::fromUtf8(setting.defaultValue));
}

void SettingsStore::write(const QString& key, const QVariant& value)
{
    {
        QMutexLocker lock(&mutex);
        const QVariant old = settings->value(key);
        if (old.isValid() && old.typeId() == value.typeId() && old == value)
            return;
        settings->setValue(key, value);
    }
    Q_EMIT changed(key);
}

void SettingsStore::setDouble(const QString& key, double value) { write(key, QVariant(value)); }
void SettingsStore::setInteger(const QString& key, int value) { write(key, QVariant(value)); }
void SettingsStore::setBool(const QString& key, bool value) { write(key, QVariant(value)); }
void SettingsStore::setString(const QString& key, const QString& value) { write(key, QVariant(value)); }
void SettingsStore::setData(const QString& key, const QByteArray& value) { write(key, QVariant(value)); }

void SettingsStore::remove(const QString& key)
{
    {
        QMutexLocker lock(&mutex);
        if (!settings->contains(key))
            return;
        settings->remove(key);
    }
    Q_EMIT changed(key);
}

QByteArray SettingsStore::colorBytes(const QColor& color) { return color.name(QColor::HexArgb).toUpper().toLatin1(); }

std::optional<QColor> SettingsStore::colorFromBytes(const QByteArray& bytes)
{
    if (bytes.size() != 9 || bytes.front() != '#' ||
        !std::all_of(bytes.begin() + 1, bytes.end(), [](char c) { return std::isxdigit(uchar(c)); }))
        return std::nullopt;
    bool ok = false;
    const uint argb = bytes.mid(1).toUInt(&ok, 16);
    if (!ok)
        return std::nullopt;
    return QColor::fromRgba(argb);
}

void SettingsStore::saveColor(DataSetting setting, const QColor& color)
{
    if (!color.isValid())
        return;
    set(setting, colorBytes(color));
}

QColor SettingsStore::loadColor(DataSetting setting, const QColor& defaultColor) const
{
    const auto bytes = value(setting);
    if (!bytes)
        return defaultColor;
    return colorFromBytes(*bytes).value_or(defaultColor);
}

void SettingsStore::sync()
{
    QMutexLocker lock(&mutex);
    settings->sync();
}

} // namespace tb
