#pragma once

#include "core/Analytics.h"

#include <QJsonObject>
#include <QString>

namespace tb {

// One recorded event, as it goes to the server inside an events request.
struct BeaconEvent {
    QString key;
    Segmentation segmentation;
    QString ID;
    QString CVID; // current view; the program tracks no views, so empty
    QString PVID; // previous view
    QString PEID; // the event recorded before this one
    int count = 1;
    double sum = 0;
    qint64 timestamp = 0; // milliseconds since 1970
    int hourOfDay = 0;
    int dayOfWeek = 0;   // 0 for Sunday
    double duration = 0; // seconds

    // Names the client reserves for its own events. They are recorded under their own feature's
    // consent and are left out of the previous-event chain.
    static constexpr char reservedPrefix[] = "[BCN]_";
    static constexpr char viewEvent[] = "[BCN]_view";
    static constexpr char orientationEvent[] = "[BCN]_orientation";

    bool isReserved() const { return key.startsWith(QLatin1String(reservedPrefix)); }

    QJsonObject dictionaryRepresentation() const;
};

} // namespace tb
