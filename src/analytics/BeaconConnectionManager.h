#pragma once

#include <QByteArray>
#include <QMap>
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>

#include <chrono>

class QNetworkReply;

namespace tb {

class BeaconClock;
class BeaconConsentManager;
class BeaconDeviceInfo;
class BeaconLog;
class BeaconPersistency;
class Scheduler;

// Sends the queued requests to the analytics server, one at a time and in order, and makes every
// request the client queues. A request leaves the queue only when the server has confirmed it;
// a failed one stays first and goes again at the next proceedOnQueue (the next add or the
// client's next tick), with no back-off and no retry count.
//
// Lives on the GUI thread: all its calls come from there.
class BeaconConnectionManager final : public QObject {
    Q_OBJECT
public:
    // Longer query strings go in a POST body: some servers and proxies cut long URLs.
    static constexpr int maximumGETQueryLength = 2048;
    static constexpr char sdkVersion[] = "1.0";
    static constexpr char sdkName[] = "tallowbrook-cpp";

    BeaconConnectionManager(BeaconPersistency& persistency, BeaconDeviceInfo& deviceInfo,
                            BeaconConsentManager& consents, BeaconClock& clock, Scheduler& scheduler,
                            const BeaconLog& log, std::chrono::milliseconds transferTimeout, QObject* parent = nullptr);
    ~BeaconConnectionManager() override;

    // Copied from the configuration at start.
    QString appKey;
    QString host; // without a trailing "/"
    QString secretSalt;
    bool alwaysUsePOST = false;
    QMap<QString, QString> customMetrics;

    bool isCrashing = false;
    bool isTerminating = false; // set at the end of the process: nothing is sent after it

    // Session length is measured on the scheduler's monotonic clock, so a wall clock set back
    // cannot make it negative. Whole seconds are sent; the fraction waits in unsentSessionLength.
    double unsentSessionLength = 0;
    double lastSessionStartTime = 0;

    bool isRequestInFlight() const { return connection != nullptr; }

    // Sends the first queued request unless one is in flight or the queue must wait.
    void proceedOnQueue();

    void beginSession();
    void updateSession();
    void endSession();
    // Queues the recorded events as one request.
    void sendEvents();
    // Queues a consent request; consents is the JSON object of the changes.
    void sendConsentChanges(const QString& consents);

    // The parameters every request starts with, app_key to sdk_name.
    QString queryEssentials();
    // 2xx with a JSON object that has "result", whatever its value.
    bool isRequestSuccessful(int statusCode, const QByteArray& body) const;

private:
    void send(const QString& item);
    void finished(QNetworkReply* reply, const QString& item);
    void queue(const QString& query);
    int sessionLengthInSeconds();
    static QString pointerText(const void* pointer);

    BeaconPersistency& persistency;
    BeaconDeviceInfo& deviceInfo;
    BeaconConsentManager& consents;
    BeaconClock& clock;
    Scheduler& scheduler;
    const BeaconLog& log;
    std::chrono::milliseconds transferTimeout;
    QNetworkAccessManager network;
    // The request on its way, if any: its presence is what keeps requests one at a time.
    QNetworkReply* connection = nullptr;
};

} // namespace tb
