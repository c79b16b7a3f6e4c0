// The udev rule that gives the user at the seat access to the mixer, and where it is installed.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace mxrk7 {

inline constexpr const char *kUdevRuleFile = "70-mxrk7.rules";

// The rule for the mixer's USB numbers in force (the build's, or MXRK7_USB_ID's), as 4-digit
// lower-case hex: the text the build installs.
std::string udevRuleText();

// The folder the build installs the rule to, below this program's install prefix when relative.
std::string udevRulesDir();

// One copy of the rule file.
struct RuleLocation {
  std::string path;
  bool readByUdev;  // in a folder udev reads rules from
};

// Every copy found: in the folders udev reads (/etc/udev/rules.d, /run/udev/rules.d,
// /usr/lib/udev/rules.d, /lib/udev/rules.d, the administrator's first), then in this program's own
// install folder, which udev does not read unless it is one of those (it reads none below
// /usr/local/lib/udev, for one).
std::vector<RuleLocation> findUdevRules();

// The first copy udev reads, if any.
std::optional<std::string> installedUdevRule();

// What to do about a mixer this user may not open.
std::string accessFix();

}  // namespace mxrk7
