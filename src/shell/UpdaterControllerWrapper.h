#pragma once

#include "core/Logger.h"
#include "core/Scheduler.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVersionNumber>

#include <chrono>
#include <functional>
#include <optional>
#include <variant>

class QNetworkAccessManager;
class QNetworkReply;

namespace tb {

class UserDialogs;

// What the update feed announces: the newest version, the page to download it from and what
// changed.
struct UpdateFeed {
    QVersionNumber version;
    QString versionText; // as the feed wrote it, for the user
    QUrl downloadPage;
    QString notes;
};

// Reads a feed's body: the feed, or a short reason why it is not one.
std::variant<UpdateFeed, QString> parseUpdateFeed(const QByteArray& body);

// The program's updater. A build made with a feed address checks that JSON feed now and then
// and on demand, and offers the download page of a newer version; a build without one leaves
// updates to the system's package manager and says so. The reports of a check are printed to
// standard output only, never to the log.
class UpdaterControllerWrapper final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isUpdateAvailable READ isUpdateAvailable NOTIFY isUpdateAvailableChanged)
public:
    using PageOpener = std::function<void(const QUrl&)>;
    using Printer = std::function<void(const QString&)>;

    static constexpr std::chrono::milliseconds defaultTransferTimeout{30'000};
    // A feed is a few hundred bytes; anything near this is not our feed.
    static constexpr qint64 maximumFeedBytes = 1024 * 1024;
    // The first background check waits until start-up is well over, so the program opens quickly
    // and no alert greets the user before the first window; after that, once a day is plenty for
    // a program that is released every few weeks.
    static constexpr double firstCheckDelay = 10 * 60;
    static constexpr double checkInterval = 24 * 60 * 60;

    // feedURL empty: no checks, the commands point at the package manager. transferTimeout ends a
    // check whose server stops sending for that long. print gets the console lines.
    UpdaterControllerWrapper(const QString& feedURL, Scheduler& scheduler, UserDialogs& dialogs, const QString& version,
                             std::chrono::milliseconds transferTimeout, PageOpener openPage, Printer print = printLine,
                             QObject* parent = nullptr);
    ~UpdaterControllerWrapper() override;

    bool isUpdateAvailable() const { return updateAvailable; }
    bool isChecking() const { return reply != nullptr; }

    // "Check for updates…": every outcome ends in an alert.
    void checkForUpdates();

Q_SIGNALS:
    void isUpdateAvailableChanged();

private:
    void startUpdater(const QString& feedURL);
    void check(bool userAsked);
    void readBody();
    void replyFinished();
    // Stops the running transfer and reports why.
    void abandon(const QString& reason);
    void report(const std::variant<UpdateFeed, QString>& outcome);
    void offer(const UpdateFeed& feed);
    void updaterWillInstallUpdate(const QString& version);
    void updaterDidAbortWithError(const QString& error);

    Scheduler& scheduler;
    UserDialogs& dialogs;
    QVersionNumber ourVersion;
    QString ourVersionText;
    std::chrono::milliseconds transferTimeout;
    PageOpener openPage;
    Printer print;

    std::optional<QUrl> feed;                 // absent: updates come from elsewhere
    QString startError;                       // why a feed address given was not used
    QNetworkAccessManager* network = nullptr; // made at the first check
    QNetworkReply* reply = nullptr;           // the check in flight, if any
    QByteArray body;
    bool reportToUser = false; // someone asked for the running check
    QVersionNumber offered;    // the newest version the user has been told of this run
    TaskId firstCheck = 0;
    TaskId dailyCheck = 0;
    bool updateAvailable = false; // nothing sets it: the check's own alerts tell the user
};

} // namespace tb
