// The library as the window uses it: the product number, and the menus exactly as the library
// gives them (count from its NVX_GetNumOf... function, texts from its NVX_Get...Text function).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/product.h"

namespace mxrk7setup::lib {

// The product number, asked of the library once (shared with the tool).
using nvx::support::productId;

// USB audio channels, FX banks, beat FX positions as the library numbers them.
inline constexpr int32_t kChannels = 5;
inline constexpr uint32_t kBanks = 3;
inline constexpr uint32_t kPositions = 6;
// The routing setter refuses this channel: it shows what is remembered but cannot be changed.
inline constexpr int32_t kFixedChannel = 4;

std::vector<std::string> routingMenu(int32_t channel);
std::vector<std::string> boostMenu();
std::vector<std::string> filterModeMenu();
std::vector<std::string> beatEffectMenu();
std::vector<std::string> channelFaderMenu();  // the library's table: it has no count function
std::vector<std::string> crossfaderModeMenu();

// A version text of the library, the driver or this application; nullopt when it has none.
std::optional<std::string> libraryVersion();
std::optional<std::string> driverVersion();
std::optional<std::string> setupVersion();

// The library's localized warning for a routing change that returned NVX_WARNING.
std::string routingWarning(int32_t channel, int32_t result);

// Display names (the library's own names are keys, not labels).
std::string bankName(uint32_t bank);  // "Bank A", "Bank B", "Temporary bank"

}  // namespace mxrk7setup::lib
