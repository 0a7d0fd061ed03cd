#include "SleepPreventer.h"

#include "core/Logger.h"
#include "core/SleepInhibitor.h"

namespace tb {

struct SleepPreventer::Hold {
    quint32 id = 0;
    bool asking = false;        // an inhibit awaits its answer
    bool releasing = false;     // an uninhibit awaits its answer
    bool releaseWanted = false; // released while still asking
};

SleepPreventer::SleepPreventer(SleepInhibitor& inhibitor) : inhibitor(inhibitor), hold(std::make_shared<Hold>()) {}

SleepPreventer::~SleepPreventer()
{
    if (hold->asking)
        hold->releaseWanted = true;
}

quint32 SleepPreventer::assertionID() const { return hold->id; }

void SleepPreventer::preventSleep()
{
    hold->asking = true;
    hold->releaseWanted = false;
    SleepInhibitor& desktop = inhibitor;
    inhibitor.inhibit(
        QStringLiteral("Tallowbrook is running a slideshow"),
        [held = hold, &desktop](const std::variant<quint32, QString>& result) {
            held->asking = false;
            if (const quint32* cookie = std::get_if<quint32>(&result)) {
                held->id = *cookie;
                logInfo(QStringLiteral("Display sleep prevented (assertionID: %1)").arg(held->id));
                if (held->releaseWanted)
                    release(desktop, held);
            } else {
                logInfo(
                    QStringLiteral("Failed to prevent display sleep (error code: %1)").arg(std::get<QString>(result)));
            }
        });
}

void SleepPreventer::allowSleep()
{
    if (hold->asking) {
        hold->releaseWanted = true;
        return;
    }
    release(inhibitor, hold);
}

void SleepPreventer::release(SleepInhibitor& inhibitor, const std::shared_ptr<Hold>& hold)
{
    if (hold->id == 0 || hold->releasing)
        return;
    hold->releasing = true;
    const quint32 id = hold->id;
    inhibitor.uninhibit(id, [hold, id](const std::optional<QString>& error) {
        hold->releasing = false;
        if (error) {
            logInfo(QStringLiteral("Failed to allow display sleep (error code: %1)").arg(*error));
            return;
        }
        logInfo(QStringLiteral("Display sleep allowed (released assertionID: %1)").arg(id));
        if (hold->id == id)
            hold->id = 0;
    });
}

} // namespace tb
