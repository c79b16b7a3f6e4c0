// Mixer codes behind the routing and boost menus. Internal: not exported.
#pragma once

#include <array>
#include <cstdint>

namespace nvx {

inline constexpr int kUsbAudioChannels = 5;
inline constexpr int kRoutingMenuSize = 8;  // menu indices 0-7 of every channel
inline constexpr int kBoostLevels = 4;

// Routing codes sent with SetMixerOutputSetting: high byte = channel + 1, low byte = the mixer's
// source. Row = USB audio channel, column = menu index. Row 4 is reachable only by re-applying a
// stored "Output4".
extern const std::array<std::array<uint16_t, kRoutingMenuSize>, kUsbAudioChannels> _convTable_K7;

// Boost codes by menu index; the explicit fifth entry serves the re-apply function, which admits
// a stored index of 4.
extern const std::array<uint8_t, kBoostLevels + 1> _convDbTable;

// Number of routing menu entries offered per channel (not the number of distinct texts).
extern const std::array<uint32_t, kUsbAudioChannels> kRoutingMenuCounts;

}  // namespace nvx
