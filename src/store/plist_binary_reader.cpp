// Binary property lists ("bplist00"): a table of objects that name one another by number. The walk
// goes from the top object down with a stack of its own, expanding every reference into a value of
// the tree and charging it to the read budget, so shared references (a few kilobytes that name
// millions of values) and reference cycles (endless nesting) stop at the caps instead of exhausting
// memory or the stack.
#include <bit>
#include <string>
#include <string_view>
#include <vector>

#include "store/plist_reader.h"

namespace nvx::store::detail {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr size_t kTrailerSize = 32;

// Object markers: the high nibble is the type, the low nibble a size or a length.
enum Marker : unsigned {
  kSimple = 0x0,  // 0x08 false, 0x09 true, 0x00 null, 0x0F fill
  kInteger = 0x1,
  kReal = 0x2,
  kDate = 0x3,
  kData = 0x4,
  kAscii = 0x5,
  kUtf16 = 0x6,
  kUid = 0x8,
  kArray = 0xA,
  kOrderedSet = 0xB,
  kSet = 0xC,
  kDictionary = 0xD,
};

// UTF-16 (big-endian) to UTF-8; nullopt for an unpaired surrogate, which UTF-8 cannot hold.
std::optional<std::string> utf8FromUtf16(std::string_view units) {
  std::string out;
  out.reserve(units.size());
  auto unitAt = [&](size_t i) {
    return static_cast<uint32_t>(static_cast<unsigned char>(units[2 * i]) << 8 | static_cast<unsigned char>(units[2 * i + 1]));
  };
  const size_t count = units.size() / 2;
  for (size_t i = 0; i < count; ++i) {
    uint32_t code = unitAt(i);
    if (code >= 0xDC00 && code <= 0xDFFF) return std::nullopt;
    if (code >= 0xD800 && code <= 0xDBFF) {
      if (i + 1 >= count || unitAt(i + 1) < 0xDC00 || unitAt(i + 1) > 0xDFFF) return std::nullopt;
      code = 0x10000 + ((code - 0xD800) << 10) + (unitAt(++i) - 0xDC00);
    }
    if (code < 0x80) {
      out += static_cast<char>(code);
    } else if (code < 0x800) {
      out += static_cast<char>(0xC0 | code >> 6);
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      out += static_cast<char>(0xE0 | code >> 12);
      out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | code >> 18);
      out += static_cast<char>(0x80 | (code >> 12 & 0x3F));
      out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return out;
}

class BinaryWalker {
 public:
  explicit BinaryWalker(std::string_view bytes) : bytes_(bytes) {}

  std::optional<PlistValue> read() {
    if (!readTrailer()) return std::nullopt;
    auto top = decode(topObject_, 1);
    if (!top) return std::nullopt;
    PlistValue root = std::move(top->value);
    std::vector<Frame> stack;
    if (top->container) stack.push_back({&root, top->refsAt, top->count, 0, 1});
    while (!stack.empty()) {
      Frame &frame = stack.back();
      auto *dict = frame.container->as<PlistDictionary>();
      if (frame.next == frame.count) {
        if (dict) dict->endAppend();
        stack.pop_back();
        continue;
      }
      const uint64_t i = frame.next++;
      const int depth = frame.depth + 1;
      std::string key;
      uint64_t valueRef = 0;
      if (dict) {
        const auto keyText = decodeKey(refAt(frame.refsAt, i));
        if (!keyText) return std::nullopt;
        key = std::move(*keyText);
        valueRef = refAt(frame.refsAt, frame.count + i);
      } else {
        valueRef = refAt(frame.refsAt, i);
      }
      auto child = decode(valueRef, depth);
      if (!child) return std::nullopt;
      PlistValue *placed = nullptr;
      if (dict) {
        dict->append(std::move(key), std::move(child->value));
        placed = &dict->valueAt(dict->size() - 1);
      } else {
        auto &items = frame.container->as<PlistArray>()->items;
        items.push_back(std::move(child->value));
        placed = &items.back();
      }
      // `frame` may move with the stack from here on.
      if (child->container) stack.push_back({placed, child->refsAt, child->count, 0, depth});
    }
    return root;
  }

 private:
  // A container whose references are still to be walked.
  struct Frame {
    PlistValue *container;
    size_t refsAt;   // where its references start in the file
    uint64_t count;  // its entries
    uint64_t next;   // the next entry to walk
    int depth;
  };

  struct Decoded {
    PlistValue value;
    bool container = false;
    size_t refsAt = 0;
    uint64_t count = 0;
  };

  uint64_t bigEndian(size_t at, size_t width) const {
    uint64_t value = 0;
    for (size_t k = 0; k < width; ++k) value = value << 8 | static_cast<unsigned char>(bytes_[at + k]);
    return value;
  }

  bool readTrailer() {
    if (bytes_.size() < kMagic.size() + kTrailerSize) return false;
    dataEnd_ = bytes_.size() - kTrailerSize;
    offsetSize_ = static_cast<unsigned char>(bytes_[dataEnd_ + 6]);
    refSize_ = static_cast<unsigned char>(bytes_[dataEnd_ + 7]);
    objectCount_ = bigEndian(dataEnd_ + 8, 8);
    topObject_ = bigEndian(dataEnd_ + 16, 8);
    tableOffset_ = bigEndian(dataEnd_ + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8 || refSize_ < 1 || refSize_ > 8) return false;
    if (objectCount_ == 0 || topObject_ >= objectCount_) return false;
    if (tableOffset_ < kMagic.size() || tableOffset_ > dataEnd_) return false;
    return objectCount_ <= (dataEnd_ - tableOffset_) / offsetSize_;
  }

  // The reference number `index` of a container whose references start at `refsAt` (checked to lie
  // in the file when the container was decoded).
  uint64_t refAt(size_t refsAt, uint64_t index) const {
    return bigEndian(refsAt + static_cast<size_t>(index) * refSize_, refSize_);
  }

  std::optional<size_t> objectOffset(uint64_t ref) const {
    if (ref >= objectCount_) return std::nullopt;
    const uint64_t offset = bigEndian(static_cast<size_t>(tableOffset_ + ref * offsetSize_), offsetSize_);
    if (offset < kMagic.size() || offset >= dataEnd_) return std::nullopt;
    return static_cast<size_t>(offset);
  }

  // The length in a marker's low nibble, or (0xF) in the integer object that follows it.
  bool readLength(size_t &pos, unsigned marker, uint64_t &length) const {
    length = marker & 0xF;
    if (length != 0xF) return true;
    if (pos >= dataEnd_) return false;
    const unsigned lengthMarker = static_cast<unsigned char>(bytes_[pos++]);
    if (lengthMarker >> 4 != kInteger || (lengthMarker & 0xF) > 3) return false;
    const size_t width = size_t{1} << (lengthMarker & 0xF);
    if (width > dataEnd_ - pos) return false;
    length = bigEndian(pos, width);
    pos += width;
    return true;
  }

  // `count` units of `unit` bytes from `pos` lie within the objects.
  bool fits(size_t pos, uint64_t count, size_t unit) const { return count <= (dataEnd_ - pos) / unit; }

  std::optional<std::string> decodeKey(uint64_t ref) {
    auto key = decode(ref, 0);
    if (!key) return std::nullopt;
    auto *text = key->value.as<std::string>();
    if (!text) return std::nullopt;  // keys are strings
    return std::move(*text);
  }

  // One object: a scalar completely, a container as an empty one and where its references are.
  // `depth` 0 is a dictionary key, which is not a value of its own.
  std::optional<Decoded> decode(uint64_t ref, int depth) {
    const auto offset = objectOffset(ref);
    if (!offset) return std::nullopt;
    size_t pos = *offset;
    const unsigned marker = static_cast<unsigned char>(bytes_[pos++]);
    const unsigned info = marker & 0xF;
    const unsigned type = marker >> 4;
    const bool container = type == kArray || type == kDictionary;
    if (depth > 0 && !budget_.takeNode(depth, container)) return std::nullopt;
    const auto foreign = [&] { return Decoded{PlistValue(PlistForeign{static_cast<uint8_t>(marker)})}; };

    switch (type) {
      case kSimple:
        if (info == 0x8 || info == 0x9) return Decoded{PlistValue(info == 0x9)};
        if (info == 0x0 || info == 0xF) return foreign();
        return std::nullopt;
      case kInteger: {
        if (info > 4) return std::nullopt;
        const size_t width = size_t{1} << info;
        if (width > dataEnd_ - pos) return std::nullopt;
        if (width <= 4) return Decoded{PlistValue(PlistInteger{bigEndian(pos, width), false})};
        if (width == 8) {
          const uint64_t bits = bigEndian(pos, 8);
          return Decoded{PlistValue(PlistInteger{bits, (bits >> 63) != 0})};
        }
        // 128 bits: what fits in 64 bits is read as such, anything larger is foreign.
        const uint64_t high = bigEndian(pos, 8), low = bigEndian(pos + 8, 8);
        if (high == 0) return Decoded{PlistValue(PlistInteger{low, false})};
        if (high == ~uint64_t{0} && (low >> 63) != 0) return Decoded{PlistValue(PlistInteger{low, true})};
        return foreign();
      }
      case kReal:
        if (info == 2 && 4 <= dataEnd_ - pos)
          return Decoded{PlistValue(PlistReal{std::bit_cast<float>(static_cast<uint32_t>(bigEndian(pos, 4)))})};
        if (info == 3 && 8 <= dataEnd_ - pos) return Decoded{PlistValue(PlistReal{std::bit_cast<double>(bigEndian(pos, 8))})};
        return std::nullopt;
      case kDate:
        if (info != 3 || 8 > dataEnd_ - pos) return std::nullopt;
        return Decoded{PlistValue(PlistDate{std::bit_cast<double>(bigEndian(pos, 8))})};
      case kData:
      case kAscii:
      case kUtf16: {
        uint64_t length = 0;
        const size_t unit = type == kUtf16 ? 2 : 1;
        if (!readLength(pos, marker, length) || !fits(pos, length, unit)) return std::nullopt;
        const std::string_view raw = bytes_.substr(pos, static_cast<size_t>(length) * unit);
        if (type == kUtf16) {
          auto text = utf8FromUtf16(raw);
          if (!text) return foreign();
          if (!budget_.takeText(text->size())) return std::nullopt;
          return Decoded{PlistValue(std::move(*text))};
        }
        if (!budget_.takeText(raw.size())) return std::nullopt;
        if (type == kData) return Decoded{PlistValue(PlistData{std::string(raw)})};
        return Decoded{PlistValue(std::string(raw))};
      }
      case kUid:
        if (info + size_t{1} > dataEnd_ - pos) return std::nullopt;
        return foreign();
      case kArray:
      case kOrderedSet:
      case kSet:
      case kDictionary: {
        uint64_t count = 0;
        const uint64_t refsPerEntry = type == kDictionary ? 2 : 1;
        if (!readLength(pos, marker, count) || !fits(pos, count, refSize_ * refsPerEntry)) return std::nullopt;
        if (!container) return foreign();  // sets: XML has none
        if (!budget_.hasRoomFor(count)) return std::nullopt;
        Decoded decoded{type == kArray ? PlistValue(PlistArray{}) : PlistValue(PlistDictionary{}), true, pos, count};
        if (auto *array = decoded.value.as<PlistArray>()) array->items.reserve(static_cast<size_t>(count));
        return decoded;
      }
      default:
        return std::nullopt;
    }
  }

  std::string_view bytes_;
  size_t dataEnd_ = 0;
  size_t offsetSize_ = 0;
  size_t refSize_ = 0;
  uint64_t objectCount_ = 0;
  uint64_t topObject_ = 0;
  uint64_t tableOffset_ = 0;
  ReadBudget budget_;
};

}  // namespace

std::optional<PlistValue> parseBinaryPlist(std::string_view bytes) { return BinaryWalker(bytes).read(); }

}  // namespace nvx::store::detail
