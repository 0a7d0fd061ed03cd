#pragma once

namespace tb {

// What the settings panels need of the screen-saver idle watcher.
class IdleWatching {
public:
    virtual ~IdleWatching() = default;
    // The idle watcher re-reads the idle minutes and starts counting again.
    virtual void restart() = 0;
};

// The program's stand-in until the screen-saver watcher exists: the screen-saver watcher
// replaces it, and the panels reach whichever is there through IdleWatching.
class NoIdleWatcher final : public IdleWatching {
public:
    void restart() override {}
};

} // namespace tb
