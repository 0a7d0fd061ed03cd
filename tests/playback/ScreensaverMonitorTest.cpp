#include "PlayerHarness.h"
#include "playback/GridView.h"
#include "playback/ScreensaverEventMonitor.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWindow>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

void send(QObject* target, QEvent&& event) { QCoreApplication::sendEvent(target, &event); }

QMouseEvent mouse(QEvent::Type type, Qt::MouseButton button, QPointF global)
{
    return QMouseEvent(type, QPointF(5, 5), QPointF(5, 5), global, button, button, Qt::NoModifier);
}

} // namespace

// The five kinds of input end a screen-saver show; releases, the middle button and a move that
// leaves the pointer where it was do not; a stopped monitor hears nothing.
TEST(ScreensaverMonitor, OnlyRealInputCounts)
{
    QWindow window;
    int inputs = 0;
    auto monitor = std::make_unique<ScreensaverEventMonitor>([&inputs] { ++inputs; }, QPointF(100, 100));
    send(&window, QKeyEvent(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier));
    send(&window, mouse(QEvent::MouseButtonPress, Qt::MiddleButton, QPointF(100, 100)));
    send(&window, mouse(QEvent::MouseButtonRelease, Qt::LeftButton, QPointF(100, 100)));
    send(&window, mouse(QEvent::MouseMove, Qt::NoButton, QPointF(100, 100)));
    EXPECT_EQ(inputs, 0);

    send(&window, mouse(QEvent::MouseButtonPress, Qt::LeftButton, QPointF(100, 100)));
    send(&window, mouse(QEvent::MouseButtonPress, Qt::RightButton, QPointF(100, 100)));
    send(&window, QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier));
    send(&window, QWheelEvent(QPointF(5, 5), QPointF(100, 100), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                              Qt::NoScrollPhase, false));
    send(&window, mouse(QEvent::MouseMove, Qt::NoButton, QPointF(101, 100)));
    EXPECT_EQ(inputs, 5);

    ScreensaverEventMonitor::dispose(monitor);
    send(&window, QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier));
    EXPECT_EQ(inputs, 5);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    // Where the pointer's place is unknown at the start, the first move tells it and the next
    // one counts.
    inputs = 0;
    ScreensaverEventMonitor unplaced([&inputs] { ++inputs; }, std::nullopt);
    send(&window, mouse(QEvent::MouseMove, Qt::NoButton, QPointF(400, 300)));
    send(&window, mouse(QEvent::MouseMove, Qt::NoButton, QPointF(400, 300)));
    EXPECT_EQ(inputs, 0);
    send(&window, mouse(QEvent::MouseMove, Qt::NoButton, QPointF(401, 300)));
    EXPECT_EQ(inputs, 1);
}

// Both players end a screen-saver show at the first key and stop watching; other shows ignore input.
TEST(ScreensaverMonitor, PlayersEndScreenSaverShowsAtTheFirstInput)
{
    QWindow window;
    for (bool screensaver : {false, true}) {
        PlayerHarness single;
        SlideshowConfiguration c;
        c.slideshowDelay = 3.0;
        c.screensaverMode = screensaver;
        single.start(3, c);
        GridHarness grid;
        GridConfiguration g;
        g.rows = g.columns = 2;
        g.screensaverMode = screensaver;
        grid.start(6, g);
        send(&window, QKeyEvent(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier));
        EXPECT_EQ(single.player->hasStoppedSlideshow(), screensaver);
        EXPECT_EQ(single.closes, screensaver ? 1 : 0);
        EXPECT_EQ(grid.closes, screensaver ? 1 : 0);
        send(&window, QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
        EXPECT_EQ(single.closes, screensaver ? 1 : 0) << "stopped once, however many keys follow";
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}
