// Re-sending the remembered settings: every setting the settings file holds goes to the connected
// mixers again, and nothing for a setting it does not hold (a missing key never resets the mixer to
// a default). Shared by `mxrk7 apply` and the setup application's "Send all settings to the mixer".
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "support/setting_entries.h"
#include "support/stored_settings.h"

namespace nvx::support {

// The instances of one setting that the file holds (valid or not), in the table's order.
struct HeldSetting {
  const Setting *setting;
  std::vector<Entry> entries;
};

// Every writable setting with the instances the file holds; settings it holds nothing of are left out.
std::vector<HeldSetting> heldSettings(const StoredSettings &file);

size_t instanceCount(const std::vector<HeldSetting> &held);

enum class Via { Replay, Setter };

struct ResendHandlers {
  // One instance sent; `result` is NVX_OK or the library's refusal (a routing warning counts as sent).
  std::function<void(const Entry &, Via, int32_t result)> sent;
  // One instance the file holds with a number the library would not take: not sent.
  std::function<void(const Entry &)> skipped;
};

// Sends every valid held instance. A setting whose replay function re-sends all its instances is
// replayed in one call, but only when the file holds every instance of it (the replay would send a
// default for any the file lacks); otherwise each instance goes through its own replay or setter.
void resend(const std::vector<HeldSetting> &held, const ResendHandlers &handlers);

}  // namespace nvx::support
