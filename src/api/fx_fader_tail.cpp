// FX bank channel fader mode and beat FX tail.
#include "api/guard.h"
#include "api/stored_answer.h"
#include "tables/stored_keys.h"
#include "usb/device_loop.h"

using namespace nvx;
using api::guarded;
using api::isProduct;

namespace {

// Both setters accept a bank 3, which the mixer receives in bits 15-12 as it stands.
constexpr uint32_t kLastSentBank = 3;
constexpr uint32_t kLastKeyedBank = 2;
constexpr uint32_t kLastFaderMode = 3;
constexpr uint32_t kLastTail = 1;
constexpr uint32_t kStoredTailMask = 0xF0FF;

}  // namespace

extern "C" {

int32_t NVX_SetFXBANKCHFADERModeIndex(int32_t productId, uint32_t bank, uint32_t mode) {
  return guarded([&] {
    if (!isProduct(productId) || bank > kLastSentBank || mode > kLastFaderMode) return NVX_ERROR;
    const auto word = static_cast<uint16_t>(bank << 12 | mode);
    usb::sendToEveryMixer(usb::SetFXBANKCHFADERModeSetting, word);
    // Bank A has its own key; banks B, temporary and 3 share the second one.
    store::StoreAutoSetupValue(keys::kChannelFaderKeys[bank == 0 ? 0 : 1], word);
    return NVX_OK;
  });
}

int32_t NVX_SetFXBANKBFXTAILIndex(int32_t productId, uint32_t bank, uint32_t tail) {
  return guarded([&] {
    if (!isProduct(productId) || bank > kLastSentBank || tail > kLastTail) return NVX_ERROR;
    const auto word = static_cast<uint16_t>(bank << 12 | (tail & 0xFF));
    usb::sendToEveryMixer(usb::SetFXBANKBFXTAILSetting, word);
    if (bank > kLastKeyedBank) return NVX_ERROR;  // sent first, refused afterwards: nothing is stored
    store::StoreAutoSetupValue(keys::kTailKeys[bank], static_cast<int32_t>(word & kStoredTailMask));
    return NVX_OK;
  });
}

int32_t NVX_GetFXBANKBFXTAILIndex(int32_t productId, uint32_t bank, uint32_t *tail) {
  return guarded([&] {
    if (!isProduct(productId) || !tail || bank > kLastSentBank) return NVX_ERROR;
    *tail = 0;  // written on every path from here on
    const auto file = store::LoadAutoSetupFile();
    if (!file || bank > kLastKeyedBank) return NVX_ERROR;
    const auto stored = store::readStored(file, keys::kTailKeys[bank], keys::rules::kTail);
    const uint32_t value = api::lowByte(stored.value);  // the bank bits are ignored
    if (value > kLastTail) return NVX_ERROR;
    *tail = value;
    return NVX_OK;
  });
}

}  // extern "C"
