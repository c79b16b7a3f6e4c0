#include "support/resend.h"

namespace nvx::support {

HeldSettings heldSettings(const StoredSettings &file) {
  HeldSettings held;
  for (const auto &setting : settingTable()) {
    if (setting.readOnly()) continue;  // read from another setting's number, which that setting sends
    for (const auto &args : instances(setting)) {
      Entry entry = evaluate(setting, args, file);
      if (!entry.stored) continue;
      if (entry.source == Source::File) held.valid.push_back({&setting, args, *entry.values});
      else held.skipped.push_back(std::move(entry));
    }
  }
  return held;
}

}  // namespace nvx::support
