#include "support/setting_entries.h"

#include <fmt/format.h>

#include <algorithm>

namespace nvx::support {

namespace {

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
    if (field >= values.size() || !setting.fields[field].domain(args).contains(values[field])) return false;
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

std::vector<Entry> settableEntries(const StoredSettings &file) {
  std::vector<Entry> entries;
  for (const auto &setting : settingTable()) {
    if (setting.readOnly()) continue;  // read from another setting's number
    for (const auto &args : instances(setting)) {
      if (setting.refuseSet(args)) continue;  // the library reads it, never writes it
      entries.push_back(evaluate(setting, args, file));
    }
  }
  return entries;
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
    const auto text = setting.fields[field].domain(args).textOf(values[field]);
    out.push_back({{"name", setting.fields[field].name},
                   {"index", values[field]},
                   {"text", text ? nlohmann::json(*text) : nlohmann::json(nullptr)}});
  }
  return out;
}

nlohmann::json entryJson(const Entry &entry) {
  return {{"setting", entry.setting->name},
          {"args", argsJson(*entry.setting, entry.args)},
          {"source", sourceName(entry.source)},
          {"stored", entry.stored ? nlohmann::json(*entry.stored) : nlohmann::json(nullptr)},
          {"fields", entry.values ? fieldsJson(*entry.setting, entry.args, *entry.values) : nlohmann::json(nullptr)}};
}

nlohmann::json fileJson(const StoredSettings &file) {
  return {{"path", file.path()}, {"state", stateName(file.state())}};
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

std::string targetOf(const Setting &setting, const Args &args) {
  return targetText({{"setting", setting.name}, {"args", argsJson(setting, args)}});
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

}  // namespace nvx::support
