// Building the keys of the auto-setup file, and what each reader answers when the file is unreadable
// or the key is absent. Readers of the same key may differ (the filter words: the getter leaves its outputs
// untouched, the replay sends 0), so the rules belong to the reader, not to the key.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace nvx::keys {

// The key both current-index getters read; no setting writes it. (Every setting's own keys are in
// its descriptor, tables/settings.h.)
inline constexpr std::string_view kPopUp = "PopUp";  // also the first entry of FXBANKBFXItemText

// The one key builder: the template with "%d" replaced by `number` in decimal (as a signed 32-bit
// number, the way the templates have always been filled).
std::string makeKey(std::string_view keyTemplate, int64_t number);

// --- What a reader answers for a missing value -----------------------------------------------
enum class Missing : uint8_t {
  Fallback,   // NVX_OK with the rule's fallback value
  Untouched,  // NVX_OK, output not written
  Error,      // NVX_ERROR
};

struct ReadRule {
  Missing unreadable;  // the file is missing or unreadable
  Missing absent;      // the key is absent (or holds no integer)
  int32_t fallback;
};

namespace rules {
inline constexpr ReadRule kRouting{Missing::Fallback, Missing::Fallback, 0};
inline constexpr ReadRule kBoost{Missing::Fallback, Missing::Fallback, 3};
inline constexpr ReadRule kFilterGet{Missing::Error, Missing::Untouched, 0};
inline constexpr ReadRule kFilterReplay{Missing::Error, Missing::Fallback, 0};
inline constexpr ReadRule kPopUp{Missing::Fallback, Missing::Fallback, 0};
inline constexpr ReadRule kBeatFx{Missing::Error, Missing::Untouched, 0};
inline constexpr ReadRule kTail{Missing::Error, Missing::Fallback, 0};
inline constexpr ReadRule kPlayUntouched{Missing::Untouched, Missing::Untouched, 0};  // cut lag, loop button
inline constexpr ReadRule kPlayZero{Missing::Fallback, Missing::Fallback, 0};        // the other play settings
}  // namespace rules

}  // namespace nvx::keys
