// info, devices and udev-rule: what the library and the bus look like, and how to get access.
#include <NorvaneMXRK7Setup.h>
#include <fmt/format.h>

#include "mixer_report.h"
#include "setting_values.h"
#include "support/data_folder.h"
#include "support/mixer_probe.h"
#include "support/product.h"
#include "support/stored_settings.h"
#include "udev_rule.h"
#include "verbs.h"

namespace mxrk7 {

namespace {

using nvx::support::kProductName;
using nvx::support::productId;

using nvx::support::Probe;

// A version text from the library, or why there is none.
nlohmann::json versionJson(int32_t (*get)(int32_t, const char **), const std::string &missing) {
  const char *text = nullptr;
  if (get(productId(), &text) == NVX_OK && text) return {{"text", text}, {"missing", nullptr}};
  return {{"text", nullptr}, {"missing", missing}};
}

std::string versionText(const nlohmann::json &version) {
  return version.at("text").is_string() ? version.at("text").get<std::string>()
                                        : version.at("missing").get<std::string>();
}

Exit info(Context &context) {
  const auto bus = nvx::support::probeMixers(Probe::WithStatus);
  const bool connected = NVX_IsUSBConnection(productId()) == NVX_CONNECTED;
  // The library's code is built into the tool ("tool"); "library" is the version file of the data
  // folder that code reads.
  const auto data = nvx::support::inspectDataFolder();
  nlohmann::json doc = {
      {"product", {{"name", kProductName}, {"id", productId()}}},
      {"data_folder", {{"path", data.path}, {"exists", data.exists}}},
      {"versions",
       {{"library", versionJson(NVX_GetLibraryVersionText, "unknown: the library's own info.plist is missing or unreadable")},
        {"setup_app", versionJson(NVX_GetUtilityVersionText, "not installed")},
        // Linux has no driver of the mixer's own: the kernel's USB audio driver serves it.
        {"driver", versionJson(NVX_GetDriverVersionText,
                               "none needed: the kernel's USB audio driver (snd-usb-audio) serves the mixer")},
        {"tool", {{"text", nvx::support::kCoreVersion}, {"missing", nullptr}}}}},
      {"connection", connected ? "connected" : "not connected"},
      {"settings_file", fileJson(nvx::support::StoredSettings::read())},
      {"bus", busJson(bus, true)}};
  context.out.result(doc, [](const nlohmann::json &d) {
    const auto &v = d.at("versions");
    const auto &found = d.at("bus");
    std::string text;
    text += fmt::format("Product          {} (product id {})\n", d.at("product").at("name").get<std::string>(),
                        d.at("product").at("id").get<int>());
    text += fmt::format("Tool             {} (the library's code is built in)\n", versionText(v.at("tool")));
    text += fmt::format("Data folder      {}{}, version {}\n", d.at("data_folder").at("path").get<std::string>(),
                        d.at("data_folder").at("exists").get<bool>() ? "" : " (missing)", versionText(v.at("library")));
    text += fmt::format("Setup app        {}\n", versionText(v.at("setup_app")));
    text += fmt::format("Driver           {}\n", versionText(v.at("driver")));
    text += fmt::format("Connection       {} ({} mixer{} found)\n", d.at("connection").get<std::string>(),
                        found.at("mixers").size(), found.at("mixers").size() == 1 ? "" : "s");
    text += fmt::format("Mixers on        {}\n", transportText(found));
    text += fmt::format("Settings file    {} ({})\n", d.at("settings_file").at("path").get<std::string>(),
                        d.at("settings_file").at("state").get<std::string>());
    const std::string mixers = mixersText(found);
    if (!mixers.empty()) text += "\n" + mixers;
    return text;
  });
  return Exit::Ok;
}

Exit devices(Context &context) {
  const auto bus = nvx::support::probeMixers(Probe::AccessOnly);
  const Exit outcome = accessOutcome(bus);
  context.out.result(busJson(bus, false), [](const nlohmann::json &d) {
    if (d.at("mixers").empty()) return fmt::format("No mixer found on {}.", transportText(d));
    return fmt::format("Mixers on {}:\n{}", transportText(d), mixersText(d));
  });
  return outcome;
}

Exit udevRule(Context &context) {
  const auto id = nvx::support::mixerUsbId();
  const auto installed = installedUdevRule();
  const nlohmann::json doc = {{"file_name", kUdevRuleFile},
                              {"vendor", fmt::format("{:04x}", id.vendor)},
                              {"product", fmt::format("{:04x}", id.product)},
                              {"install_dir", udevRulesDir()},
                              {"installed", installed ? nlohmann::json(*installed) : nlohmann::json(nullptr)},
                              {"text", udevRuleText()}};
  // The text alone, so that it can be piped into the rules folder.
  context.out.result(doc, [](const nlohmann::json &d) { return d.at("text").get<std::string>(); });
  return Exit::Ok;
}

}  // namespace

void addStatusVerbs(VerbRegistry &verbs) {
  verbs.add("info",
            "Product, versions (the library's code built into this tool, the data folder it reads), connection, and "
            "each mixer's firmware, input selectors and Serato state.",
            {"mxrk7 info", "mxrk7 --virtual info", "mxrk7 info --json"}, info);
  verbs.add("devices", "The mixers found on USB, where they are, and whether this user may open them.",
            {"mxrk7 devices", "mxrk7 devices --json"}, devices);
  verbs.add("udev-rule",
            fmt::format("Print the udev rule that lets the user at the seat open the mixer (installed as {}/{}).",
                        udevRulesDir(), kUdevRuleFile),
            {fmt::format("mxrk7 udev-rule | sudo tee /etc/udev/rules.d/{}", kUdevRuleFile),
             "sudo udevadm control --reload && sudo udevadm trigger"},
            udevRule);
}

}  // namespace mxrk7
