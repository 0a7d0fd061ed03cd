// Built instead of X11IdleTimeSource.cpp when the X libraries (x11, xscrnsaver) were missing at
// configure time: the program then learns the idle time over D-Bus only.
#include "X11IdleTimeSource.h"

namespace tb {

const bool X11IdleTimeSource::builtWithX11 = false;

struct X11IdleTimeSource::Connection {};

X11IdleTimeSource::X11IdleTimeSource() = default;

X11IdleTimeSource::X11IdleTimeSource(QByteArray) {}

X11IdleTimeSource::~X11IdleTimeSource() = default;

std::optional<double> X11IdleTimeSource::ask() { return std::nullopt; }

} // namespace tb
