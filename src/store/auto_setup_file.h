// The per-user auto-setup file that remembers the last value of every setting.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "store/plist_file.h"
#include "store/update_outcome.h"

namespace nvx::store {

// <config home>/com.norvane.MXR-K7autosetup.plist, where the config home is $XDG_CONFIG_HOME when it
// is an absolute path, else $HOME/.config, else the password database's home + /.config. Built
// afresh at every call.
std::string GetAutoSetupFilePath();

// The file's root dictionary, or nullopt when the file is missing or unreadable.
std::optional<PlistDict> LoadAutoSetupFile();

// One change of an update: set `key` to `value`, or remove it when there is no value.
struct KeyUpdate {
  std::string key;
  std::optional<int32_t> value;
};

// The read-merge-write update: every change in one rewrite of the file under its advisory lock, all
// or nothing. Keys not named keep their values, other programs' included.
UpdateOutcome UpdateAutoSetupFile(std::span<const KeyUpdate> changes);

// What would keep an update from being made now, found without changing anything (no folder made,
// no lock taken): the folder and lock findings of `mxrk7 doctor`. nullopt when nothing would.
std::optional<UpdateObstacle> FindUpdateObstacle();

// The update of one key as every setter makes it. The outcome is not reported: a setter's result
// never depends on it.
void StoreAutoSetupValue(std::string_view key, int32_t value);

}  // namespace nvx::store
