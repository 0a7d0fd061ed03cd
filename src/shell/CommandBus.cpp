#include "CommandBus.h"

#include <algorithm>

namespace tb {

void CommandBus::prune()
{
    std::erase_if(subscribers, [](const Subscriber& s) { return s.owner.isNull(); });
}

void CommandBus::subscribe(QObject* owner, Handler handler)
{
    prune();
    subscribers.push_back(Subscriber{owner, std::move(handler)});
    // A document opened from the file manager before any window was up is not lost: the first
    // window to listen gets it.
    std::vector<Held> waiting;
    waiting.swap(held);
    for (const Held& h : waiting)
        post(h.command, h.userInfo);
}

void CommandBus::unsubscribe(QObject* owner)
{
    std::erase_if(subscribers, [owner](const Subscriber& s) { return s.owner == owner || s.owner.isNull(); });
}

void CommandBus::post(Command command, const QVariantMap& userInfo)
{
    prune();
    if (subscribers.empty()) {
        if (command == Command::openSlideshowFromFinder)
            held.push_back(Held{command, userInfo});
        return;
    }
    // A handler may open a window (which subscribes) or close one: walk a snapshot.
    const std::vector<Subscriber> snapshot = subscribers;
    for (const Subscriber& s : snapshot)
        if (!s.owner.isNull())
            s.handler(command, userInfo);
}

int CommandBus::subscriberCount() const
{
    return int(
        std::count_if(subscribers.begin(), subscribers.end(), [](const Subscriber& s) { return !s.owner.isNull(); }));
}

} // namespace tb
