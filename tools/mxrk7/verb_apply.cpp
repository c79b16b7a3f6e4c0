// apply: sends every setting the settings file holds to the connected mixers, and nothing for a
// setting it does not hold (a missing key never resets the mixer to a default).
#include <fmt/format.h>

#include <chrono>
#include <memory>
#include <thread>

#include "change_output.h"
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
  std::string mixer;
};

// What apply did for one instance: the stored value sent again ("via": "replay"), taken by every
// mixer reached ("ok"), by some ("partial") or by none ("failed").
nlohmann::json actionJson(const nvx::support::Assignment &sent, const nvx::support::AssignmentOutcome &outcome,
                          const StoredSettings &file) {
  nlohmann::json action = entryJson(evaluate(*sent.setting, sent.args, file));
  action["via"] = "replay";
  action["result"] = outcome.took == outcome.reached ? "ok" : outcome.took == 0 ? "failed" : "partial";
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
  for (const auto &action : doc.at("sent")) {
    const std::string result = action.at("result").get<std::string>();
    text += fmt::format("{:<26} {:<34} {}\n", targetText(action), valueText(action.at("fields")),
                        result == "ok" ? "sent" : result == "partial" ? "sent to some mixers" : "not sent");
  }
  for (const auto &skip : doc.at("skipped"))
    text += fmt::format("{:<26} {:<34} skipped: {}\n", targetText(skip), "-", skip.at("reason").get<std::string>());
  if (text.empty()) return "Nothing to send: the settings file holds no setting.\n";
  if (doc.at("mixers").is_object()) text += deliveryText(doc) + ".\n";
  return text;
}

Exit apply(Context &context, const ApplyOptions &options) {
  const auto file = StoredSettings::read();
  if (file.state() == StoredSettings::State::Unreadable)
    throw Failure(Exit::Failure, fmt::format("the settings file {} cannot be read; nothing was sent", file.path()),
                  {{"file", fileJson(file)}});

  const auto held = nvx::support::heldSettings(file);
  nlohmann::json doc = {{"file", fileJson(file)},          {"result", "ok"},    {"mixers", nullptr},
                        {"stored", nullptr},               {"sent", nlohmann::json::array()},
                        {"skipped", nlohmann::json::array()}};
  for (const auto &entry : held.skipped) doc["skipped"].push_back(skippedJson(entry));
  if (held.valid.empty()) {
    context.out.result(doc, applyText);
    return Exit::Ok;
  }

  const auto bus = awaitMixers(options);
  if (accessOutcome(bus) == Exit::NoMixer)
    throw Failure(Exit::NoMixer, "no mixer is connected; nothing was sent", {{"mixers", mixerCountsJson(bus)}});
  const auto which = options.mixer.empty() ? nvx::support::MixerSelection{} : selectedMixer(options.mixer);
  // What the file holds goes out again; nothing is stored, so the file cannot make apply fail.
  const auto report = nvx::support::sendSettings(held.valid, which);
  for (size_t i = 0; i < held.valid.size(); ++i) doc["sent"].push_back(actionJson(held.valid[i], report.each[i], file));
  const Exit exit = changeExit(report);
  doc["mixers"] = mixersJson(report, true);
  doc["result"] = resultOf(exit);
  context.out.result(doc, applyText);
  return exit;
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
  verb->add_option("--timeout", options->timeoutSeconds, "How long --wait waits: 0-600 seconds (default 10)")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.0, 600.0).description(""));
  verb->add_option("--mixer", options->mixer, "Send to this one mixer only: its number as mxrk7 devices lists it, or "
                                              "BUS-PORT")
      ->type_name("N|BUS-PORT");
}

}  // namespace mxrk7
