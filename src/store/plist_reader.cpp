#include "store/plist_reader.h"

#include "store/plist_limits.h"

namespace nvx::store {

namespace detail {

bool ReadBudget::takeNode(int depth, bool container) {
  if (container && depth > kMaxPlistDepth) return false;
  if (!hasRoomFor(1)) return false;
  ++nodes_;
  return true;
}

bool ReadBudget::hasRoomFor(uint64_t count) const { return count <= kMaxPlistNodes - nodes_; }

bool ReadBudget::takeText(size_t bytes) {
  if (bytes > kMaxPlistTextBytes || bytes > kMaxPlistTotalTextBytes - textBytes_) return false;
  textBytes_ += bytes;
  return true;
}

}  // namespace detail

std::optional<PlistValue> parsePlist(std::string_view bytes) {
  if (bytes.empty() || bytes.size() > kMaxPlistBytes) return std::nullopt;
  if (bytes.starts_with("bplist00")) return detail::parseBinaryPlist(bytes);
  return detail::parseXmlPlist(bytes);
}

}  // namespace nvx::store
