#include "mixer_report.h"

#include <fmt/format.h>

#include <cstdlib>

#include "udev_rule.h"

namespace mxrk7 {

namespace {

using nvx::support::Access;
using nvx::support::MixerStatus;

nlohmann::json orNull(const std::string &text) { return text.empty() ? nlohmann::json(nullptr) : nlohmann::json(text); }

nlohmann::json statusJson(const MixerStatus &mixer) {
  nlohmann::json firmware = nullptr;
  if (mixer.firmware)
    firmware = {{"text", nvx::support::firmwareText(*mixer.firmware)},
                {"number", nvx::support::firmwareNumber(*mixer.firmware)},
                {"bytes", *mixer.firmware}};
  nlohmann::json selectors = nlohmann::json::array();
  for (const auto &selector : mixer.inputSelectors)
    selectors.push_back(selector ? nlohmann::json(*selector) : nlohmann::json(nullptr));
  nlohmann::json serato = nullptr;
  if (mixer.serato) serato = {{"active", *mixer.serato == 1}, {"raw", *mixer.serato}};
  return {{"firmware", firmware}, {"input_selectors", selectors}, {"serato", serato}};
}

std::string optionalText(const nlohmann::json &value) { return value.is_null() ? "unreadable" : value.dump(); }

}  // namespace

std::string holderText(const MixerStatus &mixer) {
  std::string text = "another program using the NorvaneMXRK7Setup library";
  if (mixer.holder) {
    const auto &holder = *mixer.holder;
    text += holder.program.empty() ? fmt::format(" (process {})", holder.pid)
                                   : fmt::format(" ({}, process {})", holder.program, holder.pid);
  } else {
    text += " (a setup application, or another mxrk7)";
  }
  return text;
}

std::string mixerFix(const MixerStatus &mixer) {
  switch (mixer.access) {
    case Access::Ok:
      return {};
    case Access::Busy:
      return holderText(mixer) + " holds the mixer: close it, or wait until it is done, and try again";
    case Access::Denied:
      return accessFix();
    case Access::Gone:
      return "the mixer went away while it was being opened: plug it in again";
    case Access::Failed:
      break;
  }
  return "unplug the mixer and plug it in again; if that does not help, see the system log (journalctl -k)";
}

nlohmann::json busJson(const nvx::support::BusReport &bus, bool withStatus) {
  nlohmann::json mixers = nlohmann::json::array();
  for (const auto &mixer : bus.mixers) {
    nlohmann::json entry = {{"number", mixer.number},
                            {"bus", mixer.bus},
                            {"port", mixer.port},
                            {"node", orNull(mixer.node)},
                            {"access", nvx::support::accessName(mixer.access)},
                            {"error", orNull(mixer.openError)},
                            {"fix", orNull(mixerFix(mixer))},
                            {"holder", mixer.holder ? nlohmann::json{{"pid", mixer.holder->pid},
                                                                      {"program", orNull(mixer.holder->program)}}
                                                    : nlohmann::json(nullptr)}};
    if (withStatus) entry.update(statusJson(mixer));
    mixers.push_back(std::move(entry));
  }
  const char *config = std::getenv("MXRK7_VIRTUAL_MIXERS");
  return {{"transport", bus.transport},
          {"transport_available", bus.transportAvailable},
          {"virtual_config", bus.transport == "virtual" && config ? nlohmann::json(config) : nlohmann::json(nullptr)},
          {"mixers", mixers}};
}

nlohmann::json mixerCountsJson(const nvx::support::BusReport &bus) {
  return {{"found", bus.mixers.size()}, {"accessible", bus.accessible()}};
}

std::string transportText(const nlohmann::json &bus) {
  if (bus.at("virtual_config").is_string())
    return fmt::format("the virtual mixers of {}", bus.at("virtual_config").get<std::string>());
  if (!bus.at("transport_available").get<bool>()) return "USB, which cannot be used (libusb could not start)";
  return "USB";
}

std::string mixersText(const nlohmann::json &bus) {
  std::string text;
  for (const auto &mixer : bus.at("mixers")) {
    text += fmt::format("Mixer {}  bus {} port {}{}\n", mixer.at("number").get<uint32_t>(), mixer.at("bus").get<int>(),
                        mixer.at("port").get<std::string>(),
                        mixer.at("node").is_string() ? "  " + mixer.at("node").get<std::string>() : "");
    text += fmt::format("  access           {}\n", mixer.at("access").get<std::string>());
    if (mixer.at("fix").is_string()) text += fmt::format("  fix              {}\n", mixer.at("fix").get<std::string>());
    if (!mixer.contains("firmware") || mixer.at("access") != "ok") continue;
    const auto &firmware = mixer.at("firmware");
    text += fmt::format("  firmware         {}\n",
                        firmware.is_null() ? "unreadable"
                                           : fmt::format("{} (0x{:04X})", firmware.at("text").get<std::string>(),
                                                         firmware.at("number").get<uint32_t>()));
    std::vector<std::string> selectors;
    int position = 1;
    for (const auto &selector : mixer.at("input_selectors"))
      selectors.push_back(fmt::format("{}: {}", position++, optionalText(selector)));
    text += fmt::format("  input selectors  {}\n", fmt::join(selectors, "  "));
    const auto &serato = mixer.at("serato");
    text += fmt::format("  Serato           {}\n",
                        serato.is_null() ? "unreadable"
                        : serato.at("active").get<bool>()
                            ? "active"
                            : fmt::format("not active{}", serato.at("raw") == 0 ? "" : " (answer " + serato.at("raw").dump() + ")"));
  }
  return text;
}

Exit accessOutcome(const nvx::support::BusReport &bus) {
  if (!bus.transportAvailable) throw Failure(Exit::Failure, "USB cannot be used: libusb could not start");
  if (bus.mixers.empty()) return Exit::NoMixer;
  return bus.accessible() == 0 ? Exit::NoAccess : Exit::Ok;
}

std::string accessProblem(const nvx::support::BusReport &bus) {
  if (bus.mixers.empty()) return "no mixer is connected";
  std::vector<std::string> states;
  for (const auto &mixer : bus.mixers)
    states.push_back(fmt::format("mixer {} {}", mixer.number, nvx::support::accessName(mixer.access)));
  return fmt::format("no mixer can be opened ({}); run mxrk7 devices for the fix", fmt::join(states, ", "));
}

}  // namespace mxrk7
