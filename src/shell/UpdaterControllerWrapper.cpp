#include "UpdaterControllerWrapper.h"

#include "core/UserDialogs.h"

#include <cstdio>

namespace tb {

UpdaterControllerWrapper::UpdaterControllerWrapper(QObject* parent) : QObject(parent) {}

void UpdaterControllerWrapper::checkForUpdates(UserDialogs& dialogs)
{
    dialogs.alert(AlertStyle::Information, QStringLiteral("Check for Updates"),
                  QStringLiteral("Tallowbrook is updated by your system's package manager."));
}

void UpdaterControllerWrapper::updaterWillInstallUpdate(const QString& itemDescription)
{
    std::printf("Updater will install update: %s\n", itemDescription.toUtf8().constData());
    std::fflush(stdout);
}

void UpdaterControllerWrapper::updaterDidAbortWithError(const QString& error)
{
    std::printf("Updater did abort with error: %s\n", error.toUtf8().constData());
    std::fflush(stdout);
}

} // namespace tb
