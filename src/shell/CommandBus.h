#pragma once

#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include <functional>
#include <vector>

namespace tb {

// The menu commands and other program-wide requests, as the main windows receive them. Menus
// hold no link to a window: they post here, and every subscribed window reacts.
enum class Command {
    saveSlideshow,
    loadSlideshow,
    startSlideshow,
    openSlideshowFromFinder, // userInfo "document": a SlideshowDocument
    idleThresholdReached,
};

class CommandBus final : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(Command, const QVariantMap& userInfo)>;

    // Handlers run on the GUI thread, in subscription order, until `owner` is destroyed.
    // Documents posted while nobody listened are delivered to the first subscriber.
    void subscribe(QObject* owner, Handler handler);
    void unsubscribe(QObject* owner);
    // Delivered at once to every subscriber. Call on the GUI thread.
    void post(Command command, const QVariantMap& userInfo = {});

    int subscriberCount() const;

private:
    struct Subscriber {
        QPointer<QObject> owner;
        Handler handler;
    };
    struct Held {
        Command command;
        QVariantMap userInfo;
    };
    void prune();

    std::vector<Subscriber> subscribers;
    std::vector<Held> held;
};

} // namespace tb
