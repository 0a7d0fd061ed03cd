#include "Logo.h"
#include "TallowbrookApp.h"
#include "core/Version.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Tallowbrook"));
    QApplication::setApplicationName(QStringLiteral("Tallowbrook"));
    QApplication::setApplicationVersion(QString::fromLatin1(tb::appVersion));
    QApplication::setDesktopFileName(QStringLiteral("com.tallowbrook.Tallowbrook"));
    QIcon icon;
    for (int size : {16, 32, 64, 128, 256})
        icon.addPixmap(tb::logoPixmap(size));
    QApplication::setWindowIcon(icon);

    tb::TallowbrookApp program;
    if (!program.start(QApplication::arguments()))
        return 0; // the running program took the request
    return app.exec();
}
