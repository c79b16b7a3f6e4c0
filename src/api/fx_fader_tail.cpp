// FX bank channel fader mode and beat FX tail.
#include <array>
#include "api/guard.h"
#include "api/setting_change.h"
#include "api/stored_answer.h"
#include "tables/settings.h"

using namespace nvx;
using api::guarded;
using api::isProduct;

namespace {

// Both setters accept a bank 3, which the mixer receives in bits 15-12 as it stands.
constexpr uint32_t kLastSentBank = 3;
constexpr uint32_t kLastKeyedBank = 2;
constexpr uint32_t kLastFaderMode = 3;
constexpr uint32_t kLastTail = 1;

const tables::SettingDescriptor &tail() { return tables::setting(tables::SettingId::BeatFxTail); }

}  // namespace

extern "C" {

int32_t NVX_SetFXBANKCHFADERModeIndex(int32_t productId, uint32_t bank, uint32_t mode) {
  return guarded([&] {
    if (!isProduct(productId) || bank > kLastSentBank || mode > kLastFaderMode) return NVX_ERROR;
    // Bank A has its own key; banks B, temporary and 3 share the second one.
    api::change({&tables::setting(tables::SettingId::ChannelFader), {bank}, {mode}});
    return NVX_OK;
  });
}

int32_t NVX_SetFXBANKBFXTAILIndex(int32_t productId, uint32_t bank, uint32_t value) {
  return guarded([&] {
    if (!isProduct(productId) || bank > kLastSentBank || value > kLastTail) return NVX_ERROR;
    // Bank 3 has no key: it is sent, nothing is stored, and refused afterwards.
    api::change({&tail(), {bank}, {value}});
    return bank > kLastKeyedBank ? NVX_ERROR : NVX_OK;
  });
}

int32_t NVX_GetFXBANKBFXTAILIndex(int32_t productId, uint32_t bank, uint32_t *value) {
  return guarded([&] {
    if (!isProduct(productId) || !value || bank > kLastSentBank) return NVX_ERROR;
    *value = 0;  // written on every path from here on
    const auto file = store::LoadAutoSetupFile();
    if (!file || bank > kLastKeyedBank) return NVX_ERROR;
    const std::array<uint32_t, 1> instance{bank};
    const auto stored = store::readStored(file, *tail().key(instance), tail().readRule);
    const uint32_t tailValue = api::lowByte(stored.value);  // the bank bits are ignored
    if (tailValue > kLastTail) return NVX_ERROR;
    *value = tailValue;
    return NVX_OK;
  });
}

}  // extern "C"
