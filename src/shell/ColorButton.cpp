#include "ColorButton.h"

#include <QColorDialog>
#include <QPainter>
#include <QPixmap>

namespace tb {

ColorButton::ColorButton(const QString& title, QWidget* parent)
    : QToolButton(parent), title(title), chooser([](const QColor& current, QWidget* owner, const QString& heading) {
          return QColorDialog::getColor(current, owner, heading);
      })
{
    setIconSize(QSize(36, 16));
    connect(this, &QToolButton::clicked, this, &ColorButton::choose);
    setColor(Qt::black);
}

void ColorButton::setColor(const QColor& color)
{
    shown = color;
    QPixmap swatch(iconSize());
    swatch.fill(color);
    QPainter frame(&swatch);
    frame.setPen(palette().color(QPalette::Mid));
    frame.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
    frame.end();
    setIcon(swatch);
    // A screen reader says which colour is set.
    setAccessibleDescription(color.name(QColor::HexArgb));
}

void ColorButton::setChooser(Chooser newChooser) { chooser = std::move(newChooser); }

void ColorButton::choose()
{
    const QColor chosen = chooser(shown, window(), title);
    if (!chosen.isValid())
        return;
    setColor(chosen);
    Q_EMIT colorChosen(chosen);
}

} // namespace tb
