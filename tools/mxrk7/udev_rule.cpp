#include "udev_rule.h"

#include <fmt/format.h>

#include <array>
#include <filesystem>
#include <string_view>

#include "support/mixer_probe.h"
#include "udev_rule_template.h"

namespace mxrk7 {

namespace {

void replaceAll(std::string &text, std::string_view from, const std::string &to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

}  // namespace

std::string udevRuleText() {
  const auto id = nvx::support::mixerUsbId();
  std::string text(kUdevRuleTemplate);
  replaceAll(text, "@MXRK7_VID_HEX@", fmt::format("{:04x}", id.vendor));
  replaceAll(text, "@MXRK7_PID_HEX@", fmt::format("{:04x}", id.product));
  return text;
}

std::string udevRulesDir() { return std::string(kUdevRulesDir); }

std::optional<std::string> installedUdevRule() {
  // The folders udev reads rules from, the administrator's first, then the build's own.
  const std::array<std::string, 5> folders = {"/etc/udev/rules.d", "/run/udev/rules.d", "/usr/lib/udev/rules.d",
                                              "/lib/udev/rules.d", udevRulesDir()};
  for (const auto &folder : folders) {
    const auto path = std::filesystem::path(folder) / kUdevRuleFile;
    std::error_code error;
    if (std::filesystem::exists(path, error)) return path.string();
  }
  return std::nullopt;
}

std::string accessFix() {
  if (const auto rule = installedUdevRule())
    return fmt::format(
        "the udev rule {} is installed; reload it (sudo udevadm control --reload && sudo udevadm trigger), "
        "plug the mixer in again, and use it from a local login (the rule gives access to the user at the seat)",
        *rule);
  return fmt::format(
      "install the udev rule: mxrk7 udev-rule | sudo tee /etc/udev/rules.d/{} && sudo udevadm control --reload "
      "&& sudo udevadm trigger; then plug the mixer in again",
      kUdevRuleFile);
}

}  // namespace mxrk7
