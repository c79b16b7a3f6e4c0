// One setting instance's current value with where it comes from, and the JSON forms in which the
// tool prints settings and the settings document holds them. The tool renders its text from the
// same JSON, so text, JSON and document never disagree.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

#include "support/setting_table.h"
#include "support/stored_settings.h"

namespace nvx::support {

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

Entry evaluate(const Setting &setting, const Args &args, const StoredSettings &file);

// Whether every value lies in its field's domain.
bool valuesValid(const Setting &setting, const Args &args, const Values &values);

// Every instance of the setting whose leading parameters are `prefix`, in the table's order.
std::vector<Args> instances(const Setting &setting, const Args &prefix = {});

// Every instance a setter can change (read-only settings and refused instances left out),
// evaluated against `file`, in the table's order: what the settings document and the file's
// check go through.
std::vector<Entry> settableEntries(const StoredSettings &file);

std::string sourceName(Source source);  // "file", "default", "unset", "invalid"

// JSON forms.
// {"bank": "B", "position": 3, ...}: names where a parameter has them, numbers otherwise.
nlohmann::json argsJson(const Setting &setting, const Args &args);
// [{"name": "mode", "index": 3, "text": "PITCH"}, ...]: each part of the value.
nlohmann::json fieldsJson(const Setting &setting, const Args &args, const Values &values);
// {"setting", "args", "source", "stored", "fields"}
nlohmann::json entryJson(const Entry &entry);
// {"path", "state"}
nlohmann::json fileJson(const StoredSettings &file);

// "NAME B" for one instance: the text of targetText for the setting and its arguments.
std::string targetOf(const Setting &setting, const Args &args);

// Text forms of the JSON forms: "NAME B" for an object with "setting" and "args", and
// "PITCH (3), param 64" for a fields array ("-" for null).
std::string targetText(const nlohmann::json &entry);
std::string valueText(const nlohmann::json &fields);

}  // namespace nvx::support
