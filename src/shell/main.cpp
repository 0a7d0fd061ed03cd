#include "TallowbrookApp.h"
#include "core/Version.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Tallowbrook"));
    QApplication::setApplicationName(QStringLiteral("Tallowbrook"));
    QApplication::setApplicationVersion(QString::fromLatin1(tb::appVersion));
    QApplication::setDesktopFileName(QStringLiteral("com.tallowbrook.Tallowbrook"));

    tb::TallowbrookApp program;
    if (!program.start(QApplication::arguments()))
        return 0; // the running program took the request
    return app.exec();
}
