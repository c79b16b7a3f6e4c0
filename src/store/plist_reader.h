// The one property-list reader: XML through expat (a streaming tokenizer that does not recurse) and
// the binary format by walking its object table; both build the tree without recursion and enforce
// the caps of plist_limits.h while they read, so nothing else has to check the bytes first.
#pragma once

#include <optional>
#include <string_view>

#include "store/plist_value.h"

namespace nvx::store {

// The tree of an XML or binary property list (any root type); nullopt when the bytes are not one,
// exceed a cap, or (XML) carry an internal DTD subset or an entity declaration.
std::optional<PlistValue> parsePlist(std::string_view bytes);

namespace detail {

// What a reader may still spend, shared by both formats.
class ReadBudget {
 public:
  // One more value at `depth` (1 for the root); false when a cap is exceeded.
  bool takeNode(int depth, bool container);
  // Whether `count` more values would still fit (before room is made for them).
  bool hasRoomFor(uint64_t count) const;
  // One more string, key or data value of `bytes` bytes.
  bool takeText(size_t bytes);

 private:
  uint64_t nodes_ = 0;
  size_t textBytes_ = 0;
};

std::optional<PlistValue> parseXmlPlist(std::string_view bytes);
std::optional<PlistValue> parseBinaryPlist(std::string_view bytes);

}  // namespace detail

}  // namespace nvx::store
