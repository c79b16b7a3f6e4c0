// Play settings: crossfader cut lag, 4-beat loop button type, fader start, pad mode, cut lag mode,
// and the crossfader mode read from the cut lag mode's key.
#include "api/guard.h"
#include "api/setting_change.h"
#include "api/stored_answer.h"
#include "tables/settings.h"

using namespace nvx;
using api::guarded;
using api::isProduct;
using PlaySetting = tables::SettingId;

namespace {

constexpr uint32_t kCrossfaderModeCount = 3;
constexpr uint32_t kLastCrossfaderModeText = 2;

// The five play settings share one shape: an index 0 to the field's highest, carried in the high byte
// of its request, stored as it is, read back from its low byte.
int32_t setPlaySetting(PlaySetting id, int32_t productId, uint32_t index) {
  const auto &setting = tables::setting(id);
  return guarded([&] {
    if (!isProduct(productId) || index > setting.fields[0].last({})) return NVX_ERROR;
    api::change({&setting, {}, {index}});
    return NVX_OK;
  });
}

int32_t getPlaySetting(PlaySetting id, int32_t productId, uint32_t *index) {
  const auto &setting = tables::setting(id);
  return guarded([&] {
    if (!index || !isProduct(productId)) return NVX_ERROR;
    return api::answerFromFile(*setting.key({}), setting.readRule, index, api::lowByte);
  });
}

}  // namespace

extern "C" {

int32_t NVX_SetCROSSFADERCUTLAGIndex(int32_t p, uint32_t i) { return setPlaySetting(PlaySetting::CrossfaderCutLag, p, i); }
int32_t NVX_GetCROSSFADERCUTLAGIndex(int32_t p, uint32_t *i) { return getPlaySetting(PlaySetting::CrossfaderCutLag, p, i); }
int32_t NVX_Set4BEATLOOPBUTTONTypeIndex(int32_t p, uint32_t i) { return setPlaySetting(PlaySetting::LoopButtonType, p, i); }
int32_t NVX_Get4BEATLOOPBUTTONTypeIndex(int32_t p, uint32_t *i) { return getPlaySetting(PlaySetting::LoopButtonType, p, i); }
int32_t NVX_SetFADERSTARTIndex(int32_t p, uint32_t i) { return setPlaySetting(PlaySetting::FaderStart, p, i); }
int32_t NVX_GetFADERSTARTIndex(int32_t p, uint32_t *i) { return getPlaySetting(PlaySetting::FaderStart, p, i); }
int32_t NVX_SetPADModeIndex(int32_t p, uint32_t i) { return setPlaySetting(PlaySetting::PadMode, p, i); }
int32_t NVX_GetPADModeIndex(int32_t p, uint32_t *i) { return getPlaySetting(PlaySetting::PadMode, p, i); }
int32_t NVX_SetCROSSFADERCUTLAGModeIndex(int32_t p, uint32_t i) { return setPlaySetting(PlaySetting::CutLagMode, p, i); }
int32_t NVX_GetCROSSFADERCUTLAGModeIndex(int32_t p, uint32_t *i) { return getPlaySetting(PlaySetting::CutLagMode, p, i); }

int32_t NVX_GetNumOfCROSSFADERModeIndex(int32_t productId, uint32_t *count) {
  return guarded([&] {
    if (!count || !isProduct(productId)) return NVX_ERROR;
    *count = kCrossfaderModeCount;
    return NVX_OK;
  });
}

int32_t NVX_GetCROSSFADERModeText(int32_t productId, uint32_t index, intptr_t /*unused*/, const char **text) {
  return guarded([&] {
    if (!isProduct(productId) || !text || index > kLastCrossfaderModeText) return NVX_ERROR;
    *text = CrossFaderModeText[index];
    return NVX_OK;
  });
}

int32_t NVX_GetCurrentCROSSFADERModeIndex(int32_t productId, uint32_t *index) {
  return guarded([&] {
    if (!index || !isProduct(productId)) return NVX_ERROR;
    *index = 0;
    // The mode is bits 8-15 of the cut lag mode's stored number, the byte the request carries, not
    // the one the setter stores: for every value this library stores it reads 0.
    const auto &mode = tables::setting(PlaySetting::CrossfaderMode);
    return api::answerFromFile(*mode.key({}), mode.readRule, index,
                               [](int32_t value) { return (static_cast<uint32_t>(value) >> 8) & 0xFF; });
  });
}

}  // extern "C"
