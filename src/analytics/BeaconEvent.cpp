#include "BeaconEvent.h"

namespace tb {

QJsonObject BeaconEvent::dictionaryRepresentation() const
{
    QJsonObject dictionary{
        {QStringLiteral("key"), key},        {QStringLiteral("id"), ID},
        {QStringLiteral("cvid"), CVID},      {QStringLiteral("pvid"), PVID},
        {QStringLiteral("peid"), PEID},      {QStringLiteral("count"), count},
        {QStringLiteral("sum"), sum},        {QStringLiteral("timestamp"), timestamp},
        {QStringLiteral("hour"), hourOfDay}, {QStringLiteral("dow"), dayOfWeek},
        {QStringLiteral("dur"), duration},
    };
    if (!segmentation.isEmpty()) {
        QJsonObject values;
        for (auto it = segmentation.cbegin(); it != segmentation.cend(); ++it)
            values.insert(it.key(), it.value());
        dictionary.insert(QStringLiteral("segmentation"), values);
    }
    return dictionary;
}

} // namespace tb
