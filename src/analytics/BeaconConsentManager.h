#pragma once

#include <QList>
#include <QMutex>
#include <QString>

#include <array>
#include <optional>

namespace tb {

// The parts of the client a user can consent to, each with its key in a consent request.
enum class BeaconFeature {
    Sessions = 0,
    Events = 1,
    Users = 2,
    Crashes = 3,
    Push = 4,
    Location = 5,
    Views = 6,
    Attribution = 7,
    PerformanceMonitoring = 8,
    Feedback = 9,
    RemoteConfig = 10,
};

// Which features may record. Without requiresConsent everything may, and no consent request is
// ever made. Safe to ask from any thread.
class BeaconConsentManager {
public:
    static QString consentKey(BeaconFeature feature);

    void setRequiresConsent(bool required);
    bool requiresConsent() const;
    bool hasConsent(BeaconFeature feature) const;

    // Record the user's decision. Each gives back the JSON object of the features whose consent
    // changed ({"sessions":true}), to be sent as a consent request, or nothing when nothing
    // changed or consent is not required.
    std::optional<QString> giveConsent(const QList<BeaconFeature>& features);
    std::optional<QString> cancelConsent(const QList<BeaconFeature>& features);

private:
    static constexpr int featureCount = 11;
    std::optional<QString> setConsent(const QList<BeaconFeature>& features, bool given);

    mutable QMutex mutex;
    bool required = false; // — guarded by mutex, as is consents
    std::array<bool, featureCount> consents{};
};

} // namespace tb
