// The settings as the tool and the setup application offer them: a view of the library's own
// setting descriptors (tables/settings.h) with the words people use for their instances and values.
// Everything that deals with settings (the tool's verbs, the settings document, the application's
// pages, the shell completion) works from this table.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/setting_domain.h"
#include "support/stored_settings.h"
#include "tables/settings.h"

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
  bool onOff = false;  // 0 off, 1 on
};

struct Setting {
  const tables::SettingDescriptor *descriptor;
  std::string name;      // the tool's word
  std::string title;     // for people
  std::string sentence;  // what it does for a DJ
  std::vector<Param> params;
  std::vector<Field> fields;

  bool readOnly() const { return descriptor->readOnly(); }
  // The settings file's key of this instance ("" where the library stores none).
  std::string key(const Args &args) const;
  // The number in `file` that holds this instance's value, or nullopt when the file holds none (no
  // key, no integer, or a shared word that names another bank).
  std::optional<int32_t> stored(const Args &args, const StoredSettings &file) const;
  // The value as the library reports it (stored or its own default); nullopt when it reports none.
  std::optional<Values> read(const Args &args, const StoredSettings &file) const;
  // Why this instance cannot be set although the setting can, or nullopt.
  std::optional<std::string> refuseSet(const Args &args) const;
};

const std::vector<Setting> &settingTable();

// Looked up without regard to case; null when there is no such setting.
const Setting *findSetting(std::string_view name);
// The table's entry of a descriptor.
const Setting &settingOf(const tables::SettingDescriptor &descriptor);

// "routing, boost, ...", for messages.
std::string settingNames();

}  // namespace nvx::support
