#pragma once

#include <QObject>
#include <QPointF>

#include <functional>
#include <memory>
#include <optional>

namespace tb {

// Ends a screen-saver show at the first input: a left or right button press, a pointer move, a
// key press or a wheel turn anywhere in the program. Events go on to their targets as usual. A
// move that leaves the pointer where it was is no input: a show's window appearing under a still
// pointer must not end it. Where the platform can't tell where the pointer is (Wayland keeps the
// global pointer from its clients), the first move only says where it is. Watches from
// construction to destruction.
class ScreensaverEventMonitor final : public QObject {
    Q_OBJECT
public:
    ScreensaverEventMonitor(std::function<void()> onInput, std::optional<QPointF> pointer, QObject* parent = nullptr);
    ~ScreensaverEventMonitor() override;

    // Stops watching at once; safe from inside the input callback.
    void stop();
    // Stops watching, and goes once the event being delivered is done with.
    static void dispose(std::unique_ptr<ScreensaverEventMonitor>& monitor);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void()> onInput;
    std::optional<QPointF> lastPointer; // global
};

} // namespace tb
