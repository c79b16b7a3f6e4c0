#include "support/mixer_count.h"

#include "usb/transport.h"
#include "usb/usb_access.h"

namespace nvx::support {

uint32_t countMixers() {
  const usb::CallScope scope;  // the USB state made for the count is freed when it is done
  return usb::CheckUSBAudio(0);
}

}  // namespace nvx::support
