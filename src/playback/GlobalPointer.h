#pragma once

#include <QCursor>
#include <QGuiApplication>
#include <QPointF>

#include <optional>

namespace tb {

// The pointer's global position, where the windowing system tells it. On Wayland QCursor::pos()
// is only the last place the pointer was seen over one of our own windows, in coordinates the
// compositor doesn't share with its clients, so there is none.
inline std::optional<QPointF> globalPointer()
{
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        return std::nullopt;
    return QCursor::pos();
}

} // namespace tb
