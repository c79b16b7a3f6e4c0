// Fuzzes the property-list reader with arbitrary bytes. Besides the sanitizers' own findings it
// checks that whatever the reader accepts nests within the cap (so the text scan and the binary
// walk agree with what libplist builds), that every accessor copes with every value, and that an
// accepted dictionary goes through what an update of the auto-setup file does with it (one key
// set, written as XML) and reads back.
#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "store/plist_file.h"

namespace {

int depthOf(plist_t root) {
  std::vector<std::pair<plist_t, int>> pending{{root, 1}};
  int deepest = 0;
  while (!pending.empty()) {
    auto [node, depth] = pending.back();
    pending.pop_back();
    const plist_type type = plist_get_node_type(node);
    if (type != PLIST_ARRAY && type != PLIST_DICT) continue;
    if (depth > deepest) deepest = depth;
    if (type == PLIST_ARRAY) {
      plist_array_iter it = nullptr;
      plist_array_new_iter(node, &it);
      for (plist_t item = nullptr;;) {
        plist_array_next_item(node, it, &item);
        if (!item) break;
        pending.emplace_back(item, depth + 1);
      }
      std::free(it);
    } else {
      plist_dict_iter it = nullptr;
      plist_dict_new_iter(node, &it);
      for (;;) {
        char *key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, it, &key, &value);
        if (!key) break;
        std::free(key);
        pending.emplace_back(value, depth + 1);
      }
      std::free(it);
    }
  }
  return deepest;
}

std::vector<std::string> keysOf(plist_t dict) {
  std::vector<std::string> keys;
  plist_dict_iter it = nullptr;
  plist_dict_new_iter(dict, &it);
  for (;;) {
    char *key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(dict, it, &key, &value);
    if (!key) break;
    keys.emplace_back(key);
    std::free(key);
  }
  std::free(it);
  return keys;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char *>(data), size);
  const auto dict = nvx::store::parsePlistDictionary(bytes);
  if (!dict) return 0;
  if (depthOf(dict->raw()) > nvx::store::kMaxPlistDepth) __builtin_trap();

  for (const std::string &key : keysOf(dict->raw())) {
    if (!dict->contains(key)) __builtin_trap();
    const auto number = dict->integer(key);
    const auto text = dict->string(key);
    const auto scalar = dict->scalarText(key);
    // A string is its own scalar text; an integer's text is its decimal value.
    if (text && scalar != text) __builtin_trap();
    if (number && !scalar) __builtin_trap();
  }

  plist_dict_set_item(dict->raw(), "MaxLevel", plist_new_uint(static_cast<uint64_t>(int64_t{-1})));
  char *xml = nullptr;
  uint32_t length = 0;
  plist_to_xml(dict->raw(), &xml, &length);
  if (!xml) __builtin_trap();
  // What an update writes must read back (unless it outgrew the size cap, which the update
  // refuses to write).
  if (length <= nvx::store::kMaxPlistBytes && !nvx::store::parsePlistDictionary(std::string_view(xml, length)))
    __builtin_trap();
  plist_to_xml_free(xml);
  return 0;
}
