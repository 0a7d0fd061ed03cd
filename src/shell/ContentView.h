#pragma once

#include "CommandBus.h"
#include "media/IdentifiableImage.h"

#include <QList>
#include <QMainWindow>

class QAction;

namespace tb {

struct AppServices;
struct SlideshowDocument;

// A main window: its own queue and controls, the shared services, and the program's menus.
// Every open main window reacts to every command posted on the bus.
class ContentView final : public QMainWindow {
    Q_OBJECT
public:
    explicit ContentView(AppServices& services, QWidget* parent = nullptr);

    // "New Slideshow": another main window with its own state, centred, at the present level.
    static ContentView* openNewWindow(AppServices& services);

    const QList<IdentifiableImage>& queue() const { return images; }

    // Sets or clears the floating level of every main window; ordering to the front is for the
    // menu toggle only.
    static void applyFloatOnTop(bool floatOnTop, bool orderFront);

Q_SIGNALS:
    // A document to restore into this window, from the file manager or a second launch.
    void documentReceived(const tb::SlideshowDocument& document);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildMenus();
    void handle(Command command, const QVariantMap& userInfo);
    void startCommand();
    void setFloating(bool floating);

    AppServices& services;
    QList<IdentifiableImage> images;
    QAction* floatOnTopAction = nullptr;
    bool appeared = false;
};

} // namespace tb
