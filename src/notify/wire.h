// The signal that carries a change between processes: where it is sent on the session bus, the
// two families it exists for, and the match rule an observer uses for one family.
#pragma once

#include <cstdint>
#include <string>

#include "notify/notifications.h"

namespace nvx::notify {

inline constexpr const char *kObjectPath = "/com/norvane/MXRK7Setup";
inline constexpr const char *kInterface = "com.norvane.MXRK7Setup";
inline constexpr const char *kMember = "Notification";
// Body: the notification name, then the payload of int32 values by key.
inline constexpr const char *kBodySignature = "sa{sv}";

inline constexpr const char *kKeyProductId = "ProductID";
inline constexpr const char *kKeyChannel = "Channel";
inline constexpr const char *kKeyIndex = "Index";

enum class Family : uint8_t { InputAudio = 0, BoostLevel = 1 };
inline constexpr int kFamilyCount = 2;

constexpr const char *notificationName(Family family) {
  return family == Family::InputAudio ? kInputAudioChange : kBoostLevelChange;
}

constexpr int familyIndex(Family family) { return static_cast<int>(family); }

// The rule of the bus-side match for one family: the daemon forwards only this family's signals.
inline std::string matchRule(Family family) {
  return std::string("type='signal',path='") + kObjectPath + "',interface='" + kInterface + "',member='" +
         kMember + "',arg0='" + notificationName(family) + "'";
}

}  // namespace nvx::notify
