#pragma once

#include "SettingsKeys.h"

#include <QByteArray>
#include <QColor>
#include <QMutex>
#include <QObject>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

namespace tb {

// The per-user preferences: one flat key-value store over QSettings. Readers hold their own
// defaults; plain reads of an absent key give 0, 0, false or nothing. Every write that changes a
// value emits changed(key), so views bound to a key follow writes made anywhere. Safe to read
// from background threads; changed() is emitted on the writing thread.
class SettingsStore : public QObject {
    Q_OBJECT
public:
    // The user's store, ~/.config/Tallowbrook/Tallowbrook.conf.
    explicit SettingsStore(QObject* parent = nullptr);
    // A store in the given file (tests, and a store kept elsewhere).
    explicit SettingsStore(const QString& filePath, QObject* parent = nullptr);
    ~SettingsStore() override;

    // Plain reads.
    bool contains(const QString& key) const;
    double doubleForKey(const QString& key) const;
    int integerForKey(const QString& key) const;
    bool boolForKey(const QString& key) const;
    std::optional<QString> stringForKey(const QString& key) const;
    std::optional<QByteArray> dataForKey(const QString& key) const;

    // Reads with the reader's default, taken when the key is absent or holds no such value.
    double value(DoubleSetting setting) const { return value(setting, setting.defaultValue); }
    double value(DoubleSetting setting, double readerDefault) const;
    int value(IntSetting setting) const { return value(setting, setting.defaultValue); }
    int value(IntSetting setting, int readerDefault) const;
    bool value(BoolSetting setting) const { return value(setting, setting.defaultValue); }
    bool value(BoolSetting setting, bool readerDefault) const;
    QString value(StringSetting setting) const;
    std::optional<QByteArray> value(DataSetting setting) const { return dataForKey(QLatin1String(setting.name)); }

    void setDouble(const QString& key, double value);
    void setInteger(const QString& key, int value);
    void setBool(const QString& key, bool value);
    void setString(const QString& key, const QString& value);
    void setData(const QString& key, const QByteArray& value);
    void remove(const QString& key);

    void set(DoubleSetting setting, double v) { setDouble(QLatin1String(setting.name), v); }
    void set(IntSetting setting, int v) { setInteger(QLatin1String(setting.name), v); }
    void set(BoolSetting setting, bool v) { setBool(QLatin1String(setting.name), v); }
    void set(StringSetting setting, const QString& v) { setString(QLatin1String(setting.name), v); }
    void set(DataSetting setting, const QByteArray& v) { setData(QLatin1String(setting.name), v); }
    void remove(DataSetting setting) { remove(QLatin1String(setting.name)); }

    // Colours are kept as the bytes of their "#AARRGGBB" text, the same bytes a document carries.
    // An invalid colour is not stored and the key keeps its value.
    void saveColor(DataSetting setting, const QColor& color);
    // Bytes that are not such a colour read as the reader's default.
    QColor loadColor(DataSetting setting, const QColor& defaultColor) const;
    static QByteArray colorBytes(const QColor& color);
    static std::optional<QColor> colorFromBytes(const QByteArray& bytes);

    // Writes pending changes to disk.
    void sync();

Q_SIGNALS:
    void changed(const QString& key);

private:
    std::optional<QVariant> raw(const QString& key) const;
    void write(const QString& key, const QVariant& value);

    mutable QMutex mutex;
    std::unique_ptr<QSettings> settings; // — guarded by mutex
};

} // namespace tb
