// The five play settings: one row each, and one setter and one getter serve them all.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "tables/stored_keys.h"
#include "usb/requests.h"

namespace nvx::tables {

enum class PlaySetting : uint8_t { CrossfaderCutLag, LoopButtonType, FaderStart, PadMode, CutLagMode, Count };

struct PlaySettingRow {
  uint32_t maximum;          // highest index the setter accepts
  usb::WriteWrapper send;    // the request that carries index << 8
  std::string_view key;      // where the bare index is stored
  keys::ReadRule read;       // the getter's answer for an unreadable file or an absent key
};

inline constexpr std::array<PlaySettingRow, 5> kPlaySettings = {{
    {255, usb::SetCROSSFADERCUTLAGSetting, keys::kCrossfaderCutLag, keys::rules::kPlayUntouched},
    {1, usb::Set4BEETLOOPBUTTONTYPESetting, keys::kLoopButtonType, keys::rules::kPlayUntouched},
    {2, usb::SetFADERSTARTSetting, keys::kFaderStart, keys::rules::kPlayZero},
    {2, usb::SetPADModeSetting, keys::kPadMode, keys::rules::kPlayZero},
    // The cut lag mode travels in the request named for the crossfader fade.
    {3, usb::SetCROSSFADERFADESetting, keys::kCutLagMode, keys::rules::kPlayZero},
}};
static_assert(kPlaySettings.size() == static_cast<size_t>(PlaySetting::Count));

constexpr const PlaySettingRow &row(PlaySetting setting) { return kPlaySettings[static_cast<size_t>(setting)]; }

}  // namespace nvx::tables
