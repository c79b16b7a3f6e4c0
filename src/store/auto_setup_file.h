// The per-user auto-setup file that remembers the last value of every setting.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/plist_file.h"

namespace nvx::store {

// <config home>/com.norvane.MXR-K7autosetup.plist, where the config home is $XDG_CONFIG_HOME when it
// is an absolute path, else $HOME/.config, else the password database's home + /.config. Built
// afresh at every call.
std::string GetAutoSetupFilePath();

// The file's root dictionary, or nullopt when the file is missing or unreadable.
std::optional<PlistDict> LoadAutoSetupFile();

// Read-merge-write update of one key, under the file's advisory lock. The outcome is not reported:
// a setter's result never depends on it.
void StoreAutoSetupValue(std::string_view key, int32_t value);

}  // namespace nvx::store
