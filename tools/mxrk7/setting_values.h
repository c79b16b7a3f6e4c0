// Settings as the verbs handle them: the instances a command line names, the words that address
// and set them, and one setting's current value with where it comes from, as a JSON document that
// every verb prints (or renders as text) the same way.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "setting_table.h"

namespace mxrk7 {

// Where a value shown for a setting comes from.
enum class Source {
  File,     // the settings file holds it
  Default,  // the file does not; the library reports its default
  Unset,    // the file does not, and the library has no default (the mixer keeps its own)
  Invalid,  // the file holds a number the library does not accept for this setting
};

struct Entry {
  const Setting *setting;
  Args args;
  Source source;
  std::optional<int32_t> stored;  // the number in the file, when it holds one
  std::optional<Values> values;   // as the library reports them
};

Entry evaluate(const Setting &setting, const Args &args, const nvx::support::StoredSettings &file);

// Whether every value lies in its field's domain.
bool valuesValid(const Setting &setting, const Args &args, const Values &values);

// Every instance of the setting whose leading parameters are `prefix`.
std::vector<Args> instances(const Setting &setting, const Args &prefix = {});

// Command-line words. Each throws a usage Failure that names what is allowed.
const Setting &settingNamed(const std::string &word);
Args parseArgs(const Setting &setting, const std::vector<std::string> &words);
Values parseValues(const Setting &setting, const Args &args, const std::vector<std::string> &words);
// "fx-filter BANK MODE PARAM" (with `withValues`), "fx-filter [BANK]" otherwise.
std::string usageOf(const Setting &setting, bool withValues);
// A parameter or field name as usage lines show it: "BANK".
std::string placeholder(std::string_view name);

// JSON forms, and their text.
nlohmann::json argsJson(const Setting &setting, const Args &args);
nlohmann::json fieldsJson(const Setting &setting, const Args &args, const Values &values);
nlohmann::json entryJson(const Entry &entry);
nlohmann::json fileJson(const nvx::support::StoredSettings &file);
std::string sourceName(Source source);

// "fx-filter B", "PITCH (3), param 64", and one aligned line "fx-filter B   PITCH (3), ...   [file]".
std::string targetText(const nlohmann::json &entry);
std::string valueText(const nlohmann::json &fields);
std::string entryLine(const nlohmann::json &entry);
std::string fileText(const nlohmann::json &file);

}  // namespace mxrk7
