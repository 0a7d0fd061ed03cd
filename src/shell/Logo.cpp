#include "Logo.h"

#include <QPainter>
#include <QPainterPath>

namespace tb {

QPixmap logoPixmap(int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 64.0, size / 64.0); // drawn on the icon's 64 × 64 grid
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x2d, 0x3a, 0x4a));
    painter.drawRoundedRect(QRectF(4, 10, 56, 44), 6, 6);
    painter.setBrush(QColor(0xf4, 0xe3, 0xb5));
    painter.drawRoundedRect(QRectF(10, 16, 44, 32), 2, 2);
    painter.setBrush(QColor(0xe8, 0xa3, 0x3d));
    painter.drawEllipse(QPointF(22, 25), 4, 4);
    QPainterPath hills;
    hills.moveTo(10, 48);
    for (const QPointF point : {QPointF(26, 32), QPointF(36, 41), QPointF(44, 34), QPointF(54, 44), QPointF(54, 48)})
        hills.lineTo(point);
    hills.closeSubpath();
    painter.setBrush(QColor(0x4f, 0x7a, 0x5a));
    painter.drawPath(hills);
    return pixmap;
}

} // namespace tb
