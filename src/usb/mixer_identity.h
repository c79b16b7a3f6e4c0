// The mixer's USB identity: the build's vendor and product numbers, overridden at run time by
// MXRK7_USB_ID=vvvv:pppp (hexadecimal) so a real mixer works without a rebuild.
#pragma once

#include <cstdint>

namespace nvx::usb {

struct MixerId {
  uint16_t vendor;
  uint16_t product;
};

MixerId mixerId();
MixerId buildMixerId();

}  // namespace nvx::usb
