// A builder of binary property lists object by object, for the reference graphs and the objects
// that ordinary writers never make (shared references, cycles, UIDs).
#pragma once

#include <bit>
#include <cstdint>
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
  uint64_t real(double value) { return add(std::string(1, '\x23') + bigEndian(std::bit_cast<uint64_t>(value), 8)); }
  // Seconds since 2001-01-01T00:00:00Z.
  uint64_t date(double seconds) { return add(std::string(1, '\x33') + bigEndian(std::bit_cast<uint64_t>(seconds), 8)); }
  // An object given byte for byte (a UID: "\x80\x01").
  uint64_t raw(std::string bytes) { return add(std::move(bytes)); }
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

  static void appendBigEndian(std::string &out, uint64_t value, size_t width) { out += bigEndian(value, width); }
  static std::string bigEndian(uint64_t value, size_t width) {
    std::string out;
    for (size_t k = width; k-- > 0;) out += static_cast<char>((value >> (8 * k)) & 0xFF);
    return out;
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

}  // namespace nvx::test
