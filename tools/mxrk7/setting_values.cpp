#include "setting_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "exit_status.h"
#include "suggest.h"

namespace mxrk7 {

namespace {

Failure badWord(const Setting &setting, const std::string &what, const std::string &word, const Domain &domain) {
  return Failure(Exit::Usage,
                 fmt::format("{} {}: \"{}\" is not allowed; allowed: {}", setting.name, placeholder(what), word,
                             domain.describe()),
                 {{"setting", setting.name}, {"word", word}, {"allowed", domain.toJson()}});
}

}  // namespace

const Setting &settingNamed(const std::string &word) {
  if (const auto *setting = findSetting(word)) return *setting;
  std::vector<std::string> names;
  for (const auto &setting : settingTable()) names.push_back(setting.name);
  throw Failure(Exit::Usage,
                fmt::format("unknown setting \"{}\"{}; settings: {}", word, didYouMean(word, names), settingNames()),
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
    const Domain domain = setting.fields[field].domain(args);
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

std::string exampleWords(nvx::tables::SettingId id, size_t argCount, bool withValue) {
  const Setting &setting = nvx::support::settingOf(nvx::tables::setting(id));
  auto word = [](const std::string &text) { return text.find(' ') == std::string::npos ? text : "\"" + text + "\""; };
  auto pick = [&](const Domain &domain, size_t preferred) {
    const auto members = domain.members();
    const uint32_t number = members.at(std::min(preferred, members.size() - 1));
    return std::make_pair(number, domain.textOf(number).value_or(std::to_string(number)));
  };
  std::string words = setting.name;
  Args args;
  for (size_t i = 0; i < setting.params.size(); ++i) {
    // The second instance of each argument: channel 1, bank B, position 2, the depth.
    const auto [number, text] = pick(setting.params[i].domain, 1);
    args.push_back(number);
    if (i < argCount) words += " " + word(text);
  }
  if (withValue)
    for (const auto &field : setting.fields) words += " " + word(pick(field.domain(args), 3).second);
  return words;
}

nlohmann::json skippedJson(const Entry &entry) {
  nlohmann::json skip = entryJson(entry);
  skip["reason"] = fmt::format("the file holds {}, which is not a valid value", *entry.stored);
  return skip;
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
