#pragma once

#include "core/Scheduler.h"

#include <QObject>

#include <functional>

namespace tb {

// Hides the pointer over a full-screen show after a second without input, until it moves again.
// It watches the whole application's input while it lives and stops watching (showing the pointer
// again) when it goes, with its show.
class CursorHider final : public QObject {
    Q_OBJECT
public:
    // `mayHide` is asked when the second is up: the show full screen, the program active, the
    // pointer on the show's screen.
    CursorHider(Scheduler& scheduler, std::function<bool()> mayHide, QObject* parent = nullptr);
    ~CursorHider() override;

    bool isHidden() const { return hidden; }

    static constexpr double cursorHideDelay = 1.0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void restart();
    void hide();
    void show();

    Scheduler& scheduler;
    std::function<bool()> mayHide;
    TaskId cursorTimer = 0;
    bool hidden = false;
};

} // namespace tb
