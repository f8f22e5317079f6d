#pragma once

#include <QLatin1StringView>

// Every key the program keeps in the preferences store, with its owner.
namespace tallowmere::keys {

inline constexpr QLatin1StringView menuBarEnabled("menuBarEnabled");                   // AppSettings
inline constexpr QLatin1StringView localServerEnabled("localServerEnabled");           // AppSettings
inline constexpr QLatin1StringView networkRecordingEnabled("networkRecordingEnabled"); // AppSettings
inline constexpr QLatin1StringView audioVolumeOverrides("audioVolumeOverrides");       // audio sessions
inline constexpr QLatin1StringView audioMuteOverrides("audioMuteOverrides");           // audio sessions
inline constexpr QLatin1StringView keepAwakeDuration("keepAwakeDuration");             // keep-awake
inline constexpr QLatin1StringView keepAwakeMode("keepAwakeMode");                     // keep-awake
inline constexpr QLatin1StringView wakeScheduleEnabled("wakeScheduleEnabled");         // wake schedule
inline constexpr QLatin1StringView wakeScheduleHour("wakeScheduleHour");               // wake schedule
inline constexpr QLatin1StringView wakeScheduleMinute("wakeScheduleMinute");           // wake schedule
inline constexpr QLatin1StringView mainWindowFrame("NSWindow Frame TallowmereMainWindow"); // main window

} // namespace tallowmere::keys
