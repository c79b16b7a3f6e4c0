// "Send all settings to the mixer": every setting the settings file holds goes to the connected
// mixers again, and nothing for a setting it does not hold (a missing key never resets the mixer).
#pragma once

#include <cstddef>

namespace mxrk7setup {

struct ResendOutcome {
  size_t sent = 0;     // settings sent
  size_t skipped = 0;  // held by the file with a value the library would not take
  size_t refused = 0;  // refused by the library
  bool unreadable = false;  // the settings file could not be read: nothing was sent
};

ResendOutcome resendAll();

}  // namespace mxrk7setup
