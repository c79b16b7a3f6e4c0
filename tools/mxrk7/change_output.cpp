#include "change_output.h"

#include <fmt/format.h>

#include "support/mixer_probe.h"
#include "support/setting_domain.h"

namespace mxrk7 {

namespace {

using nvx::support::ChangeReport;

std::string mixerName(const nlohmann::json &mixer) {
  return fmt::format("mixer {} (bus {} port {})", mixer.at("mixer").get<uint32_t>(), mixer.at("bus").get<int>(),
                     mixer.at("port").get<std::string>());
}

// "is busy (held by another program)", "was denied (no permission)", "failed the request"
std::string whatWentWrong(const std::string &result) {
  if (result == "busy") return "is busy (held by another program)";
  if (result == "denied") return "may not be opened (no permission; see mxrk7 doctor)";
  return "did not take it (the request failed)";
}

}  // namespace

nlohmann::json mixersJson(const ChangeReport &report, bool several) {
  nlohmann::json each = nlohmann::json::array();
  for (const auto &mixer : report.mixers) {
    nlohmann::json entry = {{"mixer", mixer.number},
                            {"bus", mixer.bus},
                            {"port", mixer.port},
                            {"result", nvx::support::outcomeName(mixer)}};
    if (several) {
      entry["taken"] = mixer.took;
      entry["failed"] = mixer.missed;
    }
    each.push_back(std::move(entry));
  }
  return {{"found", report.mixers.size()},
          {"accessible", report.accessible()},
          {"took", report.tookAll()},
          {"each", std::move(each)}};
}

nlohmann::json storedJson(const ChangeReport &report) {
  if (!report.stored) return nullptr;
  const auto &stored = *report.stored;
  nlohmann::json reason = nullptr;
  if (stored.reason) reason = nvx::store::reasonText(*stored.reason);
  nlohmann::json out = {{"ok", stored.stored()}, {"reason", reason}};
  if (!stored.backup.empty()) out["replaced_unreadable"] = stored.backup;
  return out;
}

Exit changeExit(const ChangeReport &report) {
  if (!report.storedOk()) return Exit::Failure;
  const size_t found = report.mixers.size();
  const size_t took = report.tookAll();
  if (found > 0 && took == 0) return Exit::NoAccess;
  if (took < found) return Exit::Partial;
  return Exit::Ok;
}

std::string resultOf(Exit exit) {
  switch (exit) {
    case Exit::Failure:
      return "not-stored";
    case Exit::NoAccess:
      return "not-sent";
    case Exit::Partial:
      return "partial";
    default:
      return "ok";
  }
}

std::string deliveryText(const nlohmann::json &doc) {
  std::vector<std::string> parts;
  const auto &mixers = doc.at("mixers");
  if (mixers.is_object()) {
    const auto found = mixers.at("found").get<size_t>();
    const auto took = mixers.at("took").get<size_t>();
    std::vector<std::string> tookNames, problems;
    for (const auto &mixer : mixers.at("each")) {
      const std::string result = mixer.at("result").get<std::string>();
      if (result == "ok") tookNames.push_back(fmt::format("mixer {}", mixer.at("mixer").get<uint32_t>()));
      else problems.push_back(fmt::format("{} {}", mixerName(mixer), whatWentWrong(result)));
    }
    if (found == 0) parts.push_back("no mixer is connected (it is sent when one is: mxrk7 apply)");
    else if (took == found) parts.push_back(fmt::format("sent to {} mixer{}", found, found == 1 ? "" : "s"));
    else if (took == 0) parts.push_back("NOT sent: " + fmt::format("{}", fmt::join(problems, "; ")));
    else
      parts.push_back(fmt::format("sent to {}; {}", fmt::join(tookNames, ", "), fmt::join(problems, "; ")));
  }
  const auto &stored = doc.at("stored");
  if (stored.is_object()) {
    if (stored.at("ok").get<bool>()) {
      parts.push_back("stored");
      if (stored.contains("replaced_unreadable"))
        parts.push_back(fmt::format("the settings file was unreadable and was replaced; its old bytes are kept as {}",
                                    stored.at("replaced_unreadable").get<std::string>()));
    } else {
      parts.push_back(fmt::format("NOT stored ({}; see mxrk7 doctor)", stored.at("reason").is_string()
                                                                            ? stored.at("reason").get<std::string>()
                                                                            : "the settings file could not be written"));
    }
  }
  return fmt::format("{}", fmt::join(parts, "; "));
}

nvx::support::MixerSelection selectedMixer(const std::string &word) {
  nvx::support::MixerSelection which;
  if (word.find('-') != std::string::npos) which.place = word;
  else if (const auto number = nvx::support::parseNumber(word)) which.number = *number;
  else
    throw Failure(Exit::Usage,
                  fmt::format("--mixer {}: name a mixer by its number (mxrk7 devices lists them) or as BUS-PORT", word),
                  {{"word", word}});
  const auto bus = nvx::support::probeMixers(nvx::support::Probe::AccessOnly);
  for (const auto &mixer : bus.mixers)
    if (which.matches(mixer.number, mixer.bus, mixer.port)) return which;
  throw Failure(Exit::NoMixer, fmt::format("mixer {} is not connected; nothing was changed (see mxrk7 devices)", word),
                {{"mixer", word}});
}

}  // namespace mxrk7
