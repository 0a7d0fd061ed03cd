#pragma once

namespace tb {

// A preference: its key in the settings store and the default its usual reader assumes when the
// key is absent. Nothing registers defaults in the store, so a reader may pass another default
// where the program deliberately reads a key differently (see crossfadeDuration).
struct DoubleSetting {
    const char* name;
    double defaultValue;
};
struct IntSetting {
    const char* name;
    int defaultValue;
};
struct BoolSetting {
    const char* name;
    bool defaultValue;
};
struct StringSetting {
    const char* name;
    const char* defaultValue;
};
// Binary values have no default in the store: absent means "use the reader's own".
struct DataSetting {
    const char* name;
};

namespace Settings {

// Playback
inline constexpr DoubleSetting slideshowDelay{"slideshowDelay", 3.0};
// Raw GridOption value; 4 or more is read as single photo. Documents call it gridOptionRaw.
inline constexpr IntSetting displayMode{"displayMode", 0};
inline constexpr BoolSetting randomOrder{"randomOrder", false};
inline constexpr BoolSetting loopSlideshow{"loopSlideshow", false};
// Kept beside transitionType, which is what decides the transition.
inline constexpr BoolSetting useFadingTransition{"useFadingTransition", true};
inline constexpr StringSetting transitionType{"transitionType", "-"};
inline constexpr StringSetting imageScalingMode{"imageScalingMode", "Best Fit (no upscaling)"};
inline constexpr BoolSetting isManualMode{"isManualMode", false};
// 1.0 is the default of the Playback tab and of documents; the main window, which starts shows,
// reads an absent key as mainWindowCrossfadeDuration.
inline constexpr DoubleSetting crossfadeDuration{"crossfadeDuration", 1.0};
inline constexpr double mainWindowCrossfadeDuration = 2.0;
inline constexpr IntSetting selectedDisplayID{"selectedDisplayID", 0};
inline constexpr BoolSetting startInWindowedMode{"startInWindowedMode", false};
inline constexpr BoolSetting syncGridTransitions{"syncGridTransitions", false};
inline constexpr DataSetting backgroundColorData{"backgroundColorData"}; // absent reads as black

// Unattended modes and windows
// 0 is off; the switch stores 5 when turned on.
inline constexpr IntSetting screensaverIdleMinutes{"screensaverIdleMinutes", 0};
inline constexpr BoolSetting floatOnTop{"floatOnTop", false};
inline constexpr StringSetting liveModeNewPhotosBehavior{"liveModeNewPhotosBehavior", "queue"};

// Clips
inline constexpr StringSetting videoPlaybackMode{"videoPlaybackMode", "fullVideo"};
inline constexpr BoolSetting muteVideoAudio{"muteVideoAudio", false};

// Queue and intake
inline constexpr BoolSetting dontShowThumbnailAlert{"dontShowThumbnailAlert", false};
// Use, and add to, the thumbnails the desktop's file managers and viewers share.
inline constexpr BoolSetting useSharedThumbnails{"useSharedThumbnails", true};
inline constexpr BoolSetting showFilenamesInThumbnails{"showFilenamesInThumbnails", false};
inline constexpr BoolSetting rememberFolderRecursion{"rememberFolderRecursion", false};
// -1 all subfolders, 0 this folder only; meaningful only while rememberFolderRecursion is true.
inline constexpr IntSetting folderRecursionDepth{"folderRecursionDepth", -1};

// Overlay
inline constexpr BoolSetting overlayEnabled{"overlayEnabled", false};
inline constexpr StringSetting overlayType{"overlayType", "image"};
inline constexpr StringSetting overlayText{"overlayText", ""};
inline constexpr StringSetting overlayFontFamily{"overlayFontFamily", "Helvetica"};
inline constexpr DoubleSetting overlayFontSize{"overlayFontSize", 24.0};
inline constexpr DataSetting overlayFontColorData{"overlayFontColorData"}; // absent reads as white
inline constexpr StringSetting overlayPosition{"overlayPosition", "bottomRight"};
inline constexpr StringSetting overlaySize{"overlaySize", "medium"};
inline constexpr DoubleSetting overlayOpacity{"overlayOpacity", 0.8};
inline constexpr DoubleSetting overlayMargin{"overlayMargin", 20.0};
// Removing the overlay image removes this key.
inline constexpr DataSetting overlayImageBookmark{"overlayImageBookmark"};

// Analytics
inline constexpr StringSetting beaconStoredDeviceID{"kBeaconStoredDeviceIDKey", ""};
inline constexpr StringSetting analyticsServerURL{"analyticsServerURL", ""};

} // namespace Settings
} // namespace tb
