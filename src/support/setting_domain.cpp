#include "support/setting_domain.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <set>

namespace nvx::support {

namespace {

// Lower case without blanks: how words and texts are compared.
std::string folded(std::string_view text) {
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isspace(byte)) continue;
    out += static_cast<char>(std::tolower(byte));
  }
  return out;
}

// A menu offers its indices as plain numbers too.
Domain withIndices(std::vector<Choice> choices) {
  Domain domain;
  if (!choices.empty()) domain.indices = IndexRange{choices.front().index, choices.back().index};
  domain.choices = std::move(choices);
  return domain;
}

}  // namespace

std::optional<uint32_t> parseNumber(std::string_view word) {
  int base = 10;
  if (word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X')) {
    base = 16;
    word.remove_prefix(2);
  }
  if (word.empty()) return std::nullopt;
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value, base);
  if (error != std::errc() || end != word.data() + word.size()) return std::nullopt;
  return value;
}

std::optional<uint32_t> Domain::parse(std::string_view word) const {
  const std::string wanted = folded(word);
  if (wanted.empty()) return std::nullopt;
  for (const auto &choice : choices) {  // ascending: the lowest index of a repeated text wins
    if (folded(choice.text) == wanted) return choice.index;
    for (const auto &alias : choice.aliases)
      if (folded(alias) == wanted) return choice.index;
  }
  if (!indices) return std::nullopt;
  const auto number = parseNumber(word);
  if (number && *number >= indices->first && *number <= indices->last) return number;
  return std::nullopt;
}

bool Domain::contains(uint32_t index) const {
  if (indices && index >= indices->first && index <= indices->last) return true;
  return std::any_of(choices.begin(), choices.end(), [&](const Choice &c) { return c.index == index; });
}

std::optional<std::string> Domain::textOf(uint32_t index) const {
  for (const auto &choice : choices)
    if (choice.index == index) return choice.text;
  return std::nullopt;
}

bool Domain::names(uint32_t index, std::string_view word) const {
  const std::string wanted = folded(word);
  for (const auto &choice : choices) {
    if (choice.index != index) continue;
    if (folded(choice.text) == wanted) return true;
    for (const auto &alias : choice.aliases)
      if (folded(alias) == wanted) return true;
  }
  return false;
}

std::vector<uint32_t> Domain::members() const {
  std::set<uint32_t> all;
  for (const auto &choice : choices) all.insert(choice.index);
  if (indices)
    for (uint64_t i = indices->first; i <= indices->last; ++i) all.insert(static_cast<uint32_t>(i));
  return {all.begin(), all.end()};
}

std::string Domain::describe() const {
  std::vector<std::string> parts;
  std::set<std::string> seen;  // a text repeated in a menu is named once
  for (const auto &choice : choices)
    if (seen.insert(folded(choice.text)).second) parts.push_back(choice.text);
  std::string text = fmt::format("{}", fmt::join(parts, ", "));
  if (indices) {
    const std::string range = indices->first == indices->last
                                  ? fmt::format("{}", indices->first)
                                  : fmt::format("{}-{}", indices->first, indices->last);
    text += choices.empty() ? fmt::format("a number {}", range) : fmt::format(", or an index {}", range);
  }
  return text;
}

nlohmann::json Domain::toJson() const {
  nlohmann::json list = nlohmann::json::array();
  for (const auto &choice : choices)
    list.push_back({{"index", choice.index}, {"text", choice.text}, {"aliases", choice.aliases}});
  nlohmann::json range = nullptr;
  if (indices) range = {{"first", indices->first}, {"last", indices->last}};
  return {{"choices", list}, {"indices", range}};
}

Domain rangeDomain(uint32_t first, uint32_t last) {
  Domain domain;
  domain.indices = IndexRange{first, last};
  return domain;
}

Domain menuDomain(const std::function<const char *(uint32_t index)> &text) {
  std::vector<Choice> choices;
  for (uint32_t index = 0;; ++index) {
    const char *entry = text(index);
    if (!entry) break;
    choices.push_back({index, entry, {}});
  }
  return withIndices(std::move(choices));
}

Domain tableDomain(const char *const *texts, uint32_t count) {
  std::vector<Choice> choices;
  for (uint32_t index = 0; index < count && texts[index]; ++index) choices.push_back({index, texts[index], {}});
  return withIndices(std::move(choices));
}

}  // namespace nvx::support
