// FX bank beat FX: type, depth and beat of the six beat FX positions of each bank, the beat effect
// list, and the current beat effect kept under the shared "PopUp" key.
#include <array>

#include "api/current_index.h"
#include "api/guard.h"
#include "api/setting_change.h"
#include "api/stored_answer.h"
#include "tables/settings.h"

using namespace nvx;
using api::guarded;
using api::isProduct;

namespace {

constexpr uint32_t kLastKeyedBank = 2;
constexpr uint32_t kLastPosition = 5;
constexpr uint32_t kLastItem = 2;
constexpr uint32_t kLastSlot = 6;
constexpr uint32_t kEffectCount = 15;
constexpr uint32_t kLastEffectText = 15;    // one past the last name: the table's null end entry
constexpr uint32_t kLastReplayEffect = 15;  // the replay admits one index past the last effect

const tables::SettingDescriptor &beatFx() { return tables::setting(tables::SettingId::BeatFx); }

}  // namespace

extern "C" {

int32_t NVX_SetFXBANKBFXModeIndex(int32_t productId, uint32_t bank, uint32_t position, uint32_t item,
                                  uint32_t value) {
  return guarded([&] {
    // The bank is not tested: any bank is sent; only banks 0-2 have a key to store under.
    if (!isProduct(productId) || position > kLastPosition || item > kLastItem) return NVX_ERROR;
    api::change({&beatFx(), {bank, position, item}, {value}});
    return NVX_OK;
  });
}

int32_t NVX_GetFXBANKBFXModeIndex(int32_t productId, uint32_t bank, uint32_t position, uint32_t item,
                                  uint32_t *value) {
  return guarded([&] {
    if (!isProduct(productId) || !value || position > kLastPosition) return NVX_ERROR;
    const auto file = store::LoadAutoSetupFile();
    if (!file) return NVX_ERROR;
    if (bank > kLastKeyedBank) return NVX_ERROR;  // tested only after the file was read
    const std::array<uint32_t, 3> instance{bank, position, item};
    const auto stored = store::readStored(file, *beatFx().key(instance), beatFx().readRule);
    if (!stored.hasValue()) return stored.isError() ? NVX_ERROR : NVX_OK;
    const uint32_t byte = api::lowByte(stored.value);  // the word's bank, position and item bits are ignored
    // Up to the item's highest value (an effect of BFXTypeText, any depth byte, a beat code); a stored
    // value above it leaves the caller's output as it was.
    if (item > kLastItem) *value = 0;
    else if (byte <= beatFx().fields[0].last(instance)) *value = byte;
    return NVX_OK;
  });
}

int32_t NVX_GetFXBANKBEATEFFECTModeText(int32_t productId, uint32_t slot, uint32_t index, intptr_t /*unused*/,
                                        const char **text) {
  return guarded([&] {
    if (!isProduct(productId) || !text || slot > kLastSlot || index > kLastEffectText) return NVX_ERROR;
    *text = BFXTypeText[index];
    return NVX_OK;
  });
}

int32_t NVX_GetNumOfFXBANKBEATEFFECTModeIndex(int32_t productId, uint32_t slot, uint32_t *count) {
  return guarded([&] {
    if (!isProduct(productId) || !count || slot > kLastSlot) return NVX_ERROR;
    *count = kEffectCount;
    return NVX_OK;
  });
}

int32_t NVX_GetCurrentFXBANKBEATEFFECTModeIndex(int32_t productId, uint32_t slot, uint32_t *index) {
  return guarded([&] {
    if (!isProduct(productId) || !index || slot > kLastSlot) return NVX_ERROR;
    return api::readCurrentIndex(index);
  });
}

int32_t NVX_SetCurrentFXBANKBEATEFFECTModeIndex(int32_t productId, uint32_t slot) {
  return guarded([&] {
    uint32_t current = 0;
    const int32_t read = NVX_GetCurrentFXBANKBEATEFFECTModeIndex(productId, slot, &current);
    if (!isProduct(productId) || read != NVX_OK || current > kLastReplayEffect) return NVX_ERROR;
    // The index goes to bits 8-15 as it stands: not the beat FX word layout of the setter.
    api::sendWord(*beatFx().request, static_cast<uint16_t>((current << 8) & 0xFFFF));
    return NVX_OK;
  });
}

}  // extern "C"
