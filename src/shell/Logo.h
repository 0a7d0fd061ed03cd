#pragma once

#include <QPixmap>

namespace tb {

// The program's logo (the picture of packaging/'s icon), drawn at any size: the Qt build on the
// desktop may lack SVG support.
QPixmap logoPixmap(int size);

} // namespace tb
