#pragma once

#include <QIcon>
#include <QStyle>

class QLabel;
class QWidget;

namespace tb {

// A themed icon by its freedesktop name, or the style's own when the theme lacks it.
QIcon icon(const QWidget* widget, const char* themeName, QStyle::StandardPixmap fallback);

// An icon and a wrapping text side by side; the text moves into the returned line.
QWidget* iconLine(QWidget* parent, const QIcon& lineIcon, QLabel* text);

} // namespace tb
