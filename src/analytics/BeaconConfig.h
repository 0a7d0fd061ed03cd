#pragma once

#include "BeaconConsentManager.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace tb {

// Crash reporting, as a name in BeaconConfig::features. The desktop client accepts it and has
// nothing to start for it.
inline constexpr char BCNCrashReporting[] = "BCNCrashReporting";

// What the program tells the analytics client when it starts it. Fields left alone keep the
// client's defaults.
struct BeaconConfig {
    QString host;   // the analytics server, e.g. "https://analytics.example.org"; required
    QString appKey; // required
    QStringList features;

    double updateSessionPeriod = 60.0; // seconds between session updates and event sends
    int eventSendThreshold = 100;      // this many recorded events are sent at once
    bool enableDebug = false;          // the client's own lines reach the log only when true

    int storedRequestsLimit = 1000;
    int maxKeyLength = 128;
    int maxValueLength = 256;
    int maxSegmentationValues = 100;

    bool requiresConsent = false;
    QList<BeaconFeature> consents; // given at start
    bool manualSessionHandling = false;

    QString deviceID;                 // empty: a generated id, kept across runs
    bool resetStoredDeviceID = false; // forget the stored id and set it up again
    bool alwaysUsePOST = false;
    int requestDropAgeHours = 0; // 0: requests never age out
    QString secretSalt;          // set: every request carries checksum256
    QMap<QString, QString> customMetrics;
};

} // namespace tb
