#pragma once

#include <QMap>
#include <QSizeF>
#include <QString>

namespace tb {

class BeaconLog;
class SettingsStore;

// The screen the metrics describe: its size in device-independent pixels and its scale.
struct BeaconScreen {
    QSizeF size;
    double devicePixelRatio = 1.0;
};

// How the device id came about; the raw values are what requests carry as `t`.
enum class BeaconDeviceIDType {
    BCNDeviceIDTypeCustom = 0,
    BCNDeviceIDTypeIDFV = 1,
    BCNDeviceIDTypeNSUUID = 2,
    BCNDeviceIDTypeTemporary = 9,
};

// The device id, kept in the settings store across runs, and the metrics sent when a session
// begins. Set up on the GUI thread at start and only read after that.
class BeaconDeviceInfo {
public:
    // An id given as this text is a stand-in: requests made under it wait in the queue.
    static constexpr char temporaryDeviceID[] = "BCNTemporaryDeviceID";

    BeaconDeviceInfo(SettingsStore& settings, const BeaconLog& log, BeaconScreen screen, QString appVersion);

    // The id of an earlier run, if there is one: true when it was taken.
    bool useStoredDeviceID();
    // givenID empty: the generated id of this installation (made once, then kept); otherwise
    // givenID. Either way it is stored as the device id for later runs.
    void initializeDeviceID(const QString& givenID);

    QString deviceID() const { return id; }
    BeaconDeviceIDType deviceIDType() const { return type; }
    // The wire value of a type; -1 for a value outside the defined ones.
    int deviceIDTypeValue(BeaconDeviceIDType idType) const;

    // The begin-session metrics as compact JSON, custom ones on top of the device's.
    QString metrics(const QMap<QString, QString>& customMetrics = {}) const;
    QString resolution() const;
    QString density() const;
    // The machine's model from its firmware tables, or "Linux PC".
    static QString device();

private:
    static BeaconDeviceIDType typeOf(const QString& deviceID, bool custom);

    SettingsStore& settings;
    const BeaconLog& log;
    BeaconScreen screen;
    QString appVersion;
    QString id;
    BeaconDeviceIDType type = BeaconDeviceIDType::BCNDeviceIDTypeNSUUID;
};

} // namespace tb
