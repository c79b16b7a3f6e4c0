#include "udev_rule.h"

#include <fmt/format.h>

#include <array>
#include <filesystem>
#include <set>
#include <string_view>

#include "environment.h"
#include "install_layout.h"
#include "support/mixer_probe.h"

namespace fs = std::filesystem;

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

std::string udevRulesDir() {
  const fs::path dir(kUdevRulesDir);
  return dir.is_absolute() ? dir.string() : (fs::path(installPrefix()) / dir).lexically_normal().string();
}

std::vector<RuleLocation> findUdevRules() {
  const std::array<std::string, 4> udevFolders = {"/etc/udev/rules.d", "/run/udev/rules.d", "/usr/lib/udev/rules.d",
                                                  "/lib/udev/rules.d"};
  std::vector<RuleLocation> found;
  std::set<fs::path> seen;  // /lib is /usr/lib on most systems: each real folder once
  auto look = [&](const std::string &folder, bool readByUdev) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(folder, error);
    if (error || !seen.insert(real).second) return;
    const fs::path path = fs::path(folder) / kUdevRuleFile;
    if (fs::exists(path, error)) found.push_back({path.string(), readByUdev});
  };
  for (const auto &folder : udevFolders) look(folder, true);
  look(udevRulesDir(), false);
  return found;
}

std::optional<std::string> installedUdevRule() {
  for (const auto &location : findUdevRules())
    if (location.readByUdev) return location.path;
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
