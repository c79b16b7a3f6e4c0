// apply: sends every setting the settings file holds to the connected mixers, and nothing for a
// setting it does not hold (a missing key never resets the mixer to a default).
#include <NorvaneMXRK7Setup.h>
#include <fmt/format.h>

#include <chrono>
#include <memory>
#include <thread>

#include "mixer_report.h"
#include "setting_values.h"
#include "support/mixer_probe.h"
#include "support/resend.h"
#include "support/stored_settings.h"
#include "verbs.h"

namespace mxrk7 {

namespace {

using nvx::support::StoredSettings;

struct ApplyOptions {
  bool wait = false;
  double timeoutSeconds = 10;
};

// What apply did for one instance.
nlohmann::json actionJson(const Entry &entry, const std::string &via, int32_t result) {
  nlohmann::json action = entryJson(entry);
  action["via"] = via;
  action["result"] = result == NVX_OK ? "ok" : "refused";
  return action;
}

// The mixers, once one can be opened; with --wait polled until then or the time-out.
nvx::support::BusReport awaitMixers(const ApplyOptions &options) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(options.timeoutSeconds);
  for (;;) {
    auto bus = nvx::support::probeMixers(nvx::support::Probe::AccessOnly);
    if (accessOutcome(bus) == Exit::Ok || !options.wait || std::chrono::steady_clock::now() >= deadline) return bus;
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
}

std::string applyText(const nlohmann::json &doc) {
  std::string text;
  for (const auto &action : doc.at("sent"))
    text += fmt::format("{:<26} {:<34} {}\n", targetText(action), valueText(action.at("fields")),
                        action.at("result") == "ok" ? fmt::format("sent ({})", action.at("via").get<std::string>())
                                                    : "refused by the library");
  for (const auto &skip : doc.at("skipped"))
    text += fmt::format("{:<26} {:<34} skipped: {}\n", targetText(skip), "-", skip.at("reason").get<std::string>());
  if (text.empty()) text = "Nothing to send: the settings file holds no setting.\n";
  return text;
}

Exit apply(Context &context, const ApplyOptions &options) {
  const auto file = StoredSettings::read();
  if (file.state() == StoredSettings::State::Unreadable)
    throw Failure(Exit::Failure, fmt::format("the settings file {} cannot be read; nothing was sent", file.path()),
                  {{"file", fileJson(file)}});

  const auto held = nvx::support::heldSettings(file);
  nlohmann::json doc = {{"file", fileJson(file)}, {"mixers", nullptr}, {"sent", nlohmann::json::array()},
                        {"skipped", nlohmann::json::array()}};
  if (held.empty()) {
    context.out.result(doc, applyText);
    return Exit::Ok;
  }

  const auto bus = awaitMixers(options);
  doc["mixers"] = mixerCountsJson(bus);
  if (const Exit outcome = accessOutcome(bus); outcome != Exit::Ok)
    throw Failure(outcome, accessProblem(bus) + "; nothing was sent", {{"mixers", doc["mixers"]}});

  bool refused = false;
  nvx::support::resend(
      held, {.sent =
                 [&](const Entry &entry, nvx::support::Via via, int32_t result) {
                   refused |= result != NVX_OK;
                   doc["sent"].push_back(
                       actionJson(entry, via == nvx::support::Via::Replay ? "replay" : "setter", result));
                 },
             .skipped = [&](const Entry &entry) { doc["skipped"].push_back(skippedJson(entry)); }});
  context.out.result(doc, applyText);
  return refused ? Exit::Refused : Exit::Ok;
}

}  // namespace

void addApplyVerb(VerbRegistry &verbs) {
  auto options = std::make_shared<ApplyOptions>();
  CLI::App *verb = verbs.add(
      "apply",
      "Send every setting the settings file holds to the connected mixers (nothing for a setting it does not "
      "hold). Runs when a mixer is plugged in.",
      {"mxrk7 apply", "mxrk7 apply --wait", "mxrk7 --virtual apply --json"},
      [options](Context &context) { return apply(context, *options); });
  verb->add_flag("--wait", options->wait, "Wait until a mixer can be opened (after it was plugged in)");
  verb->add_option("--timeout", options->timeoutSeconds, "How long --wait waits, in seconds")
      ->capture_default_str()
      ->check(CLI::Range(0.0, 600.0));
}

}  // namespace mxrk7
