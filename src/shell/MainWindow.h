#pragma once

#include <QMainWindow>

namespace tb {

class AppServices;

// The main window: the queue and its controls live here. Every window has its own state and
// shares the process-wide services.
class MainWindow final : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(AppServices& services, QWidget* parent = nullptr);

private:
    void buildMenus();

    AppServices& services;
};

} // namespace tb
