#pragma once

#include "BeaconEvent.h"
#include "core/SettingsKeys.h"

#include <QList>
#include <QMap>
#include <QMutex>
#include <QStringList>
#include <QThreadPool>

#include <functional>
#include <optional>

namespace tb {

class BeaconClock;
class BeaconLog;

// The client's small values in the settings store.
inline constexpr const char* kBeaconStoredDeviceIDKey = Settings::beaconStoredDeviceID.name;
inline constexpr char kBeaconStoredNSUUIDKey[] = "kBeaconStoredNSUUIDKey";
inline constexpr char kBeaconIsCustomDeviceIDKey[] = "kBeaconIsCustomDeviceIDKey";
// The one key of the queue file's JSON object.
inline constexpr char kBeaconQueuedRequestsPersistencyKey[] = "kBeaconQueuedRequestsPersistencyKey";

// What the client has not delivered yet: the queue of ready requests, which survives restarts in
// Beacon.dat, the recorded events not yet in a request, and the timed events under way (both in
// memory only). Every operation is safe from any thread.
class BeaconPersistency {
public:
    static constexpr char fileName[] = "Beacon.dat";

    // Reads the queue left by an earlier run from storageFolder; a file that cannot be read
    // gives an empty queue. requestInFlight tells whether a request is on its way to the server.
    BeaconPersistency(const QString& storageFolder, QString appVersion, BeaconClock& clock, const BeaconLog& log,
                      std::function<bool()> requestInFlight);
    // Waits for the write under way, if any.
    ~BeaconPersistency();
    BeaconPersistency(const BeaconPersistency&) = delete;
    BeaconPersistency& operator=(const BeaconPersistency&) = delete;

    // Set when the client starts, before it takes events or requests.
    int eventSendThreshold = 100;
    int storedRequestsLimit = 1000;
    int requestDropAgeHours = 0;
    int maxKeyLength = 128;
    int maxValueLength = 256;
    int maxSegmentationValues = 100;

    // Appends the application's version and queues the request. Past the length limit, with no
    // request in flight, requests too old go first and then the oldest.
    void addToQueue(const QString& queryString);
    // Removes the request only if it is the first: the sender's request may have been trimmed.
    void removeFromQueue(const QString& queryString);
    std::optional<QString> firstItemInQueue() const;
    int remainingRequestCount() const;
    QStringList queuedRequests() const;

    // Adds the event with its key and segmentation cut to the limits. True when the recorded
    // events have reached the send threshold.
    bool recordEvent(BeaconEvent event);
    // The recorded events as a JSON array, which leaves none recorded; nothing when there are none.
    std::optional<QString> serializedRecordedEvents();

    void recordTimedEvent(const BeaconEvent& event);
    // Takes the started event out, if there is one.
    std::optional<BeaconEvent> timedEventForKey(const QString& key);
    void clearAllTimedEvents();

    // Writes the queue on the persistency's own thread. Writes that pile up while one waits are
    // one write of the newest queue, and a write never replaces a newer one with an older queue.
    void saveToFile();
    void saveToFileSync();

    // True, with a log line, for a request at least requestDropAgeHours old.
    bool isOldRequest(const QString& queryString) const;

    QString filePath() const { return storagePath; }

private:
    void loadQueue();
    // scheduled: the write saveToFile asked for, which lets the next change ask for another.
    void writeQueueFile(bool scheduled);
    QString truncated(const QString& text, int limit, const QString& what) const;

    QString folder;
    QString storagePath;
    QString appVersion;
    BeaconClock& clock;
    const BeaconLog& log;
    std::function<bool()> requestInFlight;

    mutable QMutex queueMutex;
    QStringList queue;          // — guarded by queueMutex, as is saveScheduled
    bool saveScheduled = false; // a background write waits that has not yet read the queue

    mutable QMutex recordedEventsMutex;
    QList<BeaconEvent> recordedEvents; // — guarded by recordedEventsMutex

    mutable QMutex startedEventsMutex;
    QMap<QString, BeaconEvent> startedEvents; // — guarded by startedEventsMutex

    // Held for a whole write, and the queue is read while holding it, so writes reach the disk in
    // the order their queues were read.
    QMutex fileMutex;
    QThreadPool writer;
};

} // namespace tb
