// What a word may say for one parameter or value of a setting (on the command line, in a settings
// document, in a menu), and the one parser that turns such a word into the library's number.
//
// A word matches a choice's text or one of its aliases without regard to case or blanks
// ("-10dB" is "-10 dB", "cross fader a" is "Cross Fader A"); where several choices share a text the
// lowest index wins. Otherwise, where the domain takes plain indices, a decimal or 0x-hexadecimal
// number in its range is taken as it is.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nvx::support {

struct Choice {
  uint32_t index;                    // the library's number
  std::string text;                  // shown to people
  std::vector<std::string> aliases;  // further names accepted on the command line
};

struct IndexRange {
  uint32_t first;
  uint32_t last;
};

struct Domain {
  std::vector<Choice> choices;        // in ascending index order
  std::optional<IndexRange> indices;  // plain numbers accepted, if any

  std::optional<uint32_t> parse(std::string_view word) const;
  bool contains(uint32_t index) const;
  // The text of the choice with this index, if it has one.
  std::optional<std::string> textOf(uint32_t index) const;
  // Whether `word` is the text or an alias of the choice with this index (compared as parse()
  // compares).
  bool names(uint32_t index, std::string_view word) const;
  // Every number the domain accepts, ascending.
  std::vector<uint32_t> members() const;
  // For messages: "DUB ECHO, FILTER, NOISE, PITCH, WIDE FILTER, or an index 0-4".
  std::string describe() const;
  nlohmann::json toJson() const;
};

// A decimal or 0x-hexadecimal number that fits 32 bits.
std::optional<uint32_t> parseNumber(std::string_view word);

// Plain numbers first..last, no texts.
Domain rangeDomain(uint32_t first, uint32_t last);

// A menu read from a text function: index 0 upwards while the function gives a text (a null text
// or a refusal ends the menu), each index also accepted as a plain number.
Domain menuDomain(const std::function<const char *(uint32_t index)> &text);

// A menu from a fixed table of texts (for tables the library exports without a text function).
Domain tableDomain(const char *const *texts, uint32_t count);

}  // namespace nvx::support
