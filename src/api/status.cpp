// Live status read from the mixers: firmware version, input selector positions, Serato state.
#include <cstring>

#include "api/guard.h"
#include "usb/device_loop.h"
#include "usb/usb_access.h"

using nvx::api::guarded;
using nvx::api::isProduct;
using namespace nvx::usb;

namespace {

constexpr int32_t kProvisionalFirmware = 1078;
constexpr uint8_t kHighestSelector = 4;
constexpr uint8_t kHighestSeratoState = 1;

}  // namespace

extern "C" {

int32_t NVX_GetFirmwareVersionIndex(int32_t productId, int32_t *version) {
  return guarded([&] {
    if (!version || !isProduct(productId)) return NVX_ERROR;
    // Only the first mixer is asked, however many are connected.
    USBDeviceHandle handle;
    handle.openGuard = 0;
    if (CheckUSBAudio(0) == 0) return NVX_OK;
    if (open_pipes(&handle, 0) != kIOReturnSuccess) return NVX_OK;
    *version = kProvisionalFirmware;
    uint8_t answer[4] = {0, 0, 0, 0};  // cleared, so the upper 16 bits of the result are 0
    GetFirmwareVersionNumber(handle.deviceRef.get(), answer, 2);
    closeUSB(&handle);
    *version = static_cast<int32_t>(static_cast<uint32_t>(answer[0]) | static_cast<uint32_t>(answer[1]) << 8 |
                                    static_cast<uint32_t>(answer[2]) << 16 | static_cast<uint32_t>(answer[3]) << 24);
    return NVX_OK;
  });
}

int32_t NVX_GetMixerInputSelectorStatus(int32_t productId, int32_t channel, int32_t *status) {
  return guarded([&] {
    if (!status || !isProduct(productId) || channel < 0 || channel > 4) return NVX_ERROR;
    const uint32_t count = countMixers();
    if (count == 0) return NVX_OK;
    int32_t result = NVX_OK;
    visitMixers(count, [&](Device &mixer) {
      // The channel indexes the reply directly: channel 0 reads element 0, which no request fills.
      uint8_t reply[6] = {};
      GetInputSelectorInfo(&mixer, reply, sizeof reply);
      *status = reply[channel];  // stored first, then tested
      if (reply[channel] > kHighestSelector) {
        result = NVX_ERROR;
        return Visit::Stop;
      }
      return Visit::Next;
    });
    return result;
  });
}

int32_t NVX_GetMixerSeratoActiveStatus(int32_t productId, int32_t *status) {
  return guarded([&] {
    if (!status || !isProduct(productId)) return NVX_ERROR;
    const uint32_t count = countMixers();
    if (count == 0) return NVX_OK;
    int32_t result = NVX_OK;
    visitMixers(count, [&](Device &mixer) {
      // A failed request leaves the 0xFF preset, which the test below refuses.
      uint8_t reply[2] = {0xFF, 0xFF};
      GetSeratoActiveInfo(&mixer, reply, sizeof reply);
      if (reply[0] > kHighestSeratoState) {  // tested first, stored only when in range
        result = NVX_ERROR;
        return Visit::Stop;
      }
      *status = reply[0];
      return Visit::Next;
    });
    return result;
  });
}

}  // extern "C"
