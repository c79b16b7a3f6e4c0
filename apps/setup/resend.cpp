#include "resend.h"

#include <NorvaneMXRK7Setup.h>

#include "support/resend.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

ResendOutcome resendAll() {
  using namespace nvx::support;
  ResendOutcome outcome;
  const auto file = StoredSettings::read();
  if (file.state() == StoredSettings::State::Unreadable) {
    outcome.unreadable = true;
    return outcome;
  }
  resend(heldSettings(file), {.sent = [&](const Entry &, Via, int32_t result) {
                                ++(result == NVX_OK ? outcome.sent : outcome.refused);
                              },
                              .skipped = [&](const Entry &) { ++outcome.skipped; }});
  return outcome;
}

}  // namespace mxrk7setup
