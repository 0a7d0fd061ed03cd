#include "BeaconConnectionManager.h"

#include "BeaconClock.h"
#include "BeaconConsentManager.h"
#include "BeaconDeviceInfo.h"
#include "BeaconLog.h"
#include "BeaconPersistency.h"
#include "BeaconQuery.h"
#include "core/Scheduler.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>

#include <cmath>

namespace tb {

BeaconConnectionManager::BeaconConnectionManager(BeaconPersistency& persistency, BeaconDeviceInfo& deviceInfo,
                                                 BeaconConsentManager& consents, BeaconClock& clock,
                                                 Scheduler& scheduler, const BeaconLog& log,
                                                 std::chrono::milliseconds transferTimeout, QObject* parent)
    : QObject(parent),
      persistency(persistency),
      deviceInfo(deviceInfo),
      consents(consents),
      clock(clock),
      scheduler(scheduler),
      log(log),
      transferTimeout(transferTimeout)
{
}

BeaconConnectionManager::~BeaconConnectionManager()
{
    // The request stays queued and goes again in the next run.
    if (connection) {
        connection->disconnect(this);
        connection->abort();
    }
}

QString BeaconConnectionManager::pointerText(const void* pointer)
{
    return QStringLiteral("0x%1").arg(quintptr(pointer), 0, 16);
}

QString BeaconConnectionManager::queryEssentials()
{
    const BeaconClock::Stamp stamp = clock.uniqueStamp();
    return QStringLiteral("app_key=") + escapedForQuery(appKey) +
           queryPair(QLatin1String("device_id"), deviceInfo.deviceID()) +
           queryPair(QLatin1String("t"), QString::number(deviceInfo.deviceIDTypeValue(deviceInfo.deviceIDType()))) +
           queryPair(QLatin1String("timestamp"), QString::number(stamp.timestamp)) +
           queryPair(QLatin1String("hour"), QString::number(stamp.hour)) +
           queryPair(QLatin1String("dow"), QString::number(stamp.dayOfWeek)) +
           queryPair(QLatin1String("tz"), QString::number(stamp.minutesFromGMT)) +
           queryPair(QLatin1String("sdk_version"), QLatin1String(sdkVersion)) +
           queryPair(QLatin1String("sdk_name"), QLatin1String(sdkName));
}

void BeaconConnectionManager::queue(const QString& query)
{
    persistency.addToQueue(query);
    proceedOnQueue();
}

int BeaconConnectionManager::sessionLengthInSeconds()
{
    const double now = scheduler.now();
    const double length = now - lastSessionStartTime + unsentSessionLength;
    const double whole = std::floor(length);
    unsentSessionLength = length - whole;
    lastSessionStartTime = now;
    return int(whole);
}

void BeaconConnectionManager::beginSession()
{
    if (!consents.hasConsent(BeaconFeature::Sessions))
        return;
    lastSessionStartTime = scheduler.now();
    unsentSessionLength = 0;
    queue(queryEssentials() + queryPair(QLatin1String("begin_session"), QStringLiteral("1")) +
          queryPair(QLatin1String("metrics"), deviceInfo.metrics(customMetrics)));
}

void BeaconConnectionManager::updateSession()
{
    if (!consents.hasConsent(BeaconFeature::Sessions))
        return;
    const QString essentials = queryEssentials();
    queue(essentials + queryPair(QLatin1String("session_duration"), QString::number(sessionLengthInSeconds())));
}

void BeaconConnectionManager::endSession()
{
    if (!consents.hasConsent(BeaconFeature::Sessions))
        return;
    const QString essentials = queryEssentials();
    queue(essentials + queryPair(QLatin1String("end_session"), QStringLiteral("1")) +
          queryPair(QLatin1String("session_duration"), QString::number(sessionLengthInSeconds())));
}

void BeaconConnectionManager::sendEvents()
{
    const std::optional<QString> events = persistency.serializedRecordedEvents();
    if (!events)
        return;
    queue(queryEssentials() + queryPair(QLatin1String("events"), *events));
}

void BeaconConnectionManager::sendConsentChanges(const QString& consentChanges)
{
    queue(queryEssentials() + queryPair(QLatin1String("consent"), consentChanges));
}

void BeaconConnectionManager::proceedOnQueue()
{
    log.info(QStringLiteral("Proceeding on queue..."));
    for (;;) {
        if (connection) {
            log.info(QStringLiteral("Proceeding on queue is aborted: Already has a request in process!"));
            return;
        }
        if (isCrashing) {
            log.info(QStringLiteral("Proceeding on queue is aborted: Application is crashing!"));
            return;
        }
        if (isTerminating) {
            log.info(QStringLiteral("Proceeding on queue is aborted: Application is terminating!"));
            return;
        }
        const std::optional<QString> first = persistency.firstItemInQueue();
        if (!first) {
            log.info(QStringLiteral("Queue is empty. All requests are processed."));
            return;
        }
        if (persistency.isOldRequest(*first)) {
            persistency.removeFromQueue(*first);
            persistency.saveToFile();
            continue;
        }
        if (queryValue(*first, QLatin1String("device_id")) == QLatin1String(BeaconDeviceInfo::temporaryDeviceID)) {
            log.info(QStringLiteral("Proceeding on queue is aborted: Device ID in request is BCNTemporaryDeviceID!"));
            return;
        }
        send(*first);
        return;
    }
}

void BeaconConnectionManager::send(const QString& item)
{
    QString query = item;
    const QString endpoint = takeQueryValue(query, QLatin1String("new_end_point")).value_or(QStringLiteral("/i"));
    query += queryPair(QLatin1String("rr"), QString::number(persistency.remainingRequestCount() - 1));
    // The checksum covers exactly the query the server receives, up to the checksum itself.
    if (!secretSalt.isEmpty()) {
        const QByteArray checksum = QCryptographicHash::hash((query + secretSalt).toUtf8(), QCryptographicHash::Sha256);
        query += queryPair(QLatin1String("checksum256"), QString::fromLatin1(checksum.toHex()));
    }

    const bool post = alwaysUsePOST || query.size() > maximumGETQueryLength;
    QNetworkRequest request;
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setTransferTimeout(int(transferTimeout.count()));
    if (post) {
        request.setUrl(QUrl(host + endpoint));
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/x-www-form-urlencoded"));
        connection = network.post(request, query.toUtf8());
    } else {
        request.setUrl(QUrl(host + endpoint + QLatin1Char('?') + query));
        connection = network.get(request);
    }
    QNetworkReply* reply = connection;
    connect(reply, &QNetworkReply::finished, this, [this, reply, item] { finished(reply, item); });
    log.info(QStringLiteral("Request <%1> started:\n[%2] %3")
                 .arg(pointerText(reply), post ? QStringLiteral("POST") : QStringLiteral("GET"),
                      request.url().toString() + (post ? QLatin1Char('\n') + query : QString())));
}

void BeaconConnectionManager::finished(QNetworkReply* reply, const QString& item)
{
    reply->deleteLater();
    if (reply != connection)
        return;
    connection = nullptr;

    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid()) {
        // No HTTP answer at all: refused, unreachable, timed out, or closed before a status line.
        log.warning(QStringLiteral("Request <%1> failed!\nError: %2").arg(pointerText(reply), reply->errorString()));
        return;
    }
    const QByteArray body = reply->readAll();
    log.info(QStringLiteral("Response recieved from server:\n%1\nFor Request: %2").arg(QString::fromUtf8(body), item));
    if (!isRequestSuccessful(status.toInt(), body)) {
        log.warning(
            QStringLiteral("Request <%1> failed!\nServer reply: %2").arg(pointerText(reply), QString::fromUtf8(body)));
        return;
    }
    log.info(QStringLiteral("Request <%1> successfully completed.").arg(pointerText(reply)));
    persistency.removeFromQueue(item);
    persistency.saveToFile();
    proceedOnQueue();
}

bool BeaconConnectionManager::isRequestSuccessful(int statusCode, const QByteArray& body) const
{
    if (statusCode < 200 || statusCode > 299) {
        log.warning(QStringLiteral("HTTP status code is not 2XX series."));
        return false;
    }
    QJsonParseError error;
    const QJsonDocument reply = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError) {
        log.warning(QStringLiteral("Server reply is not a valid JSON!"));
        return false;
    }
    return reply.isObject() && reply.object().contains(QLatin1String("result"));
}

} // namespace tb
