// Changing settings from the tool and the setup application, and what came of it: for every mixer
// whether it took the change, and whether the settings file took it. Built on the library's change
// operations (api/setting_change.h), so a change goes exactly the way of the exported setters.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "store/update_outcome.h"
#include "support/setting_table.h"
#include "usb/device_loop.h"

namespace nvx::support {

using usb::MixerSelection;

// One instance set to one value.
struct Assignment {
  const Setting *setting;
  Args args;
  Values values;
};

// What one mixer did over a whole change (a change may hold several settings: import, reset, apply).
struct MixerOutcome {
  uint32_t number = 0;
  uint8_t bus = 0;
  std::string port;
  usb::MixerReport::Result result = usb::MixerReport::Result::Ok;  // Ok when it took every setting,
                                                                   // else what went wrong first
  size_t took = 0;    // settings it took
  size_t missed = 0;  // settings it did not take

  bool tookAll() const { return result == usb::MixerReport::Result::Ok; }
  bool opened() const;  // it opened at least once (it may still have failed a request)
};

// What became of one assignment of a change.
struct AssignmentOutcome {
  size_t reached = 0;  // mixers the change reached
  size_t took = 0;     // mixers that took this assignment
  // The warning the library gives for it (a routing whose deck's input selector makes it pointless),
  // in the user's language.
  std::optional<std::string> warning;
};

struct ChangeReport {
  std::vector<MixerOutcome> mixers;            // every mixer the change reached, in bus order
  std::optional<store::UpdateOutcome> stored;  // none when nothing was to be stored
  std::vector<AssignmentOutcome> each;         // one per assignment, in order

  size_t tookAll() const;   // mixers that took every setting
  size_t accessible() const;
  bool storedOk() const { return !stored || stored->stored(); }
};

// Sends every assignment to the selected mixers, then stores them all and removes `removeKeys` in
// one update of the settings file (all or nothing), then announces them as the setters do. The
// assignments must be allowed for their settings (see Setting::refuseSet and the field domains).
ChangeReport changeSettings(std::span<const Assignment> assignments, std::span<const std::string> removeKeys = {},
                            const MixerSelection &which = {});
ChangeReport changeSetting(const Assignment &assignment, const MixerSelection &which = {});

// Sends every assignment to the selected mixers without storing or announcing anything: what the
// settings file holds, sent again (`mxrk7 apply`, the application's "Re-apply").
ChangeReport sendSettings(std::span<const Assignment> assignments, const MixerSelection &which = {});

// The text a mixer's result is known by in reports: "ok", "failed", "busy", "denied".
const char *outcomeName(const MixerOutcome &mixer);

}  // namespace nvx::support
