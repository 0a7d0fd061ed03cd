#pragma once

#include <QString>

#include <functional>
#include <optional>
#include <variant>

namespace tb {

// The desktop's hold on display sleep. Both calls answer later, on the GUI thread (the desktop
// may be slow or absent, and a show must not wait for it): inhibit with the hold's id or the
// error's code, uninhibit with nothing on success, else the error's code.
class SleepInhibitor {
public:
    using Inhibited = std::function<void(const std::variant<quint32, QString>& result)>;
    using Released = std::function<void(const std::optional<QString>& error)>;

    virtual ~SleepInhibitor() = default;
    virtual void inhibit(const QString& reason, Inhibited done) = 0;
    virtual void uninhibit(quint32 id, Released done) = 0;
};

} // namespace tb
