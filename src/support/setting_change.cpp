#include "support/setting_change.h"

#include <NorvaneMXRK7Setup.h>

#include <algorithm>

#include "api/setting_change.h"
#include "tables/localizations.h"

namespace nvx::support {

namespace {

using Result = usb::MixerReport::Result;

std::vector<api::Assignment> forLibrary(std::span<const Assignment> assignments) {
  std::vector<api::Assignment> out;
  for (const auto &a : assignments) out.push_back({a.setting->descriptor, a.args, a.values});
  return out;
}

// Folds each delivery's mixer reports into one outcome per mixer: a mixer took the change only if
// it took every setting; one that a delivery did not reach (unplugged meanwhile) missed it.
std::vector<MixerOutcome> tally(const std::vector<api::Delivery> &deliveries) {
  std::vector<MixerOutcome> mixers;
  for (const auto &delivery : deliveries) {
    for (const auto &report : delivery.mixers) {
      auto found = std::find_if(mixers.begin(), mixers.end(), [&](const MixerOutcome &m) {
        return m.number == report.number && m.bus == report.bus && m.port == report.port;
      });
      if (found == mixers.end()) found = mixers.insert(mixers.end(), {report.number, report.bus, report.port});
      if (report.took()) {
        ++found->took;
      } else {
        ++found->missed;
        if (found->result == Result::Ok) found->result = report.result;
      }
    }
  }
  for (auto &mixer : mixers) {
    const size_t reached = mixer.took + mixer.missed;
    if (reached < deliveries.size()) {
      mixer.missed += deliveries.size() - reached;
      if (mixer.result == Result::Ok) mixer.result = Result::Gone;
    }
  }
  std::sort(mixers.begin(), mixers.end(), [](const MixerOutcome &a, const MixerOutcome &b) { return a.number < b.number; });
  return mixers;
}

std::optional<std::string> warningText(const api::Assignment &a, const api::Delivery &delivery) {
  if (!delivery.warning) return std::nullopt;
  const char *text = nullptr;
  const auto channel = static_cast<int32_t>(a.args[0]);
  if (NVX_GetWarningTextForSetUSBAudioInput(0, channel, NVX_WARNING, tables::kFollowUserLocale, &text) == NVX_OK &&
      text)
    return std::string(text);
  return "the mixer's input selector of this deck is not set for the chosen source";
}

ChangeReport report(const std::vector<api::Assignment> &assignments, api::ChangeOutcome outcome) {
  ChangeReport out;
  out.mixers = tally(outcome.sent);
  out.stored = std::move(outcome.stored);
  for (size_t i = 0; i < assignments.size(); ++i) {
    const auto &delivery = outcome.sent[i];
    AssignmentOutcome each;
    each.reached = delivery.mixers.size();
    each.took = static_cast<size_t>(std::count_if(delivery.mixers.begin(), delivery.mixers.end(),
                                                  [](const usb::MixerReport &m) { return m.took(); }));
    each.warning = warningText(assignments[i], delivery);
    out.each.push_back(std::move(each));
  }
  return out;
}

}  // namespace

bool MixerOutcome::opened() const {
  return took > 0 || result == Result::Ok || result == Result::Failed;
}

size_t ChangeReport::tookAll() const {
  return static_cast<size_t>(std::count_if(mixers.begin(), mixers.end(), [](const MixerOutcome &m) { return m.tookAll(); }));
}

size_t ChangeReport::accessible() const {
  return static_cast<size_t>(std::count_if(mixers.begin(), mixers.end(), [](const MixerOutcome &m) { return m.opened(); }));
}

ChangeReport changeSettings(std::span<const Assignment> assignments, std::span<const std::string> removeKeys,
                            const MixerSelection &which) {
  const auto forApi = forLibrary(assignments);
  const usb::CallScope scope;  // one transport for every device loop of the change
  return report(forApi, api::change(forApi, removeKeys, which));
}

ChangeReport changeSetting(const Assignment &assignment, const MixerSelection &which) {
  return changeSettings(std::span<const Assignment>(&assignment, 1), {}, which);
}

ChangeReport sendSettings(std::span<const Assignment> assignments, const MixerSelection &which) {
  const auto forApi = forLibrary(assignments);
  const usb::CallScope scope;
  api::ChangeOutcome outcome;
  for (const auto &a : forApi) outcome.sent.push_back(api::sendValue(a, which));
  return report(forApi, std::move(outcome));
}

const char *outcomeName(const MixerOutcome &mixer) {
  switch (mixer.result) {
    case Result::Ok:
      return "ok";
    case Result::Busy:
      return "busy";
    case Result::Denied:
      return "denied";
    case Result::Failed:
    case Result::Gone:
    case Result::NoOpen:
      break;
  }
  return "failed";
}

}  // namespace nvx::support
