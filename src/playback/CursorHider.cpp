#include "CursorHider.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>

namespace tb {

CursorHider::CursorHider(Scheduler& scheduler, std::function<bool()> mayHide, QObject* parent)
    : QObject(parent), scheduler(scheduler), mayHide(std::move(mayHide))
{
    qApp->installEventFilter(this);
    restart();
}

CursorHider::~CursorHider()
{
    qApp->removeEventFilter(this);
    scheduler.cancel(cursorTimer);
    show();
}

// Only input counts: the show's own timers and repaints must not keep the pointer up.
bool CursorHider::eventFilter(QObject* watched, QEvent* event)
{
    if (event->isInputEvent()) {
        if (hidden && event->type() == QEvent::MouseMove)
            show();
        restart();
    }
    return QObject::eventFilter(watched, event);
}

void CursorHider::restart()
{
    scheduler.cancel(cursorTimer);
    cursorTimer = scheduler.after(cursorHideDelay, [this] {
        cursorTimer = 0;
        if (!hidden && mayHide())
            hide();
    });
}

void CursorHider::hide()
{
    QGuiApplication::setOverrideCursor(QCursor(Qt::BlankCursor));
    hidden = true;
}

void CursorHider::show()
{
    if (!hidden)
        return;
    QGuiApplication::restoreOverrideCursor();
    hidden = false;
}

} // namespace tb
