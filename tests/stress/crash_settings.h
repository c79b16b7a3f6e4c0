// The settings that the crash test's writer changes, each reachable through the public setter and
// getter of its family: the five play settings and the 54 beat FX values (3 banks x 6 positions x
// 3 items). A setting is named by its number 0-58 on the writer's output.
#pragma once

#include <cstdint>

#include "NorvaneMXRK7Setup.h"

namespace nvx::stress {

inline constexpr uint32_t kPlaySettings = 5;
inline constexpr uint32_t kBeatFxSettings = 3 * 6 * 3;
inline constexpr uint32_t kCrashSettings = kPlaySettings + kBeatFxSettings;

struct PlayFamily {
  int32_t (*set)(int32_t, uint32_t);
  int32_t (*get)(int32_t, uint32_t *);
  uint32_t maximum;
};

inline constexpr PlayFamily kPlayFamilies[kPlaySettings] = {
    {NVX_SetCROSSFADERCUTLAGIndex, NVX_GetCROSSFADERCUTLAGIndex, 255},
    {NVX_Set4BEATLOOPBUTTONTypeIndex, NVX_Get4BEATLOOPBUTTONTypeIndex, 1},
    {NVX_SetFADERSTARTIndex, NVX_GetFADERSTARTIndex, 2},
    {NVX_SetPADModeIndex, NVX_GetPADModeIndex, 2},
    {NVX_SetCROSSFADERCUTLAGModeIndex, NVX_GetCROSSFADERCUTLAGModeIndex, 3},
};

// Highest value the beat FX getter hands back per item (type, depth, beat).
inline constexpr uint32_t kBeatFxMaximum[3] = {14, 255, 54};

struct BeatFxSlot {
  uint32_t bank, position, item;
};

inline BeatFxSlot beatFxSlot(uint32_t setting) {
  const uint32_t n = setting - kPlaySettings;
  return {n / 18, (n / 3) % 6, n % 3};
}

inline uint32_t maximumOf(uint32_t setting) {
  return setting < kPlaySettings ? kPlayFamilies[setting].maximum : kBeatFxMaximum[beatFxSlot(setting).item];
}

// Sets a setting through its public setter; the library's result.
inline int32_t setSetting(uint32_t setting, uint32_t value) {
  if (setting < kPlaySettings) return kPlayFamilies[setting].set(0, value);
  const BeatFxSlot slot = beatFxSlot(setting);
  return NVX_SetFXBANKBFXModeIndex(0, slot.bank, slot.position, slot.item, value);
}

// Reads a setting back through its public getter: the result, with *value as the getter left it.
inline int32_t getSetting(uint32_t setting, uint32_t *value) {
  if (setting < kPlaySettings) return kPlayFamilies[setting].get(0, value);
  const BeatFxSlot slot = beatFxSlot(setting);
  return NVX_GetFXBANKBFXModeIndex(0, slot.bank, slot.position, slot.item, value);
}

}  // namespace nvx::stress
