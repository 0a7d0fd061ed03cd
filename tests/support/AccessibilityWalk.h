#pragma once

#include "support/QtPrinting.h"

#include <QAbstractSpinBox>
#include <QCoreApplication>
#include <QEvent>
#include <QStringList>
#include <QWidget>

namespace tb::test {

// What a screen reader meets in a window: the controls that can take focus and have no name,
// by class; `checked` counts the controls looked at.
inline QStringList unnamedFocusableControls(QWidget* window, int& checked)
{
    // Widgets dropped with deleteLater() would be gone had the event loop run.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QStringList unnamed;
    checked = 0;
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        // A spin box's editor is part of the spin box, which carries the name; a picker's list is
        // a popup window of its own.
        if (widget->focusPolicy() == Qt::NoFocus || qobject_cast<QAbstractSpinBox*>(widget->parentWidget()) ||
            widget->window() != window)
            continue;
        ++checked;
        if (widget->accessibleName().isEmpty())
            unnamed.append(QString::fromLatin1(widget->metaObject()->className()) + QStringLiteral(" in ") +
                           QString::fromLatin1(widget->parentWidget()->metaObject()->className()));
    }
    return unnamed;
}

} // namespace tb::test
