#include "ScreensaverEventMonitor.h"

#include <QCoreApplication>
#include <QMouseEvent>

namespace tb {

ScreensaverEventMonitor::ScreensaverEventMonitor(std::function<void()> onInput, std::optional<QPointF> pointer,
                                                 QObject* parent)
    : QObject(parent), onInput(std::move(onInput)), lastPointer(pointer)
{
    QCoreApplication::instance()->installEventFilter(this);
}

ScreensaverEventMonitor::~ScreensaverEventMonitor() { stop(); }

void ScreensaverEventMonitor::stop()
{
    if (QCoreApplication* app = QCoreApplication::instance())
        app->removeEventFilter(this);
    onInput = nullptr;
}

void ScreensaverEventMonitor::dispose(std::unique_ptr<ScreensaverEventMonitor>& monitor)
{
    if (!monitor)
        return;
    monitor->stop();
    monitor.release()->deleteLater();
}

bool ScreensaverEventMonitor::eventFilter(QObject* watched, QEvent* event)
{
    bool input = false;
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const Qt::MouseButton button = static_cast<QMouseEvent*>(event)->button();
        input = button == Qt::LeftButton || button == Qt::RightButton;
        break;
    }
    case QEvent::MouseMove: {
        const QPointF pointer = static_cast<QMouseEvent*>(event)->globalPosition();
        input = lastPointer && pointer != *lastPointer;
        lastPointer = pointer;
        break;
    }
    case QEvent::KeyPress:
    case QEvent::Wheel:
        input = true;
        break;
    default:
        break;
    }
    if (input && onInput) {
        // The callback may stop this monitor; it is kept alive until the event is done with.
        const auto call = onInput;
        call();
    }
    return QObject::eventFilter(watched, event);
}

} // namespace tb
