// The udev rule that gives the user at the seat access to the mixer.
#pragma once

#include <optional>
#include <string>

namespace mxrk7 {

inline constexpr const char *kUdevRuleFile = "70-mxrk7.rules";

// The rule for the mixer's USB numbers in force (the build's, or MXRK7_USB_ID's), as 4-digit
// lower-case hex: the text the build installs.
std::string udevRuleText();

// Where the rule is installed, if it is in a folder udev reads (or the build's install folder).
std::optional<std::string> installedUdevRule();

// The folder the build installs the rule to.
std::string udevRulesDir();

// What to do about a mixer this user may not open.
std::string accessFix();

}  // namespace mxrk7
