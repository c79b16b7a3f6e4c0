// FX bank filter mode: each bank's filter assignment (mode and parameter byte), its replay, and the
// current filter mode kept under the shared "PopUp" key.
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

constexpr uint32_t kLastBank = 2;
constexpr uint32_t kLastMode = 4;
constexpr uint32_t kModeCount = 5;
constexpr uint32_t kLastModeText = 5;  // one past the last name: the table's null end entry

const tables::SettingDescriptor &filter() { return tables::setting(tables::SettingId::FxFilter); }

std::string filterKey(uint32_t bank) {
  const std::array<uint32_t, 1> instance{bank};
  return *filter().key(instance);
}

}  // namespace

extern "C" {

int32_t NVX_SetFXBANKFILTERModeIndex(int32_t productId, uint32_t bank, uint32_t mode, uint32_t param) {
  return guarded([&] {
    if (!isProduct(productId) || bank > kLastBank || mode > kLastMode) return NVX_ERROR;
    api::change({&filter(), {bank}, {mode, param}});
    return NVX_OK;
  });
}

int32_t NVX_SendFXBANKFILTERModeIndex(int32_t productId) {
  return guarded([&] {
    if (!isProduct(productId)) return NVX_ERROR;
    const auto file = store::LoadAutoSetupFile();
    const uint32_t count = usb::countMixers();  // counted once, before the file is tested
    // Banks in the order A, B, temporary; a missing key sends the word 0 as it stands.
    for (uint32_t bank = 0; bank <= kLastBank; ++bank) {
      const auto stored = store::readStored(file, filterKey(bank), keys::rules::kFilterReplay);
      if (stored.isError()) return NVX_ERROR;
      usb::sendToMixers(count, *filter().request, static_cast<uint16_t>(stored.value & 0xFFFF));
    }
    return NVX_OK;
  });
}

int32_t NVX_GetFXBANKFILTERModeIndex(int32_t productId, uint32_t bank, uint32_t *mode, uint32_t *param) {
  return guarded([&] {
    if (bank > kLastBank || !mode || !param || !isProduct(productId)) return NVX_ERROR;
    const auto stored = store::readStored(store::LoadAutoSetupFile(), filterKey(bank), filter().readRule);
    if (stored.isError()) return NVX_ERROR;
    if (stored.hasValue()) {
      // The bank bits are not looked at, and the mode gets no range test.
      *mode = (static_cast<uint32_t>(stored.value) >> 8) & 0xF;
      *param = api::lowByte(stored.value);
    }
    return NVX_OK;
  });
}

int32_t NVX_GetFXBANKFILTERModeText(int32_t productId, uint32_t index, intptr_t /*unused*/, const char **text) {
  return guarded([&] {
    if (!isProduct(productId) || !text || index > kLastModeText) return NVX_ERROR;
    *text = FXBANKFilterModeText[index];
    return NVX_OK;
  });
}

int32_t NVX_GetNumOfFXBANKFILTERModeIndex(int32_t productId, uint32_t *count) {
  return guarded([&] {
    if (!count || !isProduct(productId)) return NVX_ERROR;
    *count = kModeCount;
    return NVX_OK;
  });
}

int32_t NVX_GetCurrentFXBANKFILTERModeIndex(int32_t productId, uint32_t *index) {
  return guarded([&] {
    if (!index || !isProduct(productId)) return NVX_ERROR;
    return api::readCurrentIndex(index);
  });
}

int32_t NVX_SetCurrentFXBANKFILTERModeIndex(int32_t productId) {
  return guarded([&] {
    uint32_t current = 0;
    const int32_t read = NVX_GetCurrentFXBANKFILTERModeIndex(productId, &current);
    if (!isProduct(productId) || read != NVX_OK || current > kLastMode) return NVX_ERROR;
    api::sendValue({&filter(), {0}, {current, 0}});  // bank bits 0, the index as the mode
    return NVX_OK;
  });
}

}  // extern "C"
