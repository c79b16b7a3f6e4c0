#include "changes.h"

#include <NorvaneMXRK7Setup.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <variant>

#include "support/mixer_probe.h"
#include "support/resend.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

namespace {

using namespace nvx::support;

// The mixers as the change will meet them. The library's setters report no per-mixer outcome, so
// each mixer's access state, read just before the change, stands for what the change did to it: a
// mixer that opens is counted as having taken the value.
std::vector<MixerOutcome> mixersBeforeChange() {
  std::vector<MixerOutcome> mixers;
  for (const auto &mixer : probeMixers(Probe::AccessOnly).mixers) {
    MixerOutcome outcome{mixer.number, mixer.bus, mixer.port, MixerOutcome::Result::Failed};
    if (mixer.access == Access::Ok) outcome.result = MixerOutcome::Result::Ok;
    else if (mixer.access == Access::Busy) outcome.result = MixerOutcome::Result::Busy;
    else if (mixer.access == Access::Denied) outcome.result = MixerOutcome::Result::Denied;
    mixers.push_back(std::move(outcome));
  }
  return mixers;
}

// Whether the settings file now holds every assignment, read back from the file; the reason
// when it does not.
void checkStored(const std::vector<Assignment> &assignments, ChangeReport &report) {
  const auto file = StoredSettings::read();
  report.storedOk = std::all_of(assignments.begin(), assignments.end(), [&](const Assignment &a) {
    const Entry entry = evaluate(*a.setting, a.args, file);
    return entry.source == Source::File && entry.values == a.values;
  });
  if (report.storedOk) return;
  if (file.state() == StoredSettings::State::Unreadable) report.storedReason = file.unreadableReason();
  else report.storedReason = file.writeProblem().value_or(std::string());
}

bool sent(int32_t result) { return result == NVX_OK || result == NVX_WARNING; }

}  // namespace

size_t ChangeReport::took() const {
  return static_cast<size_t>(std::count_if(mixers.begin(), mixers.end(),
                                           [](const MixerOutcome &m) { return m.result == MixerOutcome::Result::Ok; }));
}

ChangeReport setValue(const Setting &setting, const Args &args, const Values &values) {
  ChangeReport report;
  report.count = 1;
  report.mixers = mixersBeforeChange();
  const WriteResult written = setting.write(args, values);
  if (!sent(written.result)) {
    report.refused = true;
    report.mixers.clear();
    return report;
  }
  report.routingWarning = written.warning;
  checkStored({{&setting, args, values}}, report);
  return report;
}

ChangeReport reapplyStored() {
  ChangeReport report;
  report.storeInvolved = false;
  const auto file = StoredSettings::read();
  if (file.state() == StoredSettings::State::Unreadable) {
    report.problem = file.unreadableReason();
    return report;
  }
  report.mixers = mixersBeforeChange();
  resend(heldSettings(file), {.sent = [&](const Entry &, Via, int32_t result) { report.count += sent(result); },
                              .skipped = [&](const Entry &) { ++report.skipped; }});
  return report;
}

ChangeReport exportTo(const std::string &path) {
  ChangeReport report;
  report.storeInvolved = false;
  const auto file = StoredSettings::read();
  if (file.state() == StoredSettings::State::Unreadable) {
    report.problem = file.unreadableReason();
    return report;
  }
  const auto exported = exportSettings(file);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << documentText(exported.document);
  out.close();
  report.storedOk = static_cast<bool>(out);
  report.count = exported.document.at("settings").size();
  report.skipped = exported.skipped.size();
  return report;
}

ImportCheck checkImport(const std::string &path) {
  ImportCheck check;
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    check.problem = ImportCheck::Problem::Unreadable;
    return check;
  }
  std::stringstream text;
  text << in.rdbuf();
  const auto document = nlohmann::json::parse(text.str(), nullptr, false);
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

ChangeReport importPlan(const Plan &plan) {
  ChangeReport report;
  report.mixers = mixersBeforeChange();
  const auto result = applyImport(plan);
  std::vector<Assignment> taken;
  for (const auto &applied : result.applied) {
    if (!sent(applied.written.result)) continue;
    taken.push_back(applied.assignment);
    if (applied.written.warning && !report.routingWarning) report.routingWarning = applied.written.warning;
  }
  report.count = taken.size();
  report.refused = taken.size() < result.applied.size();
  checkStored(taken, report);
  return report;
}

}  // namespace mxrk7setup
