#include "SettingsBridge.h"

#include "core/SettingsStore.h"

namespace tb {

namespace {

QString key(const char* name) { return QLatin1String(name); }

QString defaultOf(StringSetting setting) { return QString::fromUtf8(setting.defaultValue); }

std::optional<double> nonZero(double value) { return value != 0.0 ? std::optional<double>(value) : std::nullopt; }

} // namespace

SlideshowSettings readSettingsForSaving(const SettingsStore& store, const QString& selectedSortOption)
{
    using namespace Settings;
    SlideshowSettings s;
    s.slideshowDelay = store.doubleForKey(key(slideshowDelay.name));
    s.gridOptionRaw = store.integerForKey(key(displayMode.name));
    s.randomOrder = store.boolForKey(key(randomOrder.name));
    s.loopSlideshow = store.boolForKey(key(loopSlideshow.name));
    s.selectedDisplayID = store.integerForKey(key(selectedDisplayID.name));
    s.isManualMode = store.boolForKey(key(isManualMode.name));
    s.overlayEnabled = store.boolForKey(key(overlayEnabled.name));
    s.syncGridTransitions = store.boolForKey(key(syncGridTransitions.name));

    s.transitionType = store.stringForKey(key(transitionType.name)).value_or(QStringLiteral("-"));
    // Documents default to plain fit, unlike the views' best fit.
    s.imageScalingMode =
        store.stringForKey(key(imageScalingMode.name)).value_or(QStringLiteral("Fit (maintain aspect ratio)"));

    const double crossfade = store.doubleForKey(key(crossfadeDuration.name));
    s.crossfadeDuration = crossfade != 0.0 ? crossfade : 1.0;

    s.overlayType = store.stringForKey(key(overlayType.name));
    s.overlayText = store.stringForKey(key(overlayText.name));
    s.overlayFontFamily = store.stringForKey(key(overlayFontFamily.name));
    s.overlayPosition = store.stringForKey(key(overlayPosition.name));
    s.overlaySize = store.stringForKey(key(overlaySize.name));
    s.overlayImageBookmark = store.dataForKey(key(overlayImageBookmark.name));
    s.overlayFontColorData = store.dataForKey(key(overlayFontColorData.name));

    // A stored 0 is saved as missing, so a margin of exactly 0 comes back as the default 20.
    s.overlayFontSize = nonZero(store.doubleForKey(key(overlayFontSize.name)));
    s.overlayOpacity = nonZero(store.doubleForKey(key(overlayOpacity.name)));
    s.overlayMargin = nonZero(store.doubleForKey(key(overlayMargin.name)));

    if (store.boolForKey(key(rememberFolderRecursion.name)))
        s.includeSubdirectories = store.integerForKey(key(folderRecursionDepth.name)) == -1;

    s.selectedSortOption = selectedSortOption;
    return s;
}

void applyLoadedSettings(SettingsStore& store, const SlideshowSettings& s)
{
    using namespace Settings;
    // Each missing optional value takes its key's usual default.
    store.set(slideshowDelay, s.slideshowDelay);
    store.set(displayMode, s.gridOptionRaw);
    store.set(randomOrder, s.randomOrder);
    store.set(loopSlideshow, s.loopSlideshow);
    store.set(transitionType, s.transitionType);
    store.set(imageScalingMode, s.imageScalingMode);
    store.set(selectedDisplayID, s.selectedDisplayID);
    store.set(isManualMode, s.isManualMode.value_or(isManualMode.defaultValue));
    store.set(crossfadeDuration, s.crossfadeDuration.value_or(crossfadeDuration.defaultValue));
    store.set(overlayEnabled, s.overlayEnabled.value_or(overlayEnabled.defaultValue));
    store.set(overlayType, s.overlayType.value_or(defaultOf(overlayType)));
    if (s.overlayImageBookmark)
        store.set(overlayImageBookmark, *s.overlayImageBookmark);
    store.set(overlayText, s.overlayText.value_or(defaultOf(overlayText)));
    store.set(overlayFontFamily, s.overlayFontFamily.value_or(defaultOf(overlayFontFamily)));
    store.set(overlayFontSize, s.overlayFontSize.value_or(overlayFontSize.defaultValue));
    if (s.overlayFontColorData)
        store.set(overlayFontColorData, *s.overlayFontColorData);
    store.set(overlayPosition, s.overlayPosition.value_or(defaultOf(overlayPosition)));
    store.set(overlaySize, s.overlaySize.value_or(defaultOf(overlaySize)));
    store.set(overlayOpacity, s.overlayOpacity.value_or(overlayOpacity.defaultValue));
    store.set(overlayMargin, s.overlayMargin.value_or(overlayMargin.defaultValue));
    if (s.backgroundColorData)
        store.set(backgroundColorData, *s.backgroundColorData);
    store.set(startInWindowedMode, s.startInWindowedMode.value_or(startInWindowedMode.defaultValue));
    store.set(syncGridTransitions, s.syncGridTransitions.value_or(syncGridTransitions.defaultValue));
    if (s.includeSubdirectories) {
        store.set(rememberFolderRecursion, true);
        store.set(folderRecursionDepth, *s.includeSubdirectories ? -1 : 0);
    }
}

} // namespace tb
