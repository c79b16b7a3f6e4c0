// The tree of a property list as the library reads and writes it. Values written by other programs
// are kept exactly: integers with their sign up to 2^64-1, reals and dates bit for bit, strings and
// data as bytes. What only the binary format can hold (UIDs, sets, nulls) is kept as a foreign
// value: the tree still reads, but the writer refuses to turn it into XML.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace nvx::store {

class PlistValue;

struct PlistInteger {
  uint64_t bits = 0;      // the 64 bits of the value, two's complement when negative
  bool negative = false;  // the value is bits read as signed 64-bit (else bits read as unsigned)
  bool operator==(const PlistInteger &) const = default;
};

// Reals and dates compare bit for bit (NaN equals NaN, -0 differs from 0): "kept exactly".
struct PlistReal {
  double value = 0;
  bool operator==(const PlistReal &other) const;
};

struct PlistDate {
  double seconds = 0;  // since 2001-01-01T00:00:00Z, as the binary format keeps it
  bool operator==(const PlistDate &other) const;
};

struct PlistData {
  std::string bytes;
  bool operator==(const PlistData &) const = default;
};

// A value of a kind XML cannot express, named by its binary marker byte.
struct PlistForeign {
  uint8_t marker = 0;
  bool operator==(const PlistForeign &) const = default;
};

struct PlistArray {
  std::vector<PlistValue> items;
  bool operator==(const PlistArray &other) const;
};

// A dictionary: entries in the file's order, found through an index sorted by key (logarithmic
// lookup, so an update that sets a few keys is linear in the file's size).
class PlistDictionary {
 public:
  size_t size() const { return keys_.size(); }
  const std::string &keyAt(size_t i) const { return keys_[i]; }
  const PlistValue &valueAt(size_t i) const;
  PlistValue &valueAt(size_t i);

  const PlistValue *find(std::string_view key) const;
  // Sets `key`, in place when present (its position kept), else as the last entry.
  void set(std::string key, PlistValue value);
  // Removes `key`; false when it was absent.
  bool remove(std::string_view key);

  // Appends an entry without looking for the key, while a reader builds the dictionary; `endAppend`
  // then builds the index. A key that occurs more than once keeps its first place and its last value.
  void append(std::string key, PlistValue value);
  void endAppend();

  bool operator==(const PlistDictionary &other) const;

 private:
  std::optional<size_t> indexOf(std::string_view key) const;
  void sortIndex();

  std::vector<std::string> keys_;
  std::vector<PlistValue> values_;
  std::vector<uint32_t> sorted_;  // entry numbers in the order of their keys
};

class PlistValue {
 public:
  using Variant = std::variant<bool, PlistInteger, PlistReal, PlistDate, std::string, PlistData, PlistArray,
                               PlistDictionary, PlistForeign>;

  PlistValue() = default;
  template <class T>
    requires(!std::is_same_v<std::decay_t<T>, PlistValue>)
  explicit PlistValue(T value) : value_(std::move(value)) {}

  static PlistValue signedInteger(int64_t value) {
    return PlistValue(PlistInteger{static_cast<uint64_t>(value), value < 0});
  }

  template <class T>
  const T *as() const {
    return std::get_if<T>(&value_);
  }
  template <class T>
  T *as() {
    return std::get_if<T>(&value_);
  }
  const Variant &variant() const { return value_; }

  bool operator==(const PlistValue &other) const { return value_ == other.value_; }

 private:
  Variant value_;
};

}  // namespace nvx::store
