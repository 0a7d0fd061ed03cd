#pragma once

#include <QString>

#include <optional>
#include <variant>

namespace tb {

// The desktop's hold on display sleep. inhibit() gives the hold's id, or the error's code;
// uninhibit() gives nothing on success, else the error's code.
class SleepInhibitor {
public:
    virtual ~SleepInhibitor() = default;
    virtual std::variant<quint32, QString> inhibit(const QString& reason) = 0;
    virtual std::optional<QString> uninhibit(quint32 id) = 0;
};

} // namespace tb
