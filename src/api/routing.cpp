// USB input audio routing: which mixer signal feeds each of the five USB audio channels, and the
// warning when a deck's input selector makes the choice pointless.
#include <cstdint>

#include "api/guard.h"
#include "api/localized_text.h"
#include "api/stored_answer.h"
#include "notify/notifications.h"
#include "tables/code_tables.h"
#include "tables/stored_keys.h"
#include "usb/device_loop.h"

using namespace nvx;
using api::guarded;
using api::isProduct;

namespace {

constexpr int32_t kLastChannel = 4;
constexpr int32_t kLastSettableChannel = 3;  // the menu setter refuses channel 4
constexpr uint32_t kLastMenuIndex = 7;
constexpr uint32_t kLastDirectSource = 15;

bool isChannel(int32_t channel, int32_t last = kLastChannel) { return channel >= 0 && channel <= last; }

// Reads every mixer's input selectors (count taken beforehand) and tells whether one of them makes
// the caller warn; `warns` is given the selector byte of the channel (reply element channel + 1).
template <class Warns>
bool anyMixerWarns(uint32_t count, int32_t channel, Warns warns) {
  bool warning = false;
  usb::visitMixers(count, [&](usb::Device &mixer) {
    uint8_t reply[6] = {};
    usb::GetInputSelectorInfo(&mixer, reply, sizeof reply);
    warning = warns(reply[channel + 1]);
    return warning ? usb::Visit::Stop : usb::Visit::Next;
  });
  return warning;
}

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
    const uint16_t code = _convTable_K7[static_cast<size_t>(channel)][index];
    const uint32_t count = usb::sendToEveryMixer(usb::SetMixerOutputSetting, code);
    store::StoreAutoSetupValue(keys::makeKey(keys::kOutputTemplate, channel), static_cast<int32_t>(index));
    notify::postInputAudioChange(channel, static_cast<int32_t>(index));
    if (count == 0) return NVX_OK;
    // Decks 1 and 2 warn when their selector is on another position than 4 (a real position, below 8).
    const bool warn = anyMixerWarns(count, channel, [&](uint8_t selector) {
      return selector != 4 && channel <= 1 && selector < 8;
    });
    return warn ? NVX_WARNING : NVX_OK;
  });
}

int32_t NVX_SetUSBInputAudioDirect(int32_t productId, int32_t channel, int32_t group, uint32_t source) {
  return guarded([&] {
    if (!isProduct(productId) || !isChannel(channel) || source > kLastDirectSource) return NVX_ERROR;
    // Bits 15-12 group + 1 (modulo 16), bits 11-8 channel + 1, bits 7-0 source.
    const uint32_t groupBits = static_cast<uint32_t>(group) * 0x1000u + 0x1000u;
    const uint32_t channelBits = (static_cast<uint32_t>(channel + 1) & 0xFu) << 8;
    const auto value = static_cast<uint16_t>((groupBits | channelBits | source) & 0xFFFFu);
    const uint32_t count = usb::sendToEveryMixer(usb::SetMixerOutputSetting, value);
    if (count == 0) return source < 3 ? NVX_WARNING : NVX_OK;
    const bool warn = anyMixerWarns(count, channel, [&](uint8_t selector) { return selector != 5 && source < 5; });
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
    return api::answerFromFile(keys::makeKey(keys::kOutputTemplate, channel), keys::rules::kRouting, index,
                               api::wholeValue);
  });
}

int32_t NVX_SetCurrentUSBInputAudio(int32_t productId, int32_t channel) {
  return guarded([&] {
    uint32_t stored = 0;
    if (NVX_GetCurrentUSBInputAudioIndex(productId, channel, &stored) != NVX_OK || !isProduct(productId))
      return NVX_ERROR;
    // An edited file may hold any number: one outside the menu is refused, nothing is sent.
    if (stored > kLastMenuIndex) return NVX_OK;
    usb::sendToEveryMixer(usb::SetMixerOutputSetting, _convTable_K7[static_cast<size_t>(channel)][stored]);
    return NVX_OK;
  });
}

}  // extern "C"
