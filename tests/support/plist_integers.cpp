#include "support/plist_integers.h"

#include <cstdlib>

namespace nvx::test {

std::map<std::string, plist_t> plistEntries(plist_t dict) {
  std::map<std::string, plist_t> entries;
  plist_dict_iter it = nullptr;
  plist_dict_new_iter(dict, &it);
  for (;;) {
    char *key = nullptr;
    plist_t node = nullptr;
    plist_dict_next_item(dict, it, &key, &node);
    if (!key) break;
    entries[key] = node;
    std::free(key);
  }
  std::free(it);
  return entries;
}

std::optional<std::map<std::string, int64_t>> plistIntegers(const std::string &bytes) {
  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
  if (!root) return std::nullopt;
  if (plist_get_node_type(root) != PLIST_DICT) {
    plist_free(root);
    return std::nullopt;
  }
  std::map<std::string, int64_t> values;
  for (const auto &[key, node] : plistEntries(root)) {
    if (plist_get_node_type(node) != PLIST_UINT) continue;
    uint64_t raw = 0;
    plist_get_uint_val(node, &raw);
    values[key] = static_cast<int64_t>(raw);
  }
  plist_free(root);
  return values;
}

}  // namespace nvx::test
