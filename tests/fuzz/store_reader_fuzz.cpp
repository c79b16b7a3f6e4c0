// Fuzzes the property-list reader with arbitrary bytes. Besides the sanitizers' findings: a tree the
// reader accepts keeps the caps, libplist (an independent second reader) reads the same tree, and
// what the writer makes of it reads back as the same tree with both readers.
// libplist 2.2 is asked only about small trees without NUL bytes (it checks dictionary keys
// quadratically and aborts on a NUL in a string), and is not compared where it differs by design:
// it keeps carriage returns in XML text, ignores the encoding an XML declaration names, keeps dates
// as whole 32-bit seconds, and has no value for what only the binary format holds (foreign values).
#include <plist/plist.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "store/plist_limits.h"
#include "store/plist_reader.h"
#include "store/plist_writer.h"
#include "support/plist_integers.h"

namespace {

using namespace nvx::store;

struct TreeFacts {
  size_t nodes = 0;
  int depth = 0;
  bool hasNul = false;
};

TreeFacts factsOf(const PlistValue &root) {
  TreeFacts facts;
  const auto nul = [](const std::string &text) { return text.find('\0') != std::string::npos; };
  std::vector<std::pair<const PlistValue *, int>> pending{{&root, 1}};
  while (!pending.empty()) {
    const auto [value, depth] = pending.back();
    pending.pop_back();
    ++facts.nodes;
    if (const auto *text = value->as<std::string>()) facts.hasNul |= nul(*text);
    if (const auto *array = value->as<PlistArray>()) {
      facts.depth = std::max(facts.depth, depth);
      for (const auto &item : array->items) pending.emplace_back(&item, depth + 1);
    } else if (const auto *dict = value->as<PlistDictionary>()) {
      facts.depth = std::max(facts.depth, depth);
      for (size_t i = 0; i < dict->size(); ++i) {
        facts.hasNul |= nul(dict->keyAt(i));
        pending.emplace_back(&dict->valueAt(i), depth + 1);
      }
    }
  }
  return facts;
}

// Whether libplist's node holds the same value as ours.
bool same(const PlistValue &ours, plist_t theirs) {
  const plist_type type = plist_get_node_type(theirs);
  uint64_t number = 0, length = 0;
  double real = 0;
  if (ours.as<PlistForeign>()) return true;
  if (const auto *flag = ours.as<bool>()) {
    uint8_t value = 0;
    plist_get_bool_val(theirs, &value);
    return type == PLIST_BOOLEAN && (value != 0) == *flag;
  }
  if (const auto *integer = ours.as<PlistInteger>()) {
    plist_get_uint_val(theirs, &number);
    return type == PLIST_UINT && number == integer->bits;
  }
  if (const auto *value = ours.as<PlistReal>()) {
    plist_get_real_val(theirs, &real);
    return type == PLIST_REAL && (std::bit_cast<uint64_t>(real) == std::bit_cast<uint64_t>(value->value) ||
                                  (std::isnan(real) && std::isnan(value->value)));
  }
  if (const auto *date = ours.as<PlistDate>()) {
    if (std::floor(date->seconds) != date->seconds || std::fabs(date->seconds) > 2e9) return true;
    int32_t sec = 0, usec = 0;
    plist_get_date_val(theirs, &sec, &usec);
    return type == PLIST_DATE && sec == static_cast<int32_t>(date->seconds) && usec == 0;
  }
  if (const auto *text = ours.as<std::string>()) {
    const char *value = type == PLIST_STRING ? plist_get_string_ptr(theirs, &length) : nullptr;
    return value && std::string_view(value, length) == *text;
  }
  if (const auto *data = ours.as<PlistData>()) {
    const char *value = type == PLIST_DATA ? plist_get_data_ptr(theirs, &length) : nullptr;
    return type == PLIST_DATA && std::string_view(value ? value : "", length) == data->bytes;
  }
  if (const auto *array = ours.as<PlistArray>()) {
    if (type != PLIST_ARRAY || plist_array_get_size(theirs) != array->items.size()) return false;
    for (uint32_t i = 0; i < array->items.size(); ++i)
      if (!same(array->items[i], plist_array_get_item(theirs, i))) return false;
    return true;
  }
  // Of a key named twice, the last entry counts, in libplist's binary reader as in ours.
  if (type != PLIST_DICT) return false;
  const auto &dict = *ours.as<PlistDictionary>();
  const auto entries = nvx::test::plistEntries(theirs);
  if (entries.size() != dict.size()) return false;
  for (size_t i = 0; i < dict.size(); ++i) {
    const auto found = entries.find(dict.keyAt(i));
    if (found == entries.end() || !same(dict.valueAt(i), found->second)) return false;
  }
  return true;
}

// libplist's reading of `bytes` agrees with ours (or it cannot read them at all).
bool libplistAgrees(const PlistValue &ours, std::string_view bytes, bool mustRead) {
  const std::string copy(bytes);  // NUL-terminated, as libplist's XML reader wants
  plist_t root = nullptr;
  plist_from_memory(copy.c_str(), static_cast<uint32_t>(copy.size()), &root);
  const std::unique_ptr<void, decltype(&plist_free)> theirs(root, &plist_free);
  return theirs ? same(ours, root) : !mustRead;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char *>(data), size);
  const auto ours = parsePlist(bytes);
  if (!ours) return 0;
  const TreeFacts facts = factsOf(*ours);
  if (facts.depth > kMaxPlistDepth || facts.nodes > kMaxPlistNodes) __builtin_trap();
  const bool askLibplist = facts.nodes <= 2000 && !facts.hasNul;
  const bool ascii =
      std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  const bool sameText =
      bytes.find('\r') == std::string_view::npos && (ascii || bytes.find("encoding") == std::string_view::npos);
  if (askLibplist && (bytes.starts_with("bplist00") || sameText) && !libplistAgrees(*ours, bytes, false))
    __builtin_trap();

  const auto xml = plistXml(*ours);
  if (!std::holds_alternative<std::string>(xml)) return 0;
  if (parsePlist(std::get<std::string>(xml)) != ours) __builtin_trap();
  if (askLibplist && !libplistAgrees(*ours, std::get<std::string>(xml), true)) __builtin_trap();
  return 0;
}
