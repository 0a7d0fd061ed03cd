#include "Toast.h"

#include <QGraphicsOpacityEffect>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>

namespace tb {

namespace {
constexpr int rise = 12; // points the message travels as it appears and goes
}

Toast::Toast(Scheduler& scheduler, QWidget* window)
    : QLabel(window), scheduler(scheduler), opacity(new QGraphicsOpacityEffect(this))
{
    setAlignment(Qt::AlignCenter);
    setStyleSheet(QStringLiteral("background: rgba(0, 0, 0, 160); color: white; border-radius: 10px; "
                                 "padding: 8px 16px;"));
    setGraphicsEffect(opacity);
    hide();
}

Toast::~Toast() { scheduler.cancel(hideTask); }

void Toast::showMessage(const QString& message)
{
    setText(message);
    setAccessibleName(message);
    adjustSize();
    const QWidget* window = parentWidget();
    const QPoint centre((window->width() - width()) / 2, (window->height() - height()) / 2);
    // A newer message replaces one still on screen where it stands.
    const bool replacing = isVisible();
    if (!replacing)
        opacity->setOpacity(0.0);
    leaving = false;
    raise();
    show();
    animate(1.0, replacing ? pos() : centre + QPoint(0, rise), centre);
    scheduler.cancel(hideTask);
    hideTask = scheduler.after(shownSeconds, [this] {
        hideTask = 0;
        leave();
    });
}

void Toast::leave()
{
    leaving = true;
    animate(0.0, pos(), pos() - QPoint(0, rise));
}

void Toast::animate(double toOpacity, QPoint from, QPoint to)
{
    if (animation)
        animation->stop();
    auto* group = new QParallelAnimationGroup(this);
    auto* fade = new QPropertyAnimation(opacity, "opacity", group);
    fade->setDuration(fadeMilliseconds);
    fade->setEndValue(toOpacity);
    auto* slide = new QPropertyAnimation(this, "pos", group);
    slide->setDuration(fadeMilliseconds);
    slide->setStartValue(from);
    slide->setEndValue(to);
    slide->setEasingCurve(QEasingCurve::OutCubic);
    connect(group, &QAbstractAnimation::finished, this, [this] {
        if (leaving)
            hide();
    });
    animation = group;
    group->start(QAbstractAnimation::DeleteWhenStopped);
}

} // namespace tb
