#include "X11IdleTimeSource.h"

#include <QGuiApplication>
#include <QtGui/qguiapplication_platform.h>

// Xlib's macros (None, Bool, Status…) would break Qt's headers: it comes last.
#include <X11/Xlib.h>
#include <X11/extensions/scrnsaver.h>

namespace tb {

const bool X11IdleTimeSource::builtWithX11 = true;

struct X11IdleTimeSource::Connection {
    explicit Connection(std::optional<QByteArray> displayName) : displayName(std::move(displayName)) {}
    ~Connection()
    {
        if (info)
            XFree(info);
        if (ownsDisplay)
            XCloseDisplay(display);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void open();

    std::optional<QByteArray> displayName; // none: the program's own display
    bool opened = false;
    Display* display = nullptr; // stays null without an X server that has the extension
    bool ownsDisplay = false;
    XScreenSaverInfo* info = nullptr;
};

void X11IdleTimeSource::Connection::open()
{
    opened = true;
    Display* candidate = nullptr;
    if (displayName) {
        candidate = XOpenDisplay(displayName->constData());
        ownsDisplay = candidate != nullptr;
    } else {
        if (!qGuiApp || QGuiApplication::platformName() != QLatin1String("xcb"))
            return;
        if (const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
            candidate = x11->display();
        // A Qt built without Xlib support has only its XCB connection: open one of ours to the
        // same server.
        if (!candidate) {
            candidate = XOpenDisplay(nullptr);
            ownsDisplay = candidate != nullptr;
        }
    }
    if (!candidate)
        return;
    // Asking a server without the extension would be an X protocol error, which Xlib's default
    // handler answers by ending the process.
    int eventBase = 0;
    int errorBase = 0;
    if (XScreenSaverQueryExtension(candidate, &eventBase, &errorBase))
        info = XScreenSaverAllocInfo();
    if (!info) {
        if (ownsDisplay)
            XCloseDisplay(candidate);
        ownsDisplay = false;
        return;
    }
    display = candidate;
}

X11IdleTimeSource::X11IdleTimeSource() : connection(std::make_unique<Connection>(std::nullopt)) {}

X11IdleTimeSource::X11IdleTimeSource(QByteArray displayName)
    : connection(std::make_unique<Connection>(std::move(displayName)))
{
}

X11IdleTimeSource::~X11IdleTimeSource() = default;

std::optional<double> X11IdleTimeSource::ask()
{
    if (!connection->opened)
        connection->open();
    if (!connection->display)
        return std::nullopt;
    if (!XScreenSaverQueryInfo(connection->display, DefaultRootWindow(connection->display), connection->info))
        return std::nullopt;
    return double(connection->info->idle) / 1000.0;
}

} // namespace tb
