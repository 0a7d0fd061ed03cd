#pragma once

#include <QObject>
#include <QString>

namespace tb {

class UserDialogs;

// The program's updater. This build carries no update feed, so a check says that updates come
// from the system's package manager. The two reports of an update run are printed to standard
// output only, never to the log.
class UpdaterControllerWrapper final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isUpdateAvailable READ isUpdateAvailable NOTIFY isUpdateAvailableChanged)
public:
    explicit UpdaterControllerWrapper(QObject* parent = nullptr);

    bool isUpdateAvailable() const { return updateAvailable; }

    // "Check for updates…"
    void checkForUpdates(UserDialogs& dialogs);

    void updaterWillInstallUpdate(const QString& itemDescription);
    void updaterDidAbortWithError(const QString& error);

Q_SIGNALS:
    void isUpdateAvailableChanged();

private:
    bool updateAvailable = false; // nothing sets it yet; the check's own dialogs tell the user
};

} // namespace tb
