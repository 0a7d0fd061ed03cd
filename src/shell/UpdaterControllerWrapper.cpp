#include "UpdaterControllerWrapper.h"

#include "core/UserDialogs.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <utility>

namespace tb {

namespace {

const QString alertTitle = QStringLiteral("Check for Updates");

// Only web pages: a feed that named a local file or a program's scheme must not make us open it.
bool isWebAddress(const QUrl& url)
{
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"));
}

QString tooLarge() { return QStringLiteral("the feed is larger than 1 MiB"); }
QString cutShort() { return QStringLiteral("the connection closed before the whole feed arrived"); }

} // namespace

std::variant<UpdateFeed, QString> parseUpdateFeed(const QByteArray& body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError)
        return QStringLiteral("the feed is not JSON (%1)").arg(error.errorString());
    if (!document.isObject())
        return QStringLiteral("the feed is not a JSON object");
    const QJsonObject object = document.object();

    const QJsonValue version = object.value(QLatin1String("version"));
    if (!version.isString())
        return QStringLiteral("the feed has no \"version\" string");
    UpdateFeed feed;
    feed.versionText = version.toString();
    feed.version = QVersionNumber::fromString(feed.versionText);
    if (feed.version.isNull())
        return QStringLiteral("the feed's version \"%1\" is not a version number").arg(feed.versionText);

    const QJsonValue url = object.value(QLatin1String("url"));
    if (!url.isString())
        return QStringLiteral("the feed has no \"url\" string");
    feed.downloadPage = QUrl(url.toString(), QUrl::StrictMode);
    if (!isWebAddress(feed.downloadPage))
        return QStringLiteral("the feed's url \"%1\" is not an http or https address").arg(url.toString());

    const QJsonValue notes = object.value(QLatin1String("notes"));
    if (!notes.isUndefined() && !notes.isString())
        return QStringLiteral("the feed's \"notes\" is not a string");
    feed.notes = notes.toString();
    return feed;
}

UpdaterControllerWrapper::UpdaterControllerWrapper(const QString& feedURL, Scheduler& scheduler, UserDialogs& dialogs,
                                                   const QString& version, std::chrono::milliseconds transferTimeout,
                                                   PageOpener openPage, Printer print, QObject* parent)
    : QObject(parent),
      scheduler(scheduler),
      dialogs(dialogs),
      ourVersion(QVersionNumber::fromString(version)),
      ourVersionText(version),
      transferTimeout(transferTimeout),
      openPage(std::move(openPage)),
      print(std::move(print))
{
    startUpdater(feedURL);
}

UpdaterControllerWrapper::~UpdaterControllerWrapper()
{
    scheduler.cancel(firstCheck);
    scheduler.cancel(dailyCheck);
    if (reply) {
        reply->disconnect(this);
        reply->abort();
    }
}

void UpdaterControllerWrapper::startUpdater(const QString& feedURL)
{
    if (feedURL.isEmpty())
        return;
    const QUrl url(feedURL, QUrl::StrictMode);
    if (!url.isValid())
        startError = url.errorString();
    else if (!isWebAddress(url))
        startError = QStringLiteral("the feed address \"%1\" is not an http or https address").arg(feedURL);
    if (!startError.isEmpty()) {
        print(QStringLiteral("Error starting updater: ") + startError);
        return;
    }
    feed = url;
    firstCheck = scheduler.after(firstCheckDelay, [this] {
        firstCheck = 0;
        dailyCheck = scheduler.every(checkInterval, [this] { check(false); });
        check(false);
    });
}

void UpdaterControllerWrapper::checkForUpdates()
{
    if (feed) {
        check(true);
    } else if (startError.isEmpty()) {
        dialogs.alert(AlertStyle::Information, alertTitle,
                      QStringLiteral("Updates for Tallowbrook come from the system's package manager."));
    } else {
        // The build meant to carry a feed but its address is broken: the package manager is not
        // the answer then, so the user hears why no check can run.
        dialogs.alert(AlertStyle::Warning, alertTitle,
                      QStringLiteral("Tallowbrook could not check for updates: ") + startError);
    }
}

void UpdaterControllerWrapper::check(bool userAsked)
{
    if (reply) {
        // The running check answers for both; a user waiting on it gets its alerts.
        reportToUser = reportToUser || userAsked;
        return;
    }
    if (!network)
        network = new QNetworkAccessManager(this);
    reportToUser = userAsked;
    body.clear();

    QNetworkRequest request(*feed);
    request.setTransferTimeout(int(transferTimeout.count()));
    request.setRawHeader("Accept", "application/json");
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Tallowbrook/") + ourVersionText);
    reply = network->get(request);
    // With the reply's own buffer capped too, a server that sends without end costs us little
    // more than the cap before the check gives up.
    reply->setReadBufferSize(maximumFeedBytes + 1);
    connect(reply, &QNetworkReply::metaDataChanged, this, [this] {
        const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
        if (length.isValid() && length.toLongLong() > maximumFeedBytes)
            abandon(tooLarge());
    });
    connect(reply, &QNetworkReply::readyRead, this, &UpdaterControllerWrapper::readBody);
    connect(reply, &QNetworkReply::finished, this, &UpdaterControllerWrapper::replyFinished);
}

void UpdaterControllerWrapper::readBody()
{
    // One byte past the cap is enough to know.
    body += reply->read(maximumFeedBytes + 1 - body.size());
    if (body.size() > maximumFeedBytes)
        abandon(tooLarge());
}

void UpdaterControllerWrapper::replyFinished()
{
    if (reply->isReadable()) {
        readBody();
        if (!reply)
            return; // abandoned as too large
    }
    QNetworkReply* done = std::exchange(reply, nullptr);
    done->disconnect(this);
    done->deleteLater();

    const QVariant status = done->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const QVariant length = done->header(QNetworkRequest::ContentLengthHeader);
    if (status.isValid() && (status.toInt() < 200 || status.toInt() > 299)) {
        report(QStringLiteral("the server answered with HTTP status %1").arg(status.toInt()));
    } else if (done->error() == QNetworkReply::OperationCanceledError || done->error() == QNetworkReply::TimeoutError) {
        // We disconnect before aborting ourselves, so a cancel seen here is the transfer timeout.
        report(QStringLiteral("no answer from the feed within %1 s").arg(double(transferTimeout.count()) / 1000.0));
    } else if (done->error() == QNetworkReply::RemoteHostClosedError) {
        report(cutShort());
    } else if (done->error() != QNetworkReply::NoError) {
        report(done->errorString());
    } else if (length.isValid() && body.size() < length.toLongLong()) {
        report(cutShort());
    } else {
        report(parseUpdateFeed(body));
    }
}

void UpdaterControllerWrapper::abandon(const QString& reason)
{
    QNetworkReply* stopped = std::exchange(reply, nullptr);
    stopped->disconnect(this);
    stopped->abort();
    stopped->deleteLater();
    report(reason);
}

void UpdaterControllerWrapper::report(const std::variant<UpdateFeed, QString>& outcome)
{
    const bool userAsked = std::exchange(reportToUser, false);
    body.clear();
    if (const auto* reason = std::get_if<QString>(&outcome)) {
        updaterDidAbortWithError(*reason);
        if (userAsked)
            dialogs.alert(AlertStyle::Warning, alertTitle,
                          QStringLiteral("Tallowbrook could not check for updates: ") + *reason);
        return;
    }
    const UpdateFeed& found = std::get<UpdateFeed>(outcome);
    if (found.version > ourVersion) {
        // A background check tells of each version once; asking always answers.
        if (userAsked || found.version != offered)
            offer(found);
    } else if (userAsked) {
        dialogs.alert(AlertStyle::Information, alertTitle,
                      QStringLiteral("Tallowbrook %1 is up to date.").arg(ourVersionText));
    }
}

void UpdaterControllerWrapper::offer(const UpdateFeed& found)
{
    offered = found.version;
    QString text = QStringLiteral("Tallowbrook %1 is available. You have %2.").arg(found.versionText, ourVersionText);
    if (!found.notes.isEmpty())
        text += QStringLiteral("\n\n") + found.notes;
    const QuestionAnswer answer = dialogs.question(AlertStyle::Information, QStringLiteral("Update Available"), text,
                                                   {QStringLiteral("Download"), QStringLiteral("Later")});
    if (answer.dismissed || answer.button != 0)
        return;
    updaterWillInstallUpdate(found.versionText);
    openPage(found.downloadPage);
}

void UpdaterControllerWrapper::updaterWillInstallUpdate(const QString& version)
{
    print(QStringLiteral("Updater will install update: ") + version);
}

void UpdaterControllerWrapper::updaterDidAbortWithError(const QString& error)
{
    print(QStringLiteral("Updater did abort with error: ") + error);
}

} // namespace tb
