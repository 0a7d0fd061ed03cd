#include "SleepPreventer.h"

#include "core/Logger.h"
#include "core/SleepInhibitor.h"

namespace tb {

void SleepPreventer::preventSleep()
{
    const auto result = inhibitor.inhibit(QStringLiteral("Tallowbrook is running a slideshow"));
    if (const quint32* cookie = std::get_if<quint32>(&result)) {
        id = *cookie;
        logInfo(QStringLiteral("Display sleep prevented (assertionID: %1)").arg(id));
    } else {
        logInfo(QStringLiteral("Failed to prevent display sleep (error code: %1)").arg(std::get<QString>(result)));
    }
}

void SleepPreventer::allowSleep()
{
    if (id == 0)
        return;
    if (const auto error = inhibitor.uninhibit(id)) {
        logInfo(QStringLiteral("Failed to allow display sleep (error code: %1)").arg(*error));
        return;
    }
    logInfo(QStringLiteral("Display sleep allowed (released assertionID: %1)").arg(id));
    id = 0;
}

} // namespace tb
