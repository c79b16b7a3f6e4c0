// Every change the application makes, in one place: set one setting (also what Undo does with
// the previous value), re-apply the stored settings, import and export a settings document. Each
// returns a ChangeReport that says, per mixer and for the settings file, what happened, so the
// window never claims more than took place.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/setting_entries.h"
#include "support/settings_document.h"

namespace mxrk7setup {

struct MixerOutcome {
  enum class Result : uint8_t { Ok, Failed, Busy, Denied };
  uint32_t number = 0;  // the library's device number (0 first); people see number + 1
  uint8_t bus = 0;
  std::string port;
  Result result = Result::Failed;
};

struct ChangeReport {
  std::vector<MixerOutcome> mixers;
  bool storedOk = false;       // the settings file took the change
  std::string storedReason;    // why not, when it does not
  bool storeInvolved = true;   // false where the change does not store (re-apply, export)
  std::optional<std::string> routingWarning;  // the library's warning text, in the user's language
  size_t count = 0;            // settings the change concerned (one, or those of an import or re-apply)
  size_t skipped = 0;          // stored with a value that cannot be sent (re-apply, export): left out
  std::string problem;         // what stopped the change before anything was sent (file unreadable)

  size_t took() const;  // mixers whose result is Ok
};

// One setting instance set to `values`, as the library's setter sets it: every mixer, the file, and
// for routing and boost the other programs.
ChangeReport setValue(const nvx::support::Setting &setting, const nvx::support::Args &args,
                      const nvx::support::Values &values);

// Every setting the settings file holds, sent to the mixers again (nothing for a setting it does
// not hold: a missing value never resets the mixer to a default).
ChangeReport reapplyStored();

// The stored settings written to `path` as a settings document. `storedOk` says whether the
// document was written; `count` how many settings it holds.
ChangeReport exportTo(const std::string &path);

// A settings document read and checked: its plan, or what is wrong with it (nothing changed).
struct ImportCheck {
  enum class Problem : uint8_t { None, Unreadable, NotJson, Invalid };
  std::optional<nvx::support::Plan> plan;  // when the problem is None
  Problem problem = Problem::None;
  std::string details;                         // for Invalid: the document's problems, one per line
  std::vector<nvx::support::Change> changes;   // what the plan changes in the file as it is now
};
ImportCheck checkImport(const std::string &path);

// Sets every assignment of a checked plan.
ChangeReport importPlan(const nvx::support::Plan &plan);

}  // namespace mxrk7setup
