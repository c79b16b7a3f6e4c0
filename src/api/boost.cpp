// Boost level: the level of the mixer's USB audio output to the computer, in four steps.
#include "api/guard.h"
#include "api/setting_change.h"
#include "api/stored_answer.h"
#include "tables/code_tables.h"
#include "tables/settings.h"

using namespace nvx;
using api::guarded;
using api::isProduct;

namespace {

constexpr uint32_t kLastBoostIndex = kBoostLevels - 1;
constexpr uint32_t kLastReplayIndex = kBoostLevels;  // the replay admits the table's fifth entry

const tables::SettingDescriptor &boost() { return tables::setting(tables::SettingId::Boost); }

}  // namespace

extern "C" {

int32_t NVX_GetNumOfBoostLevelIndex(int32_t productId, uint32_t *count) {
  return guarded([&] {
    if (!isProduct(productId) || !count) return NVX_ERROR;
    *count = kBoostLevels;
    return NVX_OK;
  });
}

int32_t NVX_GetBoostLevelText(int32_t productId, uint32_t index, intptr_t /*unused*/, const char **text) {
  return guarded([&] {
    if (!isProduct(productId) || !text || index > kLastBoostIndex) return NVX_ERROR;
    *text = BoostLevelText[index];
    return NVX_OK;
  });
}

int32_t NVX_SetBoostLevelIndex(int32_t productId, uint32_t index) {
  return guarded([&] {
    if (!isProduct(productId) || index > kLastBoostIndex) return NVX_ERROR;
    api::change({&boost(), {}, {index}});  // sent, stored, announced
    return NVX_OK;
  });
}

int32_t NVX_GetCurrentBoostLevelIndex(int32_t productId, uint32_t *index) {
  return guarded([&] {
    if (!isProduct(productId) || !index) return NVX_ERROR;
    *index = static_cast<uint32_t>(boost().readRule.fallback);
    return api::answerFromFile(*boost().key({}), boost().readRule, index, api::wholeValue);
  });
}

int32_t NVX_SetCurrentBoostLevelIndex(int32_t productId) {
  return guarded([&] {
    uint32_t stored = 0;
    const int32_t read = NVX_GetCurrentBoostLevelIndex(productId, &stored);
    if (!isProduct(productId) || read != NVX_OK || stored > kLastReplayIndex) return NVX_ERROR;
    api::sendValue({&boost(), {}, {stored}});
    return NVX_OK;
  });
}

}  // extern "C"
