#pragma once

#include "core/SleepInhibitor.h"

namespace tb {

// org.freedesktop.ScreenSaver.Inhibit / UnInhibit on the session bus; the cookie is the id and a
// D-Bus error's name is the error code.
class DBusSleepInhibitor final : public SleepInhibitor {
public:
    std::variant<quint32, QString> inhibit(const QString& reason) override;
    std::optional<QString> uninhibit(quint32 id) override;
};

} // namespace tb
