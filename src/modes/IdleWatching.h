#pragma once

namespace tb {

// What the settings panels need of the screen-saver idle watcher.
class IdleWatching {
public:
    virtual ~IdleWatching() = default;
    // The idle watcher re-reads the idle minutes and starts counting again.
    virtual void restart() = 0;
};

} // namespace tb
