#pragma once

#include "core/SleepInhibitor.h"

namespace tb {

// org.freedesktop.ScreenSaver.Inhibit / UnInhibit on the session bus, asked without waiting;
// the cookie is the id and a D-Bus error's name is the error code.
class DBusSleepInhibitor final : public SleepInhibitor {
public:
    void inhibit(const QString& reason, Inhibited done) override;
    void uninhibit(quint32 id, Released done) override;
};

} // namespace tb
