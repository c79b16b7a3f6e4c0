#include "setting_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "exit_status.h"

namespace mxrk7 {

namespace {

using nvx::support::StoredSettings;

// A field's domain for an instance.
Domain domainOf(const Setting &setting, size_t field, const Args &args) { return setting.fields[field].domain(args); }

Failure badWord(const Setting &setting, const std::string &what, const std::string &word, const Domain &domain) {
  return Failure(Exit::Usage,
                 fmt::format("{} {}: \"{}\" is not allowed; allowed: {}", setting.name, placeholder(what), word,
                             domain.describe()),
                 {{"setting", setting.name}, {"word", word}, {"allowed", domain.toJson()}});
}

bool allDigits(const std::string &text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

Entry evaluate(const Setting &setting, const Args &args, const StoredSettings &file) {
  Entry entry{&setting, args, Source::Unset, setting.stored(args, file), setting.read(args, file)};
  const bool valid = entry.values && valuesValid(setting, args, *entry.values);
  if (entry.stored) entry.source = valid ? Source::File : Source::Invalid;
  else if (entry.values) entry.source = valid ? Source::Default : Source::Invalid;
  return entry;
}

bool valuesValid(const Setting &setting, const Args &args, const Values &values) {
  for (size_t field = 0; field < setting.fields.size(); ++field)
    if (field >= values.size() || !domainOf(setting, field, args).contains(values[field])) return false;
  return true;
}

std::vector<Args> instances(const Setting &setting, const Args &prefix) {
  std::vector<Args> all{prefix};
  for (size_t param = prefix.size(); param < setting.params.size(); ++param) {
    std::vector<Args> longer;
    for (const auto &head : all) {
      for (const uint32_t member : setting.params[param].domain.members()) {
        Args args = head;
        args.push_back(member);
        longer.push_back(std::move(args));
      }
    }
    all = std::move(longer);
  }
  return all;
}

const Setting &settingNamed(const std::string &word) {
  if (const auto *setting = findSetting(word)) return *setting;
  std::vector<std::string> names;
  for (const auto &setting : settingTable()) names.push_back(setting.name);
  throw Failure(Exit::Usage, fmt::format("unknown setting \"{}\"; settings: {}", word, settingNames()),
                {{"word", word}, {"allowed", names}});
}

Args parseArgs(const Setting &setting, const std::vector<std::string> &words) {
  Args args;
  for (size_t i = 0; i < words.size() && i < setting.params.size(); ++i) {
    const auto &param = setting.params[i];
    const auto number = param.domain.parse(words[i]);
    if (!number) throw badWord(setting, param.name, words[i], param.domain);
    args.push_back(*number);
  }
  return args;
}

Values parseValues(const Setting &setting, const Args &args, const std::vector<std::string> &words) {
  Values values;
  for (size_t field = 0; field < setting.fields.size() && field < words.size(); ++field) {
    const Domain domain = domainOf(setting, field, args);
    const auto number = domain.parse(words[field]);
    if (!number) throw badWord(setting, setting.fields[field].name, words[field], domain);
    values.push_back(*number);
  }
  return values;
}

std::string usageOf(const Setting &setting, bool withValues) {
  std::string usage = setting.name;
  for (const auto &param : setting.params) usage += withValues ? " " + placeholder(param.name) : " [" + placeholder(param.name) + "]";
  if (withValues)
    for (const auto &field : setting.fields) usage += " " + placeholder(field.name);
  return usage;
}

std::string placeholder(std::string_view name) {
  std::string text(name);
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); });
  return text;
}

nlohmann::json argsJson(const Setting &setting, const Args &args) {
  nlohmann::json out = nlohmann::json::object();
  for (size_t i = 0; i < args.size() && i < setting.params.size(); ++i) {
    const auto &param = setting.params[i];
    const std::string name = param.domain.textOf(args[i]).value_or(std::to_string(args[i]));
    if (allDigits(name)) out[param.name] = std::stoul(name);
    else out[param.name] = name;
  }
  return out;
}

nlohmann::json fieldsJson(const Setting &setting, const Args &args, const Values &values) {
  nlohmann::json out = nlohmann::json::array();
  for (size_t field = 0; field < setting.fields.size() && field < values.size(); ++field) {
    const auto text = domainOf(setting, field, args).textOf(values[field]);
    out.push_back({{"name", setting.fields[field].name},
                   {"index", values[field]},
                   {"text", text ? nlohmann::json(*text) : nlohmann::json(nullptr)}});
  }
  return out;
}

std::string sourceName(Source source) {
  switch (source) {
    case Source::File:
      return "file";
    case Source::Default:
      return "default";
    case Source::Unset:
      return "unset";
    case Source::Invalid:
      break;
  }
  return "invalid";
}

nlohmann::json entryJson(const Entry &entry) {
  return {{"setting", entry.setting->name},
          {"args", argsJson(*entry.setting, entry.args)},
          {"source", sourceName(entry.source)},
          {"stored", entry.stored ? nlohmann::json(*entry.stored) : nlohmann::json(nullptr)},
          {"fields", entry.values ? fieldsJson(*entry.setting, entry.args, *entry.values) : nlohmann::json(nullptr)}};
}

nlohmann::json fileJson(const StoredSettings &file) {
  return {{"path", file.path()}, {"state", nvx::support::stateName(file.state())}};
}

std::string targetText(const nlohmann::json &entry) {
  const std::string name = entry.at("setting").get<std::string>();
  std::string text = name;
  const auto &args = entry.at("args");
  // In the order the setting takes its parameters (a JSON object keeps no order).
  if (const auto *setting = findSetting(name)) {
    for (const auto &param : setting->params) {
      if (!args.contains(param.name)) continue;
      const auto &value = args.at(param.name);
      text += " " + (value.is_string() ? value.get<std::string>() : value.dump());
    }
  }
  return text;
}

std::string valueText(const nlohmann::json &fields) {
  if (!fields.is_array()) return "-";
  std::vector<std::string> parts;
  for (const auto &field : fields) {
    const auto index = field.at("index").get<uint32_t>();
    std::string part = field.at("text").is_string() ? fmt::format("{} ({})", field.at("text").get<std::string>(), index)
                                                    : std::to_string(index);
    // A value of several parts names each part after the first ("PITCH (3), param 64").
    if (!parts.empty()) part = field.at("name").get<std::string>() + " " + part;
    parts.push_back(std::move(part));
  }
  return fmt::format("{}", fmt::join(parts, ", "));
}

std::string entryLine(const nlohmann::json &entry) {
  const std::string source = entry.at("source").get<std::string>();
  std::string note;
  if (source == "unset") note = "[not set]";
  else if (source == "invalid" && entry.at("stored").is_number())
    note = fmt::format("[invalid: the file holds {}]", entry.at("stored").get<int64_t>());
  else note = "[" + source + "]";
  const std::string value = source == "invalid" && !entry.at("fields").is_array() ? "?" : valueText(entry.at("fields"));
  return fmt::format("{:<26} {:<34} {}", targetText(entry), value, note);
}

std::string fileText(const nlohmann::json &file) {
  const std::string state = file.at("state").get<std::string>();
  const std::string path = file.at("path").get<std::string>();
  if (state == "missing") return fmt::format("Settings file {} (none yet: nothing was stored)", path);
  if (state == "unreadable") return fmt::format("Settings file {} (unreadable: the library ignores it)", path);
  return fmt::format("Settings file {}", path);
}

}  // namespace mxrk7
