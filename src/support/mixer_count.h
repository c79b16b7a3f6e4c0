// How many mixers are on the bus, found by listing the bus alone: no mixer is opened, so a caller
// that asks often (the setup application watching for plugging and unplugging) never holds a mixer
// that another program wants to open at that moment.
#pragma once

#include <cstdint>

namespace nvx::support {

// The mixers with the mixer identity in force (MXRK7_USB_ID or the build's numbers); 0 when the USB
// layer cannot be started.
uint32_t countMixers();

}  // namespace nvx::support
