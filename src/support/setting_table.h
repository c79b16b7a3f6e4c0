// The one table of the settings that the tool and the setup application offer: their names, how
// they are addressed (channel, bank, position, item), what values they take, where the settings
// file keeps them, and how each is read, set and re-applied through the library's C interface.
// Everything that deals with settings (the tool's verbs, the settings document, the application's
// pages) works from this table alone.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/setting_domain.h"
#include "support/stored_settings.h"

namespace nvx::support {

using Args = std::vector<uint32_t>;    // the library's numbers of a setting's parameters
using Values = std::vector<uint32_t>;  // the library's numbers of a setting's value fields

// One addressing parameter: "channel", "bank", "position" or "item".
struct Param {
  std::string name;
  Domain domain;
};

// One part of a setting's value. The domain may depend on one parameter (the routing menu on the
// channel, the beat FX range on the item); it is then called with that parameter filled in.
struct Field {
  std::string name;
  std::function<Domain(const Args &)> domain;
  std::optional<size_t> dependsOn;
};

struct WriteResult {
  int32_t result;                      // the library's result code
  std::optional<std::string> warning;  // the library's warning text when it warned
};

struct Setting {
  std::string name;
  std::string summary;
  // For people (the setup application): a short label ("Output boost") and a sentence that says
  // what the setting does for a DJ. Both are marked for translation where they are written; the
  // application translates them when it shows them.
  std::string title;
  std::string sentence;
  std::vector<Param> params;
  std::vector<Field> fields;

  // The settings file's key that holds this instance.
  std::function<std::string(const Args &)> key;
  // The integer in the settings file that holds this instance, or nullopt when the file holds none.
  std::function<std::optional<int32_t>(const Args &, const StoredSettings &)> stored;
  // The value as the library reports it (stored or its own default); nullopt when it reports none.
  std::function<std::optional<Values>(const Args &, const StoredSettings &)> read;
  // Sets through the library (send to every mixer and store); empty for a read-only setting.
  std::function<WriteResult(const Args &, const Values &)> write;
  // Why this instance cannot be set although the setting can, or nullopt.
  std::function<std::optional<std::string>(const Args &)> refuseSet;
  // Re-sends the stored value of one instance without storing it again, where the library has
  // such a function; apply uses the setter with the stored value otherwise.
  std::function<int32_t(const Args &)> replay;
  // Re-sends the stored values of every instance in one call; apply uses it only when the file
  // holds all of them, since the library sends a default for any it lacks.
  std::function<int32_t()> replayAll;

  bool readOnly() const { return !write; }
};

const std::vector<Setting> &settingTable();

// Looked up without regard to case; null when there is no such setting.
const Setting *findSetting(std::string_view name);

// "routing, boost, ...", for messages.
std::string settingNames();

}  // namespace nvx::support
