#include "usb/device_loop.h"

#include "usb/usb_access.h"

namespace nvx::usb {

uint32_t countMixers() { return CheckUSBAudio(0); }

void visitMixers(uint32_t count, const std::function<Visit(Device &)> &use) {
  const CallScope scope;  // one transport for the whole loop
  USBDeviceHandle handle;
  handle.openGuard = 0;
  for (uint32_t number = 0; number < count; ++number) {
    if (open_pipes(&handle, number) != kIOReturnSuccess) continue;
    const Visit next = use(*handle.deviceRef);
    closeUSB(&handle);
    if (next == Visit::Stop) return;
  }
}

void sendToMixers(uint32_t count, WriteWrapper wrapper, uint16_t value) {
  visitMixers(count, [&](Device &device) {
    wrapper(&device, value);
    return Visit::Next;
  });
}

uint32_t sendToEveryMixer(WriteWrapper wrapper, uint16_t value) {
  const CallScope scope;
  const uint32_t count = countMixers();
  sendToMixers(count, wrapper, value);
  return count;
}

}  // namespace nvx::usb
