#include "support/resend.h"

#include <NorvaneMXRK7Setup.h>

namespace nvx::support {

std::vector<HeldSetting> heldSettings(const StoredSettings &file) {
  std::vector<HeldSetting> held;
  for (const auto &setting : settingTable()) {
    if (setting.readOnly()) continue;  // read from another setting's key, which that setting sends
    HeldSetting mine{&setting, {}};
    for (const auto &args : instances(setting)) {
      Entry entry = evaluate(setting, args, file);
      if (entry.stored) mine.entries.push_back(std::move(entry));
    }
    if (!mine.entries.empty()) held.push_back(std::move(mine));
  }
  return held;
}

size_t instanceCount(const std::vector<HeldSetting> &held) {
  size_t count = 0;
  for (const auto &setting : held) count += setting.entries.size();
  return count;
}

void resend(const std::vector<HeldSetting> &held, const ResendHandlers &handlers) {
  auto sentAs = [](int32_t result) { return result == NVX_WARNING ? NVX_OK : result; };
  for (const auto &[setting, entries] : held) {
    std::vector<const Entry *> valid;
    for (const auto &entry : entries) {
      if (entry.source == Source::File) valid.push_back(&entry);
      else handlers.skipped(entry);
    }
    if (valid.empty()) continue;
    if (setting->replayAll && valid.size() == instances(*setting).size()) {
      const int32_t result = sentAs(setting->replayAll());
      for (const auto *entry : valid) handlers.sent(*entry, Via::Replay, result);
      continue;
    }
    for (const auto *entry : valid) {
      const bool replay = static_cast<bool>(setting->replay);
      const int32_t result = replay ? setting->replay(entry->args) : setting->write(entry->args, *entry->values).result;
      handlers.sent(*entry, replay ? Via::Replay : Via::Setter, sentAs(result));
    }
  }
}

}  // namespace nvx::support
