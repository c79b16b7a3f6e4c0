#include "api/setting_change.h"

#include "notify/notifications.h"
#include "store/auto_setup_file.h"

namespace nvx::api {

namespace {

void announce(const Assignment &a) {
  switch (a.setting->notice) {
    case tables::Notice::InputAudio:
      notify::postInputAudioChange(static_cast<int32_t>(a.args[0]), static_cast<int32_t>(a.values[0]));
      break;
    case tables::Notice::BoostLevel:
      notify::postBoostLevelChange(static_cast<int32_t>(a.values[0]));
      break;
    case tables::Notice::None:
      break;
  }
}

}  // namespace

Delivery sendWord(usb::Request request, uint16_t word, const usb::MixerSelection &which) {
  auto sent = usb::sendToEveryMixer(request, word, which);
  return {sent.count, std::move(sent.mixers), false};
}

Delivery sendValue(const Assignment &a, const usb::MixerSelection &which) {
  return sendWord(*a.setting->request, a.setting->word(a.args, a.values), which);
}

ChangeOutcome change(std::span<const Assignment> assignments, std::span<const std::string> removeKeys,
                     const usb::MixerSelection &which) {
  ChangeOutcome outcome;
  std::vector<store::KeyUpdate> updates;
  for (const auto &a : assignments) {
    const uint16_t word = a.setting->word(a.args, a.values);
    outcome.sent.push_back(sendWord(*a.setting->request, word, which));
    if (const auto key = a.setting->key(a.args)) updates.push_back({*key, a.setting->stored(a.args, a.values, word)});
  }
  for (const auto &key : removeKeys) updates.push_back({key, std::nullopt});
  if (!updates.empty()) outcome.stored = store::UpdateAutoSetupFile(updates);
  for (const auto &a : assignments) announce(a);
  for (size_t i = 0; i < assignments.size(); ++i) {
    const auto &a = assignments[i];
    auto &delivery = outcome.sent[i];
    if (!a.setting->warnsOn || delivery.counted == 0) continue;
    delivery.warning = anyMixerWarns(
        delivery.counted, static_cast<int32_t>(a.args[0]),
        [&](uint8_t selector) { return a.setting->warnsOn(a.args, selector); }, which);
  }
  return outcome;
}

ChangeOutcome change(const Assignment &assignment, const usb::MixerSelection &which) {
  return change(std::span<const Assignment>(&assignment, 1), {}, which);
}

}  // namespace nvx::api
