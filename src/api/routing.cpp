// USB input audio routing: which mixer signal feeds each of the five USB audio channels, and the
// warning when a deck's input selector makes the choice pointless.
#include <array>
#include <cstdint>

#include "api/guard.h"
#include "api/localized_text.h"
#include "api/setting_change.h"
#include "api/stored_answer.h"
#include "tables/code_tables.h"
#include "tables/settings.h"

using namespace nvx;
using api::guarded;
using api::isProduct;

namespace {

constexpr int32_t kLastChannel = 4;
constexpr int32_t kLastSettableChannel = 3;  // the menu setter refuses channel 4
constexpr uint32_t kLastMenuIndex = 7;
constexpr uint32_t kLastDirectSource = 15;

bool isChannel(int32_t channel, int32_t last = kLastChannel) { return channel >= 0 && channel <= last; }

const tables::SettingDescriptor &routing() { return tables::setting(tables::SettingId::Routing); }

}  // namespace

extern "C" {

int32_t NVX_GetNumOfInputAudioIndex(int32_t productId, int32_t channel, uint32_t *count) {
  return guarded([&] {
    if (!isProduct(productId) || !isChannel(channel) || !count) return NVX_ERROR;
    *count = kRoutingMenuCounts[static_cast<size_t>(channel)];
    return NVX_OK;
  });
}

int32_t NVX_GetUSBInputAudioText(int32_t productId, int32_t channel, uint32_t index, intptr_t /*unused*/,
                                 const char **text) {
  return guarded([&] {
    if (!isProduct(productId) || !isChannel(channel) || index > kLastMenuIndex || !text) return NVX_ERROR;
    *text = InputAudioText[MXRK7_TEXT[channel][index]];
    return NVX_OK;
  });
}

int32_t NVX_SetUSBInputAudio(int32_t productId, int32_t channel, uint32_t index) {
  return guarded([&] {
    if (!isProduct(productId) || !isChannel(channel, kLastSettableChannel) || index > kLastMenuIndex)
      return NVX_ERROR;
    // Sent, stored, announced, then checked against the input selectors of decks 1 and 2.
    const auto outcome = api::change({&routing(), {static_cast<uint32_t>(channel)}, {index}});
    return outcome.sent[0].warning ? NVX_WARNING : NVX_OK;
  });
}

int32_t NVX_SetUSBInputAudioDirect(int32_t productId, int32_t channel, int32_t group, uint32_t source) {
  return guarded([&] {
    if (!isProduct(productId) || !isChannel(channel) || source > kLastDirectSource) return NVX_ERROR;
    // Bits 15-12 group + 1 (modulo 16), bits 11-8 channel + 1, bits 7-0 source.
    const uint32_t groupBits = static_cast<uint32_t>(group) * 0x1000u + 0x1000u;
    const uint32_t channelBits = (static_cast<uint32_t>(channel + 1) & 0xFu) << 8;
    const auto value = static_cast<uint16_t>((groupBits | channelBits | source) & 0xFFFFu);
    const uint32_t count = api::sendWord(usb::Request::SetMixerOutputSetting, value).counted;
    if (count == 0) return source < 3 ? NVX_WARNING : NVX_OK;
    const bool warn = api::anyMixerWarns(count, channel, [&](uint8_t selector) { return selector != 5 && source < 5; });
    return warn ? NVX_WARNING : NVX_OK;
  });
}

int32_t NVX_GetWarningTextForSetUSBAudioInput(int32_t productId, int32_t channel, int32_t resultCode,
                                              int32_t language, const char **text) {
  thread_local std::string slot;
  return guarded([&] {
    if (!isProduct(productId) || !isChannel(channel) || resultCode != NVX_WARNING || !text) return NVX_ERROR;
    return api::warningText(language, slot, text);
  });
}

int32_t NVX_GetCurrentUSBInputAudioIndex(int32_t productId, int32_t channel, uint32_t *index) {
  return guarded([&] {
    if (!isProduct(productId) || !isChannel(channel) || !index) return NVX_ERROR;
    *index = 0;
    const std::array<uint32_t, 1> instance{static_cast<uint32_t>(channel)};
    return api::answerFromFile(*routing().key(instance), routing().readRule, index, api::wholeValue);
  });
}

int32_t NVX_SetCurrentUSBInputAudio(int32_t productId, int32_t channel) {
  return guarded([&] {
    uint32_t stored = 0;
    if (NVX_GetCurrentUSBInputAudioIndex(productId, channel, &stored) != NVX_OK || !isProduct(productId))
      return NVX_ERROR;
    // An edited file may hold any number: one outside the menu is refused, nothing is sent.
    if (stored > kLastMenuIndex) return NVX_OK;
    api::sendValue({&routing(), {static_cast<uint32_t>(channel)}, {stored}});
    return NVX_OK;
  });
}

}  // extern "C"
