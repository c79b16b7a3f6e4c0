// The changes the library makes, one operation per kind, each returning what happened at every mixer
// and in the settings file. The exported setters are thin wrappers over them (they keep their own
// argument checks and results, and drop the outcome); the tool and the setup application report it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "store/update_outcome.h"
#include "tables/settings.h"
#include "usb/device_loop.h"

namespace nvx::api {

using tables::Numbers;

// One instance of a setting given one value.
struct Assignment {
  const tables::SettingDescriptor *setting;
  std::vector<uint32_t> args;
  std::vector<uint32_t> values;
};

// What sending one word did: the mixers counted, and a report for each mixer visited.
struct Delivery {
  uint32_t counted = 0;
  std::vector<usb::MixerReport> mixers;
  bool warning = false;  // a mixer's input selector makes the change pointless (routing)
};

struct ChangeOutcome {
  std::vector<Delivery> sent;                  // one per assignment, in order
  std::optional<store::UpdateOutcome> stored;  // none when nothing was to be stored
};

// Sends a word with a write request to the selected mixers; nothing is stored or announced. What the
// replay functions and `apply` do.
Delivery sendWord(usb::Request request, uint16_t word, const usb::MixerSelection &which = {});

// Sends one value of one instance to the selected mixers, nothing stored or announced.
Delivery sendValue(const Assignment &assignment, const usb::MixerSelection &which = {});

// The change every setter makes: the word of each assignment goes to the selected mixers (one device
// loop each, in order), then every stored number and every removal of `removeKeys` goes into the
// settings file in one update, then each change is announced (routing, boost), then each routing
// change is checked against the mixers' input selectors. Assignments must be valid for their setting.
ChangeOutcome change(std::span<const Assignment> assignments, std::span<const std::string> removeKeys = {},
                     const usb::MixerSelection &which = {});

// One assignment.
ChangeOutcome change(const Assignment &assignment, const usb::MixerSelection &which = {});

// Reads every counted mixer's input selectors and tells whether one of them makes the caller warn;
// `warns` is given the selector byte of `channel` (reply element channel + 1). Stops at the first
// mixer that warns.
template <class Warns>
bool anyMixerWarns(uint32_t count, int32_t channel, Warns warns, const usb::MixerSelection &which = {}) {
  bool warning = false;
  usb::visitMixers(
      count,
      [&](usb::Device &mixer, usb::MixerReport &) {
        uint8_t reply[6] = {};
        usb::GetInputSelectorInfo(&mixer, reply, sizeof reply);
        warning = warns(reply[channel + 1]);
        return warning ? usb::Visit::Stop : usb::Visit::Next;
      },
      which);
  return warning;
}

}  // namespace nvx::api
