#include "Beacon.h"

#include "core/RandomSource.h"

#include <QMutexLocker>
#include <QThread>

#include <algorithm>
#include <utility>

namespace tb {

namespace {

BeaconFeature consentFeature(const BeaconEvent& event)
{
    if (event.key == QLatin1String(BeaconEvent::viewEvent))
        return BeaconFeature::Views;
    if (event.key == QLatin1String(BeaconEvent::orientationEvent))
        return BeaconFeature::Users;
    return BeaconFeature::Events;
}

// Six random bytes and the event's unique timestamp: unique within the run by the timestamp,
// and across devices by the bytes.
QString makeEventID(RandomSource& random, qint64 timestamp)
{
    const std::uint64_t bits = random.next64();
    QByteArray bytes(6, Qt::Uninitialized);
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = char(bits >> (8 * i));
    return QString::fromLatin1(bytes.toBase64()) + QString::number(timestamp);
}

} // namespace

Beacon::Beacon(Services services, std::chrono::milliseconds transferTimeout, QObject* parent)
    : QObject(parent),
      scheduler(services.scheduler),
      random(services.random),
      clock(std::move(services.wallClock)),
      storage(services.storageFolder, services.appVersion, clock, log,
              [this] { return connections.isRequestInFlight(); }),
      device(services.settings, log, services.screen, services.appVersion),
      connections(storage, device, consents, clock, services.scheduler, log, transferTimeout)
{
}

Beacon::~Beacon() { scheduler.cancel(timer); }

void Beacon::startWithConfig(const BeaconConfig& config)
{
    if (isStarted())
        return;
    log.setEnabled(config.enableDebug);
    storage.eventSendThreshold = config.eventSendThreshold;
    storage.maxKeyLength = config.maxKeyLength;
    storage.maxValueLength = config.maxValueLength;
    storage.maxSegmentationValues = config.maxSegmentationValues;

    if (config.appKey.isEmpty() || config.appKey == QLatin1String(placeholderAppKey))
        throw BeaconAppKeyNotSetException();
    if (config.host.isEmpty() || config.host == QLatin1String(placeholderHost))
        throw BeaconHostNotSetException();

    if (config.resetStoredDeviceID || !device.useStoredDeviceID())
        device.initializeDeviceID(config.deviceID);

    connections.appKey = config.appKey;
    connections.host = config.host.endsWith(QLatin1Char('/')) ? config.host.chopped(1) : config.host;
    connections.alwaysUsePOST = config.alwaysUsePOST;
    connections.secretSalt = config.secretSalt;
    connections.customMetrics = config.customMetrics;
    storage.storedRequestsLimit = std::max(1, config.storedRequestsLimit);
    storage.requestDropAgeHours = config.requestDropAgeHours;
    consents.setRequiresConsent(config.requiresConsent);
    manualSessionHandling = config.manualSessionHandling;
    started.store(true, std::memory_order_release);

    if (!manualSessionHandling)
        connections.beginSession();
    // Crash reporting (BCNCrashReporting in features) has nothing to start on the desktop.
    timer = scheduler.every(config.updateSessionPeriod, [this] { tick(); });
    connections.proceedOnQueue();
    if (!config.consents.isEmpty())
        giveConsentForFeatures(config.consents);
}

void Beacon::tick()
{
    if (!manualSessionHandling)
        connections.updateSession();
    connections.sendEvents();
}

void Beacon::onOwnerThread(std::function<void()> fn)
{
    if (QThread::currentThread() == thread())
        fn();
    else
        QMetaObject::invokeMethod(this, std::move(fn), Qt::QueuedConnection);
}

void Beacon::recordEvent(const QString& key, const Segmentation& segmentation, int count)
{
    recordEvent(key, segmentation, count, 0, 0);
}

void Beacon::recordEvent(const QString& key, const Segmentation& segmentation, int count, double sum, double duration)
{
    BeaconEvent event;
    event.key = key;
    event.segmentation = segmentation;
    event.count = count;
    event.sum = sum;
    event.duration = duration;
    record(std::move(event), false);
}

void Beacon::record(BeaconEvent event, bool stamped)
{
    if (!isStarted())
        return;
    if (!consents.hasConsent(consentFeature(event))) {
        if (!event.isReserved())
            log.info(QStringLiteral("Events consent not given! Event will not be recorded."));
        return;
    }
    if (event.key.isEmpty())
        return;

    bool thresholdReached = false;
    {
        QMutexLocker lock(&eventMutex);
        const BeaconClock::Stamp stamp = clock.uniqueStamp();
        if (!stamped) {
            event.timestamp = stamp.timestamp;
            event.hourOfDay = stamp.hour;
            event.dayOfWeek = stamp.dayOfWeek;
        }
        if (event.ID.isEmpty())
            event.ID = makeEventID(random, stamp.timestamp);
        // The program tracks no views, so the view ids stay empty.
        if (!event.isReserved()) {
            event.PEID = previousEventID;
            previousEventID = event.ID;
        }
        if (event.count == 0)
            event.count = 1;
        thresholdReached = storage.recordEvent(event);
    }
    // Always queued: a caller on the GUI thread may be in the middle of something the network
    // reply would otherwise interrupt.
    if (thresholdReached)
        QMetaObject::invokeMethod(
            this, [this] { connections.sendEvents(); }, Qt::QueuedConnection);
}

void Beacon::startEvent(const QString& key)
{
    if (!isStarted() || key.isEmpty())
        return;
    const BeaconClock::Stamp stamp = clock.uniqueStamp();
    BeaconEvent event;
    event.key = key;
    event.timestamp = stamp.timestamp;
    event.hourOfDay = stamp.hour;
    event.dayOfWeek = stamp.dayOfWeek;
    storage.recordTimedEvent(event);
}

void Beacon::endEvent(const QString& key, const Segmentation& segmentation, int count, double sum)
{
    if (!isStarted())
        return;
    std::optional<BeaconEvent> event = storage.timedEventForKey(key);
    if (!event) {
        log.warning(QStringLiteral("Event with key '%1' not started yet or cancelled/ended before!").arg(key));
        return;
    }
    event->segmentation = segmentation;
    event->count = count;
    event->sum = sum;
    // A wall clock set back between start and end gives a zero duration, not a negative one.
    event->duration = std::max<double>(0, double(clock.currentMilliseconds() - event->timestamp) / 1000.0);
    record(*std::move(event), true);
}

void Beacon::beginSession()
{
    if (isStarted() && manualSessionHandling)
        onOwnerThread([this] { connections.beginSession(); });
}

void Beacon::updateSession()
{
    if (isStarted() && manualSessionHandling)
        onOwnerThread([this] { connections.updateSession(); });
}

void Beacon::endSession()
{
    if (isStarted() && manualSessionHandling)
        onOwnerThread([this] { connections.endSession(); });
}

void Beacon::giveConsentForFeatures(const QList<BeaconFeature>& features)
{
    if (!isStarted())
        return;
    const bool hadSessionConsent = consents.hasConsent(BeaconFeature::Sessions);
    if (const std::optional<QString> changes = consents.giveConsent(features))
        connections.sendConsentChanges(*changes);
    if (!hadSessionConsent && consents.hasConsent(BeaconFeature::Sessions) && !manualSessionHandling)
        connections.beginSession();
}

void Beacon::cancelConsentForFeatures(const QList<BeaconFeature>& features)
{
    if (!isStarted())
        return;
    if (const std::optional<QString> changes = consents.cancelConsent(features))
        connections.sendConsentChanges(*changes);
}

void Beacon::applicationWillTerminate()
{
    if (!isStarted())
        return;
    scheduler.cancel(std::exchange(timer, 0));
    connections.isTerminating = true;
    connections.sendEvents();
    storage.saveToFileSync();
}

} // namespace tb
