#include "AppServices.h"
#include "MainWindow.h"
#include "core/Version.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Tallowbrook"));
    QApplication::setApplicationName(QStringLiteral("Tallowbrook"));
    QApplication::setApplicationVersion(QString::fromLatin1(tb::appVersion));
    QApplication::setDesktopFileName(QStringLiteral("com.tallowbrook.Tallowbrook"));

    tb::AppServices services;
    services.analytics().beginSession();

    tb::MainWindow window(services);
    window.show();

    // The program ends with its last main window; the stored settings are written out first.
    QObject::connect(&app, &QApplication::aboutToQuit, [&services] {
        services.settings().sync();
        services.analytics().endSession();
    });
    return app.exec();
}
