#include "BeaconPersistency.h"

#include "BeaconClock.h"
#include "BeaconLog.h"
#include "BeaconQuery.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutexLocker>
#include <QSaveFile>

#include <algorithm>

namespace tb {

namespace {

// A thousand requests of a few kilobytes each; a file far beyond that is not ours.
constexpr qint64 maximumFileBytes = 64 * 1024 * 1024;

} // namespace

BeaconPersistency::BeaconPersistency(const QString& storageFolder, QString appVersion, BeaconClock& clock,
                                     const BeaconLog& log, std::function<bool()> requestInFlight)
    : folder(storageFolder),
      storagePath(QDir(storageFolder).filePath(QLatin1String(fileName))),
      appVersion(std::move(appVersion)),
      clock(clock),
      log(log),
      requestInFlight(std::move(requestInFlight))
{
    writer.setMaxThreadCount(1);
    loadQueue();
}

BeaconPersistency::~BeaconPersistency() { writer.waitForDone(); }

void BeaconPersistency::loadQueue()
{
    QFile file(storagePath);
    if (!file.exists())
        return;
    QString problem;
    QStringList loaded;
    if (!file.open(QIODevice::ReadOnly)) {
        problem = file.errorString();
    } else if (file.size() > maximumFileBytes) {
        problem = QStringLiteral("the file is larger than %1 bytes").arg(maximumFileBytes);
    } else {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
        const QJsonValue requests = document.object().value(QLatin1String(kBeaconQueuedRequestsPersistencyKey));
        if (error.error != QJsonParseError::NoError)
            problem = error.errorString();
        else if (!requests.isArray())
            problem = QStringLiteral("no list of requests");
        for (const QJsonValue& request : requests.toArray()) {
            if (!request.isString()) {
                problem = QStringLiteral("a request is not text");
                break;
            }
            loaded.append(request.toString());
        }
    }
    if (!problem.isEmpty()) {
        // The requests are lost either way; starting empty lets the client go on reporting.
        logWarning(QStringLiteral("Analytics queue %1 cannot be read (%2); starting with an empty queue")
                       .arg(storagePath, problem));
        return;
    }
    QMutexLocker lock(&queueMutex);
    queue = loaded;
}

void BeaconPersistency::addToQueue(const QString& queryString)
{
    const QString request = queryString + queryPair(QLatin1String("av"), appVersion);
    QMutexLocker lock(&queueMutex);
    queue.append(request);
    const int limit = std::max(1, storedRequestsLimit);
    // The request in flight is the first, and must stay until its answer. Later adds drop one
    // request each, so what came in meanwhile keeps the queue above the limit: the oldest
    // requests are the last to be given up.
    if (queue.size() <= limit || requestInFlight())
        return;
    queue.removeIf([this](const QString& queued) { return isOldRequest(queued); });
    if (queue.size() > limit)
        queue.removeFirst();
}

void BeaconPersistency::removeFromQueue(const QString& queryString)
{
    QMutexLocker lock(&queueMutex);
    if (!queue.isEmpty() && queue.first() == queryString)
        queue.removeFirst();
}

std::optional<QString> BeaconPersistency::firstItemInQueue() const
{
    QMutexLocker lock(&queueMutex);
    return queue.isEmpty() ? std::nullopt : std::optional<QString>(queue.first());
}

int BeaconPersistency::remainingRequestCount() const
{
    QMutexLocker lock(&queueMutex);
    return int(queue.size());
}

QStringList BeaconPersistency::queuedRequests() const
{
    QMutexLocker lock(&queueMutex);
    return queue;
}

QString BeaconPersistency::truncated(const QString& text, int limit, const QString& what) const
{
    if (text.size() <= limit)
        return text;
    qsizetype length = std::max(0, limit);
    // Never cut between the two halves of a character outside the basic plane.
    if (length > 0 && text.at(length - 1).isHighSurrogate())
        --length;
    const QString cut = text.left(length);
    log.warning(QStringLiteral("%1 length is more than the limit (%2)! So, it will be truncated: %3.")
                    .arg(what, QString::number(limit), cut));
    return cut;
}

bool BeaconPersistency::recordEvent(BeaconEvent event)
{
    QMutexLocker lock(&recordedEventsMutex);
    event.key = truncated(event.key, maxKeyLength, QStringLiteral("Event key"));
    if (!event.segmentation.isEmpty()) {
        const QString what = QStringLiteral("Event segmentation");
        Segmentation limited;
        for (auto it = event.segmentation.cbegin(); it != event.segmentation.cend(); ++it)
            limited.insert(truncated(it.key(), maxKeyLength, what), truncated(it.value(), maxValueLength, what));
        if (limited.size() > maxSegmentationValues) {
            // The pairs are kept in key order, so the same segmentation always loses the same keys.
            QStringList removed;
            while (limited.size() > std::max(0, maxSegmentationValues)) {
                removed.prepend(limited.lastKey());
                limited.remove(limited.lastKey());
            }
            log.warning(QStringLiteral("%1 has more pairs than the limit (%2)! So, these keys will be removed: %3.")
                            .arg(what, QString::number(maxSegmentationValues), removed.join(QStringLiteral(", "))));
        }
        event.segmentation = limited;
    }
    recordedEvents.append(event);
    return recordedEvents.size() >= eventSendThreshold;
}

std::optional<QString> BeaconPersistency::serializedRecordedEvents()
{
    QMutexLocker lock(&recordedEventsMutex);
    if (recordedEvents.isEmpty())
        return std::nullopt;
    QJsonArray events;
    for (const BeaconEvent& event : std::as_const(recordedEvents))
        events.append(event.dictionaryRepresentation());
    recordedEvents.clear();
    return QString::fromUtf8(QJsonDocument(events).toJson(QJsonDocument::Compact));
}

void BeaconPersistency::recordTimedEvent(const BeaconEvent& event)
{
    QMutexLocker lock(&startedEventsMutex);
    if (startedEvents.contains(event.key)) {
        log.warning(QStringLiteral("Event with key '%1' already started!").arg(event.key));
        return;
    }
    startedEvents.insert(event.key, event);
}

std::optional<BeaconEvent> BeaconPersistency::timedEventForKey(const QString& key)
{
    QMutexLocker lock(&startedEventsMutex);
    const auto found = startedEvents.constFind(key);
    if (found == startedEvents.cend())
        return std::nullopt;
    BeaconEvent event = *found;
    startedEvents.erase(found);
    return event;
}

void BeaconPersistency::clearAllTimedEvents()
{
    QMutexLocker lock(&startedEventsMutex);
    startedEvents.clear();
}

bool BeaconPersistency::isOldRequest(const QString& queryString) const
{
    if (requestDropAgeHours <= 0)
        return false;
    bool isNumber = false;
    const qint64 timestamp =
        queryValue(queryString, QLatin1String("timestamp")).value_or(QString()).toLongLong(&isNumber);
    if (!isNumber)
        return false;
    const double ageInHours = double(clock.currentMilliseconds() - timestamp) / (60.0 * 60.0 * 1000.0);
    if (ageInHours < requestDropAgeHours)
        return false;
    log.info(QStringLiteral("Detected a request with an old age (age in hours: %1) in queue and removed it.")
                 .arg(QString::number(ageInHours, 'f', 6)));
    return true;
}

void BeaconPersistency::saveToFile()
{
    {
        QMutexLocker lock(&queueMutex);
        if (saveScheduled)
            return; // the waiting write has not read the queue yet, so it writes this change too
        saveScheduled = true;
    }
    writer.start([this] { writeQueueFile(true); });
}

void BeaconPersistency::saveToFileSync() { writeQueueFile(false); }

void BeaconPersistency::writeQueueFile(bool scheduled)
{
    QMutexLocker fileLock(&fileMutex);
    QJsonArray requests;
    {
        QMutexLocker lock(&queueMutex);
        if (scheduled)
            saveScheduled = false;
        for (const QString& request : std::as_const(queue))
            requests.append(request);
    }
    const QByteArray bytes = QJsonDocument(QJsonObject{{QLatin1String(kBeaconQueuedRequestsPersistencyKey), requests}})
                                 .toJson(QJsonDocument::Compact);

    if (!QDir().mkpath(folder))
        log.error(QStringLiteral("Application Support directory can not be created: \n%1").arg(folder));
    QSaveFile file(storagePath);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    log.info(QStringLiteral("Result of writing data to file: %1").arg(written ? 1 : 0));
    if (!written)
        logWarning(QStringLiteral("Analytics queue %1 cannot be written: %2").arg(storagePath, file.errorString()));
}

} // namespace tb
