// The one device loop every hardware function uses: count the mixers once, then for each device
// number open the mixer, use it and close it. A mixer that fails to open is skipped (the exported
// functions say nothing of it), but the loop reports what happened at every mixer, so the tool and
// the setup application can tell a busy or denied mixer from one that took a value.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "usb/requests.h"
#include "usb/transport.h"

namespace nvx::usb {

enum class Visit { Next, Stop };

// What one mixer did during a loop.
struct MixerReport {
  enum class Result : uint8_t {
    Ok,      // opened, and every request it was given succeeded
    Failed,  // opened, but a request failed
    Busy,    // another program holds it
    Denied,  // no permission on its device node
    Gone,    // unplugged between counting and opening
    NoOpen,  // could not be opened for another reason
  };
  uint32_t number = 0;  // device number: position among the mixers in bus order
  uint8_t bus = 0;
  std::string port;     // port path ("1.4"), or "virtual-<n>"
  Result result = Result::NoOpen;

  bool took() const { return result == Result::Ok; }
};

// The text a report's result is known by: "ok", "failed", "busy", "denied", "gone", "not opened".
const char *resultName(MixerReport::Result result);

// What the code of an open says about the mixer: Ok, Busy, Denied, Gone, or NoOpen for any other
// failure.
MixerReport::Result openResultOf(IOReturn code);

// Which mixers a loop talks to: every one, or the one with this device number, or the one at this
// place on the bus ("BUS-PORT", such as "1-4.2", or "1-virtual-0").
struct MixerSelection {
  std::optional<uint32_t> number;
  std::optional<std::string> place;

  bool all() const { return !number && !place; }
  bool matches(uint32_t deviceNumber, uint8_t bus, const std::string &port) const;
};

// The place of a mixer as MixerSelection::place names it: "<bus>-<port>".
std::string placeOf(uint8_t bus, const std::string &port);

// CheckUSBAudio(0).
uint32_t countMixers();

// A step of a loop: uses the open mixer, may mark a request as failed in the report, and says
// whether the loop goes on.
using MixerUse = std::function<Visit(Device &, MixerReport &)>;

// Device numbers 0..count-1 in order (those `which` selects): each mixer that opens is handed to
// `use`, then closed. Returns early when `use` answers Visit::Stop. One report per mixer visited.
std::vector<MixerReport> visitMixers(uint32_t count, const MixerUse &use, const MixerSelection &which = {});
// The same for steps that report nothing.
std::vector<MixerReport> visitMixers(uint32_t count, const std::function<Visit(Device &)> &use);

// Sends one write request of the table with `value` to every selected mixer that opens, `count`
// being taken beforehand. A mixer whose request fails is reported as Failed.
std::vector<MixerReport> sendToMixers(uint32_t count, Request request, uint16_t value,
                                      const MixerSelection &which = {});

// Counts the mixers, then sends one write request to each that opens.
struct SendReport {
  uint32_t count = 0;  // the mixers counted
  std::vector<MixerReport> mixers;
};
SendReport sendToEveryMixer(Request request, uint16_t value, const MixerSelection &which = {});

}  // namespace nvx::usb
