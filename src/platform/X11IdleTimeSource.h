#pragma once

#include "core/IdleTimeProbe.h"

#include <QByteArray>

#include <memory>

namespace tb {

// The X server's idle time, from its MIT-SCREEN-SAVER extension: the fallback for desktops that
// offer none over D-Bus (plain X11 window managers). The program's own display is asked only when
// Qt runs on X11, since under Wayland an X server (Xwayland) sees the input of X clients only.
// Without the extension, or in a build made without the X libraries, it knows nothing.
class X11IdleTimeSource final : public IdleTimeProbe {
public:
    // The display the program runs on, when that is X11.
    X11IdleTimeSource();
    // A connection of its own to `displayName` (":1"), whatever the program runs on.
    explicit X11IdleTimeSource(QByteArray displayName);
    ~X11IdleTimeSource() override;
    X11IdleTimeSource(const X11IdleTimeSource&) = delete;
    X11IdleTimeSource& operator=(const X11IdleTimeSource&) = delete;

    std::optional<double> ask() override;

    // False when the X libraries were missing at build time, and every answer is "don't know".
    static const bool builtWithX11;

private:
    // The connection is made at the first question, when the application (and Qt's own
    // connection) exists; it is kept for the program's life.
    struct Connection;
    std::unique_ptr<Connection> connection;
};

} // namespace tb
