#pragma once

#include "BeaconClock.h"
#include "BeaconConfig.h"
#include "BeaconConnectionManager.h"
#include "BeaconConsentManager.h"
#include "BeaconDeviceInfo.h"
#include "BeaconEvent.h"
#include "BeaconExceptions.h"
#include "BeaconLog.h"
#include "BeaconPersistency.h"
#include "core/Analytics.h"
#include "core/Scheduler.h"

#include <QMutex>
#include <QObject>

#include <atomic>
#include <chrono>
#include <functional>

namespace tb {

class RandomSource;
class SettingsStore;

// The usage-analytics client: sessions, events and consent, reported to an analytics server
// through a request queue that survives restarts. Made once by the program and handed around as
// Analytics&. Until startWithConfig succeeds it drops whatever it is given.
//
// Lives on the GUI thread: start, sessions, consent and termination are called there. Events may
// be recorded from any thread; the sends they cause run on the GUI thread.
class Beacon final : public QObject, public Analytics {
    Q_OBJECT
public:
    static constexpr char placeholderAppKey[] = "YOUR_APP_KEY";
    static constexpr char placeholderHost[] = "https://YOUR_BEACON_SERVER";

    struct Services {
        Scheduler& scheduler;             // the session timer, and the clock session lengths are measured on
        BeaconClock::WallClock wallClock; // timestamps and the local calendar; called from any thread
        SettingsStore& settings;          // the device id
        QString storageFolder;            // where Beacon.dat lives
        QString appVersion;
        BeaconScreen screen;
        // Draws event ids under the client's lock, on whichever thread records: give the client a
        // source nothing else draws from.
        RandomSource& random;
    };

    // A request the server leaves silent this long has failed.
    static constexpr std::chrono::milliseconds defaultTransferTimeout{60'000};

    explicit Beacon(Services services, std::chrono::milliseconds transferTimeout = defaultTransferTimeout,
                    QObject* parent = nullptr);
    ~Beacon() override;

    // Starts the client; only the first successful call counts. Throws
    // BeaconAppKeyNotSetException or BeaconHostNotSetException for a missing key or server, and
    // the client then stays unstarted.
    void startWithConfig(const BeaconConfig& config);
    bool isStarted() const { return started.load(std::memory_order_acquire); }

    void recordEvent(const QString& key, const Segmentation& segmentation = {}, int count = 1) override;
    void recordEvent(const QString& key, const Segmentation& segmentation, int count, double sum, double duration = 0);
    // A timed event: recorded by endEvent with the time between the two. A key already started
    // keeps its first start.
    void startEvent(const QString& key);
    void endEvent(const QString& key, const Segmentation& segmentation = {}, int count = 1, double sum = 0);

    // Sessions are the client's own unless the configuration asks for manual handling; these
    // act only then.
    void beginSession() override;
    void updateSession();
    void endSession() override;

    void giveConsentForFeatures(const QList<BeaconFeature>& features);
    void cancelConsentForFeatures(const QList<BeaconFeature>& features);

    // At the end of the process: no more sending, the recorded events queued, and the queue
    // written before returning. No end-of-session request is made.
    void applicationWillTerminate();

    BeaconPersistency& persistency() { return storage; }
    BeaconConnectionManager& connectionManager() { return connections; }
    BeaconDeviceInfo& deviceInfo() { return device; }
    BeaconConsentManager& consentManager() { return consents; }

private:
    // stamped: the event carries its time already (a timed event keeps its start).
    void record(BeaconEvent event, bool stamped);
    void tick();
    // Runs fn now on the GUI thread, or soon when called from another.
    void onOwnerThread(std::function<void()> fn);

    Scheduler& scheduler;
    RandomSource& random;
    BeaconLog log;
    BeaconClock clock;
    BeaconPersistency storage;
    BeaconDeviceInfo device;
    BeaconConsentManager consents;
    BeaconConnectionManager connections;

    std::atomic<bool> started{false};
    bool manualSessionHandling = false;
    TaskId timer = 0;
    // Keeps the previous-event chain in the order events enter the persistency.
    QMutex eventMutex;
    QString previousEventID; // — guarded by eventMutex, as is random
};

} // namespace tb
