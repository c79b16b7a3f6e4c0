// Shell completion, answered by the tool itself so that it always knows the settings, their
// arguments and values that this very build offers: `mxrk7 __complete -- WORD...` prints the
// candidates for the last word, one per line. The bash, zsh and fish scripts only pass the command
// line in; "@files" and "@folders" ask them to complete paths instead.
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <iostream>
#include <memory>
#include <set>

#include "setting_values.h"
#include "support/mixer_count.h"
#include "verbs.h"

namespace mxrk7 {

namespace {

constexpr const char *kFiles = "@files";
constexpr const char *kFolders = "@folders";
// A range longer than this is not offered number by number.
constexpr uint32_t kLongestListedRange = 16;

const std::set<std::string> kOptionsWithValue = {"--config-home", "--mixer", "--timeout"};

std::vector<std::string> domainWords(const Domain &domain) {
  std::vector<std::string> words;
  std::set<std::string> seen;
  for (const auto &choice : domain.choices)
    if (seen.insert(choice.text).second) words.push_back(choice.text);
  if (domain.choices.empty() && domain.indices && domain.indices->last - domain.indices->first < kLongestListedRange)
    for (uint32_t n = domain.indices->first; n <= domain.indices->last; ++n) words.push_back(std::to_string(n));
  return words;
}

// The candidates for the last of `after`, the words after a setting verb (the setting's name first).
std::vector<std::string> settingWords(const std::string &verb, const std::vector<std::string> &after) {
  if (after.size() == 1) {
    std::vector<std::string> names;
    for (const auto &setting : settingTable())
      if (verb != "set" || !setting.readOnly()) names.push_back(setting.name);
    return names;
  }
  const Setting *setting = findSetting(after[0]);
  if (!setting || verb == "reset") return {};
  const size_t slot = after.size() - 2;  // parameters first, then (for set) the value's fields
  if (slot < setting->params.size()) return domainWords(setting->params[slot].domain);
  const size_t field = slot - setting->params.size();
  if (verb != "set" || field >= setting->fields.size()) return {};
  Args args;
  for (size_t i = 0; i < setting->params.size(); ++i) {
    const auto number = setting->params[i].domain.parse(after[1 + i]);
    if (!number) return {};
    args.push_back(*number);
  }
  return domainWords(setting->fields[field].domain(args));
}

std::vector<std::string> candidates(CLI::App &app, const std::vector<std::string> &words) {
  const std::string previous = words.size() >= 2 ? words[words.size() - 2] : "";
  if (previous == "--config-home") return {kFolders};
  if (previous == "--mixer") {
    std::vector<std::string> numbers;
    for (uint32_t n = 0; n < nvx::support::countMixers(); ++n) numbers.push_back(std::to_string(n));
    return numbers;
  }
  if (previous == "--timeout") return {};

  // The verb and the words after it, options and their values left out.
  std::string verb;
  std::vector<std::string> after;
  for (size_t i = 0; i + 1 < words.size(); ++i) {
    if (kOptionsWithValue.contains(words[i])) {
      ++i;
      continue;
    }
    if (words[i].starts_with("-")) continue;
    if (verb.empty()) verb = words[i];
    else after.push_back(words[i]);
  }
  const std::string &current = words.back();
  if (current.starts_with("-")) {
    std::vector<std::string> options = {"--json", "--virtual", "--config-home", "--help"};
    if (verb.empty()) options.push_back("--version");
    const auto sub = verb.empty() ? nullptr : app.get_subcommand_ptr(verb);
    if (sub)
      for (const auto *option : sub->get_options())
        if (option->get_name().starts_with("--")) options.push_back(option->get_name());
    return options;
  }
  if (verb.empty()) {
    std::vector<std::string> verbs;
    for (const auto *sub : app.get_subcommands([](const CLI::App *s) { return !s->get_group().empty(); }))
      verbs.push_back(sub->get_name());
    return verbs;
  }
  if (verb == "export" || verb == "import") return after.empty() ? std::vector<std::string>{kFiles} : std::vector<std::string>{};
  if (verb == "list" || verb == "get" || verb == "set" || verb == "reset") {
    after.push_back(current);
    return settingWords(verb, after);
  }
  return {};
}

bool startsWithFolded(const std::string &word, const std::string &prefix) {
  return word.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), word.begin(), [](char a, char b) {
           return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
         });
}

}  // namespace

void addCompletionVerb(VerbRegistry &verbs, CLI::App &app) {
  auto words = std::make_shared<std::vector<std::string>>();
  CLI::App *verb = verbs.add("__complete", "", {}, [words, &app](Context &) {
    if (words->empty()) words->push_back("");
    for (const auto &candidate : candidates(app, *words))
      if (candidate.starts_with("@") || startsWithFolded(candidate, words->back())) std::cout << candidate << "\n";
    return Exit::Ok;
  });
  verb->group("");  // not listed in --help
  verb->add_option("words", *words);
}

}  // namespace mxrk7
