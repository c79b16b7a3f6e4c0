#include "changes.h"

#include <algorithm>
#include <variant>

#include "support/document_file.h"
#include "support/resend.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

namespace {

using namespace nvx::support;

// The core's outcome of a change, in the words of the window: each mixer's result, the file's.
ChangeReport fromOutcome(const nvx::support::ChangeReport &outcome, size_t count) {
  ChangeReport report;
  report.count = count;
  for (const auto &mixer : outcome.mixers) {
    MixerOutcome shown{mixer.number, mixer.bus, mixer.port, MixerOutcome::Result::Failed};
    const std::string_view result = outcomeName(mixer);
    if (result == "ok") shown.result = MixerOutcome::Result::Ok;
    else if (result == "busy") shown.result = MixerOutcome::Result::Busy;
    else if (result == "denied") shown.result = MixerOutcome::Result::Denied;
    report.mixers.push_back(std::move(shown));
  }
  report.storeInvolved = outcome.stored.has_value();
  report.storedOk = outcome.storedOk();
  if (outcome.stored && outcome.stored->reason) report.storedReason = nvx::store::reasonText(*outcome.stored->reason);
  for (const auto &each : outcome.each)
    if (each.warning && !report.routingWarning) report.routingWarning = each.warning;
  return report;
}

// The settings file for a change that only reads it (re-apply, export); none, with the report saying
// why, when it cannot be read.
std::optional<StoredSettings> readableFile(ChangeReport &report) {
  report.storeInvolved = false;
  auto file = StoredSettings::read();
  if (file.state() != StoredSettings::State::Unreadable) return file;
  report.problem = file.unreadableReason();
  return std::nullopt;
}

}  // namespace

size_t ChangeReport::took() const {
  return static_cast<size_t>(std::count_if(mixers.begin(), mixers.end(),
                                           [](const MixerOutcome &m) { return m.result == MixerOutcome::Result::Ok; }));
}

ChangeReport setValue(const Setting &setting, const Args &args, const Values &values) {
  return fromOutcome(changeSetting({&setting, args, values}), 1);
}

ChangeReport reapplyStored() {
  ChangeReport report;
  const auto file = readableFile(report);
  if (!file) return report;
  const auto held = heldSettings(*file);
  report = fromOutcome(sendSettings(held.valid), held.valid.size());
  report.skipped = held.skipped.size();
  return report;
}

ChangeReport exportTo(const std::string &path) {
  ChangeReport report;
  const auto file = readableFile(report);
  if (!file) return report;
  const auto exported = exportSettings(*file);
  report.storedOk = !writeDocumentFile(path, documentText(exported.document));
  report.count = exported.document.at("settings").size();
  report.skipped = exported.skipped.size();
  return report;
}

ImportCheck checkImport(const std::string &path) {
  ImportCheck check;
  const auto read = readDocumentFile(path);
  if (!read.ok()) {
    check.problem = ImportCheck::Problem::Unreadable;
    return check;
  }
  const auto document = nlohmann::json::parse(read.text, nullptr, false);
  if (document.is_discarded()) {
    check.problem = ImportCheck::Problem::NotJson;
    return check;
  }
  auto plan = planImport(document);
  if (const auto *error = std::get_if<ImportError>(&plan)) {
    check.problem = ImportCheck::Problem::Invalid;
    check.details = error->text();
    return check;
  }
  check.plan = std::get<Plan>(std::move(plan));
  check.changes = describe(*check.plan, StoredSettings::read());
  return check;
}

ChangeReport importPlan(const Plan &plan) { return fromOutcome(applyImport(plan), plan.assignments.size()); }

}  // namespace mxrk7setup
