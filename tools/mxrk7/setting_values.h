// Settings as the tool's verbs handle them: the words of a command line that address and set them,
// and the text lines of their JSON forms. The settings themselves, their values and JSON forms are
// the support library's (shared with the setup application).
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <vector>

#include "support/setting_entries.h"

namespace mxrk7 {

using nvx::support::Args;
using nvx::support::argsJson;
using nvx::support::Domain;
using nvx::support::Entry;
using nvx::support::Field;
using nvx::support::Param;
using nvx::support::entryJson;
using nvx::support::evaluate;
using nvx::support::fieldsJson;
using nvx::support::fileJson;
using nvx::support::findSetting;
using nvx::support::instances;
using nvx::support::Setting;
using nvx::support::settingNames;
using nvx::support::settingTable;
using nvx::support::Source;
using nvx::support::StoredSettings;
using nvx::support::settableEntries;
using nvx::support::targetOf;
using nvx::support::targetText;
using nvx::support::valueText;
using nvx::support::Values;

// Command-line words. Each throws a usage Failure that names what is allowed.
const Setting &settingNamed(const std::string &word);
Args parseArgs(const Setting &setting, const std::vector<std::string> &words);
Values parseValues(const Setting &setting, const Args &args, const std::vector<std::string> &words);
// "NAME BANK MODE PARAM" (with `withValues`), "NAME [BANK]" otherwise.
std::string usageOf(const Setting &setting, bool withValues);
// A parameter or field name as usage lines show it: "BANK".
std::string placeholder(std::string_view name);

// An example of the words that name one instance of the setting (`argCount` of its arguments) and,
// with `withValue`, give it a value: written from the table, so help and manual never name a
// setting or value that this build does not have. A word with blanks is quoted.
std::string exampleWords(nvx::tables::SettingId id, size_t argCount, bool withValue);
// Every argument, and a value.
inline std::string exampleWords(nvx::tables::SettingId id) { return exampleWords(id, 3, true); }

// An entry left out because the file holds a number the library does not take: its entryJson
// with the "reason".
nlohmann::json skippedJson(const Entry &entry);

// One aligned line "NAME B   PITCH (3), ...   [file]" of an entry, and the settings file's line.
std::string entryLine(const nlohmann::json &entry);
std::string fileText(const nlohmann::json &file);

}  // namespace mxrk7
