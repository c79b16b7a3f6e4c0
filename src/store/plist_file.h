// Property-list files read by the library: the auto-setup file, the version files and the bundle's
// localized strings. One reader for all of them, with the size and nesting caps applied before
// libplist sees the bytes.
#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nvx::store {

inline constexpr size_t kMaxPlistBytes = 1024 * 1024;
inline constexpr int kMaxPlistDepth = 128;

// An owned property-list dictionary.
class PlistDict {
 public:
  explicit PlistDict(plist_t root);  // takes ownership of a PLIST_DICT node
  ~PlistDict();
  PlistDict(PlistDict &&other) noexcept;
  PlistDict &operator=(PlistDict &&other) noexcept;
  PlistDict(const PlistDict &) = delete;
  PlistDict &operator=(const PlistDict &) = delete;

  bool contains(std::string_view key) const;
  // The integer under `key` read as signed 64-bit and taken to 32 bits; nullopt when the key is
  // absent or holds another type.
  std::optional<int32_t> integer(std::string_view key) const;
  // The string under `key`; nullopt when absent or another type.
  std::optional<std::string> string(std::string_view key) const;
  // The text form of a scalar under `key`: a string as it is, an integer or real in decimal, a
  // boolean as "true"/"false"; nullopt when absent or a container, data or date.
  std::optional<std::string> scalarText(std::string_view key) const;

  plist_t raw() const { return root_; }

 private:
  plist_t root_;
};

// Reads a whole XML or binary property list whose root is a dictionary. nullopt when the file is
// missing, unreadable, larger than kMaxPlistBytes, nested deeper than kMaxPlistDepth, not a
// property list, or has another root type; also when a string or key holds a NUL byte, or a
// binary file's shared references would expand beyond bounds (see plist_file.cpp).
std::optional<PlistDict> readPlistDictionary(const std::string &path);

// The same checks on bytes already in memory (used by the file reader and the fuzz target).
std::optional<PlistDict> parsePlistDictionary(std::string_view bytes);

}  // namespace nvx::store
