#include "IconLine.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QWidget>

namespace tb {

QIcon icon(const QWidget* widget, const char* themeName, QStyle::StandardPixmap fallback)
{
    return QIcon::fromTheme(QLatin1String(themeName), widget->style()->standardIcon(fallback));
}

QWidget* iconLine(QWidget* parent, const QIcon& lineIcon, QLabel* text)
{
    auto* line = new QWidget(parent);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(0, 0, 0, 0);
    auto* picture = new QLabel(line);
    picture->setPixmap(lineIcon.pixmap(16, 16));
    row->addWidget(picture);
    row->addWidget(text, 1);
    text->setParent(line);
    text->setWordWrap(true);
    return line;
}

} // namespace tb
