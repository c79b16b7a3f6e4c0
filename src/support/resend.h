// Re-sending the remembered settings: every setting the settings file holds goes to the connected
// mixers again, and nothing for a setting it does not hold (a missing key never resets the mixer to
// a default). Shared by `mxrk7 apply` and the setup application's "Re-apply stored settings".
#pragma once

#include <vector>

#include "support/setting_change.h"
#include "support/setting_entries.h"
#include "support/stored_settings.h"

namespace nvx::support {

struct HeldSettings {
  std::vector<Assignment> valid;  // each instance the file holds with a value the library takes
  std::vector<Entry> skipped;     // instances the file holds with a number it does not take
};

// Every instance of every setting that can be sent which the file holds, in the table's order. (A
// stored "Output4", which only other programs write, is sent too: the mixer takes it.)
HeldSettings heldSettings(const StoredSettings &file);

}  // namespace nvx::support
