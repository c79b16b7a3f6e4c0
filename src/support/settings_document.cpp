#include "support/settings_document.h"

#include <NorvaneMXRK7Setup.h>
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "support/product.h"

namespace nvx::support {

namespace {

using nlohmann::json;

// Collects the problems of one document.
class Checker {
 public:
  void add(std::optional<size_t> entry, std::string target, std::string message) {
    problems_.push_back({entry, std::move(target), std::move(message)});
  }
  size_t count() const { return problems_.size(); }
  std::vector<Problem> take() { return std::move(problems_); }

 private:
  std::vector<Problem> problems_;
};

std::string inQuotes(std::string_view text) { return json(text).dump(); }

// A parameter or value given as a name or a number, as the same word would read on a command
// line. Numbers of other kinds (fractions, booleans) are no word at all.
std::optional<std::string> wordOf(const json &value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number_unsigned()) return std::to_string(value.get<uint64_t>());
  if (value.is_number_integer()) return std::to_string(value.get<int64_t>());
  return std::nullopt;
}

std::string shown(const json &value) { return value.is_string() ? inQuotes(value.get<std::string>()) : value.dump(); }

// Keys of `object` other than `allowed`, for "unknown key" problems.
std::vector<std::string> unknownKeys(const json &object, std::initializer_list<std::string_view> allowed) {
  std::vector<std::string> unknown;
  for (const auto &[key, value] : object.items())
    if (std::find(allowed.begin(), allowed.end(), key) == allowed.end()) unknown.push_back(key);
  return unknown;
}

std::optional<Args> readArgs(const Setting &setting, const json &entry, size_t at, Checker &checker) {
  const json args = entry.value("args", json::object());
  if (!args.is_object()) {
    checker.add(at, setting.name, "\"args\" is not an object");
    return std::nullopt;
  }
  const size_t before = checker.count();
  for (const auto &item : args.items()) {
    const std::string &key = item.key();
    if (std::none_of(setting.params.begin(), setting.params.end(), [&](const Param &p) { return p.name == key; }))
      checker.add(at, setting.name, fmt::format("args: {} is not an argument of {}", inQuotes(key), setting.name));
  }
  Args parsed;
  for (const auto &param : setting.params) {
    if (!args.contains(param.name)) {
      checker.add(at, setting.name,
                  fmt::format("args: {} is missing; allowed: {}", inQuotes(param.name), param.domain.describe()));
      continue;
    }
    const json &value = args.at(param.name);
    const auto word = wordOf(value);
    const auto number = word ? param.domain.parse(*word) : std::nullopt;
    if (!number) {
      checker.add(at, setting.name,
                  fmt::format("args: {}: {} is not allowed; allowed: {}", param.name, shown(value),
                              param.domain.describe()));
      continue;
    }
    parsed.push_back(*number);
  }
  if (checker.count() != before) return std::nullopt;
  return parsed;
}

// One part of the value: its index, its text, or both (which must then agree).
std::optional<uint32_t> readField(const Field &field, const Domain &domain, const json &given, size_t at,
                                  const std::string &target, Checker &checker) {
  auto problem = [&](const std::string &message) {
    checker.add(at, target, fmt::format("{}: {}", field.name, message));
    return std::nullopt;
  };
  for (const auto &key : unknownKeys(given, {"name", "index", "text"})) problem(fmt::format("unknown key {}", inQuotes(key)));
  const json text = given.value("text", json(nullptr));
  if (!text.is_null() && !text.is_string()) return problem(fmt::format("\"text\" {} is not a text", text.dump()));
  if (given.contains("index")) {
    const json &index = given.at("index");
    // Any whole number (a document built in code may hold signed ones), within 32 bits.
    const bool whole = index.is_number_integer() && index.get<int64_t>() >= 0 && index.get<int64_t>() <= UINT32_MAX;
    if (!whole || !domain.contains(static_cast<uint32_t>(index.get<int64_t>())))
      return problem(fmt::format("index {} is not allowed; allowed: {}", index.dump(), domain.describe()));
    const auto number = static_cast<uint32_t>(index.get<int64_t>());
    if (text.is_string() && !domain.names(number, text.get<std::string>())) {
      const auto actual = domain.textOf(number);
      return problem(actual ? fmt::format("index {} is {}, not {}", number, inQuotes(*actual), shown(text))
                            : fmt::format("index {} has no text, yet the text is {}", number, shown(text)));
    }
    return number;
  }
  if (text.is_string()) {
    if (const auto number = domain.parse(text.get<std::string>())) return number;
    return problem(fmt::format("{} is not allowed; allowed: {}", shown(text), domain.describe()));
  }
  return problem("needs an \"index\" or a \"text\"");
}

std::optional<Values> readFields(const Setting &setting, const Args &args, const json &entry, size_t at,
                                 const std::string &target, Checker &checker) {
  if (!entry.contains("fields") || !entry.at("fields").is_array()) {
    checker.add(at, target, "\"fields\" is missing or not a list");
    return std::nullopt;
  }
  const size_t before = checker.count();
  std::map<std::string, const json *> byName;
  for (const auto &given : entry.at("fields")) {
    if (!given.is_object() || !given.contains("name") || !given.at("name").is_string()) {
      checker.add(at, target, fmt::format("fields: {} is not an object with a \"name\"", given.dump()));
      continue;
    }
    const auto name = given.at("name").get<std::string>();
    if (std::none_of(setting.fields.begin(), setting.fields.end(), [&](const Field &f) { return f.name == name; }))
      checker.add(at, target, fmt::format("fields: {} is not a part of {}'s value", inQuotes(name), setting.name));
    else if (!byName.emplace(name, &given).second)
      checker.add(at, target, fmt::format("fields: {} is given twice", inQuotes(name)));
  }
  Values values;
  for (const auto &field : setting.fields) {
    const auto found = byName.find(field.name);
    const Domain domain = field.domain(args);
    if (found == byName.end()) {
      checker.add(at, target, fmt::format("fields: {} is missing; allowed: {}", inQuotes(field.name), domain.describe()));
      continue;
    }
    if (const auto value = readField(field, domain, *found->second, at, target, checker)) values.push_back(*value);
  }
  if (checker.count() != before) return std::nullopt;
  return values;
}

std::optional<Assignment> readEntry(const json &entry, size_t at, Checker &checker) {
  if (!entry.is_object()) {
    checker.add(at, "", "is not an object");
    return std::nullopt;
  }
  if (!entry.contains("setting") || !entry.at("setting").is_string()) {
    checker.add(at, "", "\"setting\" is missing or not a text");
    return std::nullopt;
  }
  const auto name = entry.at("setting").get<std::string>();
  const Setting *setting = findSetting(name);
  if (!setting) {
    checker.add(at, name, fmt::format("unknown setting {}; settings: {}", inQuotes(name), settingNames()));
    return std::nullopt;
  }
  for (const auto &key : unknownKeys(entry, {"setting", "args", "key", "fields"}))
    checker.add(at, setting->name, fmt::format("unknown key {}", inQuotes(key)));
  const auto args = readArgs(*setting, entry, at, checker);
  if (!args) return std::nullopt;
  const std::string target = targetOf(*setting, *args);
  if (setting->readOnly()) {
    checker.add(at, target, fmt::format("{} is read-only: {}", setting->name, setting->sentence));
    return std::nullopt;
  }
  if (const auto why = setting->refuseSet(*args)) {
    checker.add(at, target, *why);
    return std::nullopt;
  }
  auto values = readFields(*setting, *args, entry, at, target, checker);
  if (!values) return std::nullopt;
  return Assignment{setting, *args, std::move(*values)};
}

void checkHeader(const json &document, Checker &checker) {
  if (document.value("format", json(nullptr)) != json(kDocumentFormat))
    checker.add(std::nullopt, "",
                fmt::format("\"format\" is not {}: this is not a settings document of mxrk7", inQuotes(kDocumentFormat)));
  const json version = document.value("version", json(nullptr));
  if (!version.is_number_integer() || version.get<int64_t>() < 1)
    checker.add(std::nullopt, "", fmt::format("\"version\" must be a whole number from 1, not {}", version.dump()));
  else if (version.get<int64_t>() > kDocumentVersion)
    checker.add(std::nullopt, "",
                fmt::format("the document is of version {}, written by a newer mxrk7; this one reads version {}",
                            version.get<int64_t>(), kDocumentVersion));
  if (document.contains("product") && document.at("product") != json(kProductName))
    checker.add(std::nullopt, "",
                fmt::format("the document is for the product {}, not {}", document.at("product").dump(), kProductName));
}

// The position of a setting in the table, for the plan's order.
size_t tableIndex(const Setting *setting) {
  const auto &table = settingTable();
  return static_cast<size_t>(setting - table.data());
}

// JSON on one line with a blank after each comma and colon; object keys in `order` first, the
// others after them in their own order.
std::string oneLine(const json &value, const std::vector<std::string> &order = {}) {
  if (value.is_array()) {
    std::vector<std::string> items;
    for (const auto &item : value) items.push_back(oneLine(item, order));
    return fmt::format("[{}]", fmt::join(items, ", "));
  }
  if (!value.is_object()) return value.dump();
  std::vector<std::string> keys;
  for (const auto &key : order)
    if (value.contains(key)) keys.push_back(key);
  for (const auto &[key, item] : value.items())
    if (std::find(order.begin(), order.end(), key) == order.end()) keys.push_back(key);
  std::vector<std::string> items;
  for (const auto &key : keys) items.push_back(fmt::format("{}: {}", json(key).dump(), oneLine(value.at(key), order)));
  return fmt::format("{{{}}}", fmt::join(items, ", "));
}

// The order in which a setting's arguments are read ("bank", "position", "item").
std::vector<std::string> argOrder(const json &entry) {
  std::vector<std::string> order;
  if (entry.is_object() && entry.contains("setting") && entry.at("setting").is_string())
    if (const auto *setting = findSetting(entry.at("setting").get<std::string>()))
      for (const auto &param : setting->params) order.push_back(param.name);
  return order;
}

}  // namespace

std::string documentText(const json &document) {
  if (!document.is_object()) return document.dump(2) + "\n";
  const std::vector<std::string> header = {"format", "version", "product"};
  std::vector<std::string> lines;
  for (const auto &key : header)
    if (document.contains(key)) lines.push_back(fmt::format("  {}: {}", json(key).dump(), document.at(key).dump()));
  for (const auto &[key, value] : document.items())
    if (key != "settings" && std::find(header.begin(), header.end(), key) == header.end())
      lines.push_back(fmt::format("  {}: {}", json(key).dump(), oneLine(value)));
  if (document.contains("settings")) {
    const json &settings = document.at("settings");
    if (!settings.is_array() || settings.empty()) {
      lines.push_back(fmt::format("  \"settings\": {}", settings.dump()));
    } else {
      std::vector<std::string> entries;
      for (const auto &entry : settings) {
        std::vector<std::string> order = {"setting", "args", "key", "fields", "name", "index", "text"};
        const auto args = argOrder(entry);
        order.insert(order.end(), args.begin(), args.end());
        entries.push_back("    " + oneLine(entry, order));
      }
      lines.push_back(fmt::format("  \"settings\": [\n{}\n  ]", fmt::join(entries, ",\n")));
    }
  }
  return fmt::format("{{\n{}\n}}\n", fmt::join(lines, ",\n"));
}

std::string Problem::text() const {
  std::string where;
  if (entry) where = target.empty() ? fmt::format("settings[{}]: ", *entry) : fmt::format("settings[{}] ({}): ", *entry, target);
  return where + message;
}

std::string ImportError::text() const {
  std::vector<std::string> lines;
  for (const auto &problem : problems) lines.push_back(problem.text());
  return fmt::format("{}", fmt::join(lines, "\n"));
}

Export exportSettings(const StoredSettings &file) {
  Export out;
  json settings = json::array();
  for (auto &entry : settableEntries(file)) {
    const Setting &setting = *entry.setting;
    if (entry.source == Source::File)
      settings.push_back({{"setting", setting.name},
                          {"args", argsJson(setting, entry.args)},
                          {"key", setting.key(entry.args)},
                          {"fields", fieldsJson(setting, entry.args, *entry.values)}});
    else if (entry.source == Source::Invalid && entry.stored)
      out.skipped.push_back(std::move(entry));
  }
  out.document = {{"format", kDocumentFormat},
                  {"version", kDocumentVersion},
                  {"product", kProductName},
                  {"settings", std::move(settings)}};
  return out;
}

std::variant<Plan, ImportError> planImport(const json &document) {
  Checker checker;
  if (!document.is_object()) {
    checker.add(std::nullopt, "", "the document is not a JSON object");
    return ImportError{checker.take()};
  }
  checkHeader(document, checker);
  if (!document.contains("settings") || !document.at("settings").is_array()) {
    checker.add(std::nullopt, "", "\"settings\" is missing or not a list");
    return ImportError{checker.take()};
  }
  Plan plan;
  std::map<std::pair<const Setting *, Args>, size_t> seen;
  const auto &entries = document.at("settings");
  for (size_t at = 0; at < entries.size(); ++at) {
    auto assignment = readEntry(entries[at], at, checker);
    if (!assignment) continue;
    const auto [first, inserted] = seen.emplace(std::make_pair(assignment->setting, assignment->args), at);
    if (!inserted) {
      checker.add(at, targetOf(*assignment->setting, assignment->args),
                  fmt::format("appears twice (first in settings[{}])", first->second));
      continue;
    }
    plan.assignments.push_back(std::move(*assignment));
  }
  if (checker.count() != 0) return ImportError{checker.take()};
  std::stable_sort(plan.assignments.begin(), plan.assignments.end(), [](const Assignment &a, const Assignment &b) {
    return std::make_pair(tableIndex(a.setting), a.args) < std::make_pair(tableIndex(b.setting), b.args);
  });
  return plan;
}

std::vector<Change> describe(const Plan &plan, const StoredSettings &file) {
  std::vector<Change> changes;
  for (const auto &assignment : plan.assignments) {
    Entry before = evaluate(*assignment.setting, assignment.args, file);
    ChangeKind kind = ChangeKind::Added;
    if (before.source == Source::File && before.values == assignment.values) kind = ChangeKind::Unchanged;
    else if (before.stored) kind = ChangeKind::Changed;
    changes.push_back({assignment, std::move(before), kind});
  }
  return changes;
}

const char *changeKindName(ChangeKind kind) {
  switch (kind) {
    case ChangeKind::Added:
      return "added";
    case ChangeKind::Changed:
      return "changed";
    case ChangeKind::Unchanged:
      break;
  }
  return "unchanged";
}

std::vector<std::string> ownedKeys(const Setting *only) {
  std::set<std::string> keys;
  for (const auto &setting : settingTable()) {
    if (setting.readOnly() || (only && &setting != only)) continue;
    for (const auto &args : instances(setting))
      if (!setting.refuseSet(args)) keys.insert(setting.key(args));
  }
  return {keys.begin(), keys.end()};
}

std::vector<Entry> removedBy(const Plan &plan, const StoredSettings &file, const Setting *only) {
  std::set<std::string> kept;
  for (const auto &a : plan.assignments) kept.insert(a.setting->key(a.args));
  // One entry per key: where instances share a key (the channel fader words of banks B and
  // temporary), the one whose value the key holds.
  std::map<std::string, Entry> byKey;
  for (auto &entry : settableEntries(file)) {
    const std::string key = entry.setting->key(entry.args);
    if ((only && entry.setting != only) || kept.contains(key) || !file.contains(key)) continue;
    const auto found = byKey.find(key);
    if (found == byKey.end()) byKey.emplace(key, std::move(entry));
    else if (!found->second.stored && entry.stored) found->second = std::move(entry);
  }
  std::vector<Entry> removed;
  for (auto &[key, entry] : byKey) removed.push_back(std::move(entry));
  return removed;
}

ChangeReport applyImport(const Plan &plan, std::span<const std::string> removeKeys, const MixerSelection &which) {
  return changeSettings(plan.assignments, removeKeys, which);
}

}  // namespace nvx::support
