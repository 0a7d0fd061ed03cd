#include "MainWindow.h"

#include "AppServices.h"
#include "DiagnosticsExport.h"
#include "QtUserDialogs.h"
#include "core/Logger.h"

#include <QAction>
#include <QLabel>
#include <QMenuBar>

namespace tb {

MainWindow::MainWindow(AppServices& services, QWidget* parent) : QMainWindow(parent), services(services)
{
    // The log comes up with the first window at the latest.
    Logger::shared();
    setWindowTitle(QStringLiteral("Tallowbrook"));
    setMinimumSize(900, 700);
    auto* placeholder = new QLabel(tr("Drop photos, clips or folders here"), this);
    placeholder->setAlignment(Qt::AlignCenter);
    placeholder->setAccessibleName(placeholder->text());
    setCentralWidget(placeholder);
    buildMenus();
}

void MainWindow::buildMenus()
{
    QMenu* help = menuBar()->addMenu(tr("&Help"));
    QAction* exportLogs = help->addAction(QStringLiteral("Export Diagnostic Logs..."));
    exportLogs->setShortcut(QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_L));
    connect(exportLogs, &QAction::triggered, this, [this] {
        QtUserDialogs dialogs(this);
        exportDiagnosticLogs(Logger::shared(), dialogs, services.fileRevealer());
    });
}

} // namespace tb
