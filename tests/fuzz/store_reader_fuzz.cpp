// Fuzzes the property-list reader with arbitrary bytes, with libplist as an independent second
// reader. Besides the sanitizers' own findings it checks that
// - whatever the reader accepts keeps the caps (depth, number of values);
// - for every input both readers accept, the two trees are equal, value by value;
// - what the writer makes of an accepted tree reads back as the same tree, with the reader and
//   with libplist.
// libplist 2.2 is consulted only on small trees without NUL bytes: it checks dictionary keys
// quadratically and aborts on a string holding a NUL. Where it differs by design, the comparison
// gives way: it does not normalise line breaks in XML text (inputs with a carriage return are not
// compared), it ignores the encoding an XML declaration names (inputs that name one and hold bytes
// beyond ASCII are not compared), it keeps dates as 32-bit seconds (dates outside that range or
// with a fraction are not compared), and it has no value for what only the binary format holds
// (foreign values).
#include <plist/plist.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "store/plist_file.h"
#include "store/plist_reader.h"
#include "store/plist_writer.h"
#include "support/plist_integers.h"

namespace {

using namespace nvx::store;

constexpr size_t kOracleNodes = 2000;

struct TreeFacts {
  size_t nodes = 0;
  int depth = 0;
  bool hasNul = false;
};

TreeFacts factsOf(const PlistValue &root) {
  TreeFacts facts;
  std::vector<std::pair<const PlistValue *, int>> pending{{&root, 1}};
  while (!pending.empty()) {
    const auto [value, depth] = pending.back();
    pending.pop_back();
    ++facts.nodes;
    if (const auto *text = value->as<std::string>()) facts.hasNul |= text->find('\0') != std::string::npos;
    if (const auto *array = value->as<PlistArray>()) {
      facts.depth = std::max(facts.depth, depth);
      for (const auto &item : array->items) pending.emplace_back(&item, depth + 1);
    } else if (const auto *dict = value->as<PlistDictionary>()) {
      facts.depth = std::max(facts.depth, depth);
      for (size_t i = 0; i < dict->size(); ++i) {
        facts.hasNul |= dict->keyAt(i).find('\0') != std::string::npos;
        pending.emplace_back(&dict->valueAt(i), depth + 1);
      }
    }
  }
  return facts;
}

bool sameReal(double a, double b) {
  return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b) || (std::isnan(a) && std::isnan(b));
}

// Whether libplist's node holds the same value as ours (recursively; depth is within the cap).
bool same(const PlistValue &ours, plist_t theirs) {
  const plist_type type = plist_get_node_type(theirs);
  if (ours.as<PlistForeign>()) return true;
  if (const auto *flag = ours.as<bool>()) {
    uint8_t value = 0;
    plist_get_bool_val(theirs, &value);
    return type == PLIST_BOOLEAN && (value != 0) == *flag;
  }
  if (const auto *integer = ours.as<PlistInteger>()) {
    uint64_t value = 0;
    plist_get_uint_val(theirs, &value);
    return type == PLIST_UINT && value == integer->bits;
  }
  if (const auto *real = ours.as<PlistReal>()) {
    double value = 0;
    plist_get_real_val(theirs, &value);
    return type == PLIST_REAL && sameReal(value, real->value);
  }
  if (const auto *date = ours.as<PlistDate>()) {
    const double seconds = date->seconds;
    if (std::floor(seconds) != seconds || std::fabs(seconds) > 2e9) return true;
    int32_t sec = 0, usec = 0;
    plist_get_date_val(theirs, &sec, &usec);
    return type == PLIST_DATE && sec == static_cast<int32_t>(seconds) && usec == 0;
  }
  if (const auto *text = ours.as<std::string>()) {
    uint64_t length = 0;
    const char *value = type == PLIST_STRING ? plist_get_string_ptr(theirs, &length) : nullptr;
    return value && std::string_view(value, length) == *text;
  }
  if (const auto *data = ours.as<PlistData>()) {
    uint64_t length = 0;
    const char *value = type == PLIST_DATA ? plist_get_data_ptr(theirs, &length) : nullptr;
    return std::string_view(value ? value : "", length) == data->bytes;
  }
  if (const auto *array = ours.as<PlistArray>()) {
    if (type != PLIST_ARRAY || plist_array_get_size(theirs) != array->items.size()) return false;
    for (uint32_t i = 0; i < array->items.size(); ++i)
      if (!same(array->items[i], plist_array_get_item(theirs, i))) return false;
    return true;
  }
  // libplist's binary reader keeps every entry of a key named twice; the last one counts, as in ours.
  const auto &dict = *ours.as<PlistDictionary>();
  if (type != PLIST_DICT) return false;
  const auto entries = nvx::test::plistEntries(theirs);
  if (entries.size() != dict.size()) return false;
  for (size_t i = 0; i < dict.size(); ++i) {
    const auto found = entries.find(dict.keyAt(i));
    if (found == entries.end() || !same(dict.valueAt(i), found->second)) return false;
  }
  return true;
}

struct PlistFree {
  void operator()(plist_t node) const { plist_free(node); }
};
using Plist = std::unique_ptr<std::remove_pointer_t<plist_t>, PlistFree>;

Plist libplistTree(std::string_view bytes) {
  const std::string copy(bytes);  // NUL-terminated, as libplist's XML reader wants
  plist_t root = nullptr;
  plist_from_memory(copy.c_str(), static_cast<uint32_t>(copy.size()), &root);
  return Plist(root);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char *>(data), size);
  const auto ours = parsePlist(bytes);
  if (!ours) return 0;
  const TreeFacts facts = factsOf(*ours);
  if (facts.depth > kMaxPlistDepth || facts.nodes > kMaxPlistNodes) __builtin_trap();
  const bool askLibplist = facts.nodes <= kOracleNodes && !facts.hasNul;

  const bool binary = bytes.starts_with("bplist00");
  const bool ascii = std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  const bool sameText = bytes.find('\r') == std::string_view::npos && (ascii || bytes.find("encoding") == std::string_view::npos);
  if (askLibplist && (binary || sameText)) {
    const Plist theirs = libplistTree(bytes);
    if (theirs && !same(*ours, theirs.get())) __builtin_trap();
  }

  // The settings file's accessors cope with every value.
  if (const auto dict = parsePlistDictionary(bytes)) {
    for (const std::string &key : dict->keys()) {
      if (!dict->contains(key)) __builtin_trap();
      if (dict->string(key) && dict->scalarText(key) != dict->string(key)) __builtin_trap();
      if (dict->integer(key) && !dict->scalarText(key)) __builtin_trap();
    }
  }

  const auto xml = plistXml(*ours);
  if (!std::holds_alternative<std::string>(xml)) return 0;
  const std::string &text = std::get<std::string>(xml);
  if (parsePlist(text) != ours) __builtin_trap();
  if (askLibplist) {
    const Plist theirs = libplistTree(text);
    if (!theirs || !same(*ours, theirs.get())) __builtin_trap();
  }
  return 0;
}
