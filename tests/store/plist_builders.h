// Property lists for the store tests: a builder of binary property lists object by object (for
// reference graphs libplist's own writer never makes), nested XML, and a comparison of parsed values.
#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace nvx::test {

// Writes "bplist00" files from objects added one by one; references are object indices.
class BinaryPlistBuilder {
 public:
  uint64_t nextIndex() const { return objects_.size(); }

  uint64_t integer(int64_t value) {
    std::string bytes(1, '\x13');
    appendBigEndian(bytes, static_cast<uint64_t>(value), 8);
    return add(std::move(bytes));
  }
  uint64_t string(const std::string &text) { return add(header(0x5, text.size()) + text); }
  uint64_t utf16(const std::u16string &text) {
    std::string bytes = header(0x6, text.size());
    for (char16_t unit : text) appendBigEndian(bytes, unit, 2);
    return add(std::move(bytes));
  }
  uint64_t data(const std::string &bytes) { return add(header(0x4, bytes.size()) + bytes); }
  uint64_t array(const std::vector<uint64_t> &refs) {
    std::string bytes = header(0xA, refs.size());
    for (uint64_t ref : refs) appendBigEndian(bytes, ref, kRefSize);
    return add(std::move(bytes));
  }
  uint64_t dict(const std::vector<std::pair<uint64_t, uint64_t>> &entries) {
    std::string bytes = header(0xD, entries.size());
    for (const auto &entry : entries) appendBigEndian(bytes, entry.first, kRefSize);
    for (const auto &entry : entries) appendBigEndian(bytes, entry.second, kRefSize);
    return add(std::move(bytes));
  }

  std::string bytes(uint64_t top) const {
    std::string out = "bplist00";
    std::vector<uint64_t> offsets;
    for (const auto &object : objects_) {
      offsets.push_back(out.size());
      out += object;
    }
    const uint64_t tableOffset = out.size();
    for (uint64_t offset : offsets) appendBigEndian(out, offset, kOffsetSize);
    out += std::string(6, '\0');
    out += static_cast<char>(kOffsetSize);
    out += static_cast<char>(kRefSize);
    appendBigEndian(out, objects_.size(), 8);
    appendBigEndian(out, top, 8);
    appendBigEndian(out, tableOffset, 8);
    return out;
  }

 private:
  static constexpr size_t kRefSize = 4;
  static constexpr size_t kOffsetSize = 4;

  static void appendBigEndian(std::string &out, uint64_t value, size_t width) {
    for (size_t k = width; k-- > 0;) out += static_cast<char>((value >> (8 * k)) & 0xFF);
  }
  static std::string header(unsigned type, size_t count) {
    std::string out;
    if (count < 15) {
      out += static_cast<char>((type << 4) | count);
    } else {
      out += static_cast<char>((type << 4) | 0xF);
      out += '\x13';
      appendBigEndian(out, count, 8);
    }
    return out;
  }
  uint64_t add(std::string bytes) {
    objects_.push_back(std::move(bytes));
    return objects_.size() - 1;
  }

  std::vector<std::string> objects_;
};

// A binary property list whose root dictionary holds "k" = 1 and, under "deep", `levels` arrays
// nested in one another (so the file nests levels + 1 containers).
inline std::string deepBinaryPlist(int levels) {
  BinaryPlistBuilder b;
  uint64_t inner = b.array({});
  for (int i = 1; i < levels; ++i) inner = b.array({inner});
  const uint64_t root = b.dict({{b.string("k"), b.integer(1)}, {b.string("deep"), inner}});
  return b.bytes(root);
}

// The same as XML. (Up to about 69000 levels fit in the size cap.)
inline std::string deepXmlPlist(int levels) {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
                    "<key>k</key><integer>1</integer>\n<key>deep</key>";
  for (int i = 0; i < levels; ++i) xml += "<array>";
  for (int i = 0; i < levels; ++i) xml += "</array>";
  return xml + "\n</dict>\n</plist>\n";
}

inline std::string toXml(plist_t node) {
  char *xml = nullptr;
  uint32_t length = 0;
  plist_to_xml(node, &xml, &length);
  std::string out(xml, length);
  plist_to_xml_free(xml);
  return out;
}

inline std::string toBinary(plist_t node) {
  char *bin = nullptr;
  uint32_t length = 0;
  plist_to_bin(node, &bin, &length);
  std::string out(bin, length);
  plist_to_bin_free(bin);
  return out;
}

// Deep equality of two parsed values (type and value; dictionaries regardless of order).
inline bool plistEqual(plist_t a, plist_t b) {
  if (!a || !b) return a == b;
  const plist_type type = plist_get_node_type(a);
  if (type != plist_get_node_type(b)) return false;
  switch (type) {
    case PLIST_BOOLEAN: {
      uint8_t x = 0, y = 0;
      plist_get_bool_val(a, &x);
      plist_get_bool_val(b, &y);
      return x == y;
    }
    case PLIST_UINT: {
      uint64_t x = 0, y = 0;
      plist_get_uint_val(a, &x);
      plist_get_uint_val(b, &y);
      return x == y;
    }
    case PLIST_REAL: {
      double x = 0, y = 0;
      plist_get_real_val(a, &x);
      plist_get_real_val(b, &y);
      return x == y;
    }
    case PLIST_STRING: {
      uint64_t lx = 0, ly = 0;
      const char *x = plist_get_string_ptr(a, &lx);
      const char *y = plist_get_string_ptr(b, &ly);
      return std::string(x, lx) == std::string(y, ly);
    }
    case PLIST_DATE: {
      int32_t sx = 0, ux = 0, sy = 0, uy = 0;
      plist_get_date_val(a, &sx, &ux);
      plist_get_date_val(b, &sy, &uy);
      return sx == sy && ux == uy;
    }
    case PLIST_DATA: {
      uint64_t lx = 0, ly = 0;
      const char *x = plist_get_data_ptr(a, &lx);
      const char *y = plist_get_data_ptr(b, &ly);
      return std::string(x, lx) == std::string(y, ly);
    }
    case PLIST_ARRAY: {
      const uint32_t size = plist_array_get_size(a);
      if (size != plist_array_get_size(b)) return false;
      for (uint32_t i = 0; i < size; ++i)
        if (!plistEqual(plist_array_get_item(a, i), plist_array_get_item(b, i))) return false;
      return true;
    }
    case PLIST_DICT: {
      if (plist_dict_get_size(a) != plist_dict_get_size(b)) return false;
      plist_dict_iter it = nullptr;
      plist_dict_new_iter(a, &it);
      bool same = true;
      for (;;) {
        char *key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(a, it, &key, &value);
        if (!key) break;
        same = same && plistEqual(value, plist_dict_get_item(b, key));
        std::free(key);
      }
      std::free(it);
      return same;
    }
    default:
      return false;
  }
}

}  // namespace nvx::test
