// Property-list files read by the library: the auto-setup file, the version files and the bundle's
// localized strings, all through the one reader of plist_reader.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/plist_limits.h"
#include "store/plist_value.h"

namespace nvx::store {

// A property list whose root is a dictionary.
class PlistDict {
 public:
  explicit PlistDict(PlistDictionary root) : root_(std::move(root)) {}

  bool contains(std::string_view key) const { return root_.find(key) != nullptr; }
  // The integer under `key` read as signed 64-bit and taken to 32 bits; nullopt when the key is
  // absent or holds another type.
  std::optional<int32_t> integer(std::string_view key) const;
  // The string under `key`; nullopt when absent or another type.
  std::optional<std::string> string(std::string_view key) const;
  // The text form of a scalar under `key`: a string as it is, an integer or real in decimal, a
  // boolean as "true"/"false"; nullopt when absent or a container, data or date.
  std::optional<std::string> scalarText(std::string_view key) const;
  // Every key, in the file's order.
  std::vector<std::string> keys() const;

  const PlistDictionary &entries() const { return root_; }
  PlistDictionary &entries() { return root_; }

 private:
  PlistDictionary root_;
};

// Reads a whole XML or binary property list whose root is a dictionary. nullopt when the file is
// missing, not a regular file, over a cap of plist_limits.h, not a property list, or has another
// root type.
std::optional<PlistDict> readPlistDictionary(const std::string &path);

// The same on bytes already in memory.
std::optional<PlistDict> parsePlistDictionary(std::string_view bytes);

}  // namespace nvx::store
