#pragma once

#include "core/Scheduler.h"

#include <QLabel>
#include <QPointer>

class QAbstractAnimation;
class QGraphicsOpacityEffect;

namespace tb {

// A short message in the middle of a window: it fades and rises into place, stays two seconds
// (timed on the scheduler), and fades away; a newer message replaces it at once and gets its
// own two seconds.
class Toast final : public QLabel {
public:
    Toast(Scheduler& scheduler, QWidget* window);
    ~Toast() override;

    void showMessage(const QString& message);
    // On screen and not on its way out.
    bool isShown() const { return isVisible() && !leaving; }

    static constexpr double shownSeconds = 2.0;
    static constexpr int fadeMilliseconds = 250;

private:
    void leave();
    void animate(double toOpacity, QPoint from, QPoint to);

    Scheduler& scheduler;
    TaskId hideTask = 0;
    QGraphicsOpacityEffect* opacity;
    QPointer<QAbstractAnimation> animation;
    bool leaving = false;
};

} // namespace tb
