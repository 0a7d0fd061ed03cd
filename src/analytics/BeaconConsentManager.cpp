#include "BeaconConsentManager.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMutexLocker>

namespace tb {

QString BeaconConsentManager::consentKey(BeaconFeature feature)
{
    switch (feature) {
    case BeaconFeature::Sessions:
        return QStringLiteral("sessions");
    case BeaconFeature::Events:
        return QStringLiteral("events");
    case BeaconFeature::Users:
        return QStringLiteral("users");
    case BeaconFeature::Crashes:
        return QStringLiteral("crashes");
    case BeaconFeature::Push:
        return QStringLiteral("push");
    case BeaconFeature::Location:
        return QStringLiteral("location");
    case BeaconFeature::Views:
        return QStringLiteral("views");
    case BeaconFeature::Attribution:
        return QStringLiteral("attribution");
    case BeaconFeature::PerformanceMonitoring:
        return QStringLiteral("apm");
    case BeaconFeature::Feedback:
        return QStringLiteral("feedback");
    case BeaconFeature::RemoteConfig:
        return QStringLiteral("remote-config");
    }
    return {};
}

void BeaconConsentManager::setRequiresConsent(bool isRequired)
{
    QMutexLocker lock(&mutex);
    required = isRequired;
}

bool BeaconConsentManager::requiresConsent() const
{
    QMutexLocker lock(&mutex);
    return required;
}

bool BeaconConsentManager::hasConsent(BeaconFeature feature) const
{
    QMutexLocker lock(&mutex);
    return !required || consents[std::size_t(feature)];
}

std::optional<QString> BeaconConsentManager::giveConsent(const QList<BeaconFeature>& features)
{
    return setConsent(features, true);
}

std::optional<QString> BeaconConsentManager::cancelConsent(const QList<BeaconFeature>& features)
{
    return setConsent(features, false);
}

std::optional<QString> BeaconConsentManager::setConsent(const QList<BeaconFeature>& features, bool given)
{
    QMutexLocker lock(&mutex);
    QJsonObject changes;
    for (const BeaconFeature feature : features) {
        const auto index = std::size_t(feature);
        if (index >= consents.size() || consents[index] == given)
            continue;
        consents[index] = given;
        changes.insert(consentKey(feature), given);
    }
    if (!required || changes.isEmpty())
        return std::nullopt;
    return QString::fromUtf8(QJsonDocument(changes).toJson(QJsonDocument::Compact));
}

} // namespace tb
