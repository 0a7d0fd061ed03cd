#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

// Measures how long the GUI thread is ever kept from its event loop: a 10 ms timer that notes
// how much later than due each tick comes.
class StallProbe {
public:
    StallProbe()
    {
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, [this] {
            const qint64 now = clock.nsecsElapsed();
            worst = std::max(worst, now - last - qint64(10'000'000));
            last = now;
        });
    }
    void start()
    {
        clock.start();
        last = 0;
        timer.start(10);
    }
    double worstMs() const { return double(std::max<qint64>(worst, 0)) / 1e6; }

private:
    QElapsedTimer clock;
    QTimer timer;
    qint64 last = 0;
    qint64 worst = 0;
};
