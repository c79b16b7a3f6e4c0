// Reading one setting from a loaded auto-setup file under the reader's rule for missing values.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "store/plist_file.h"
#include "tables/stored_keys.h"

namespace nvx::store {

struct StoredValue {
  enum class Kind : uint8_t { Value, Untouched, Error };
  Kind kind;
  int32_t value;  // the stored integer, or the rule's fallback; meaningful for Kind::Value only

  bool isError() const { return kind == Kind::Error; }
  bool hasValue() const { return kind == Kind::Value; }
};

// `file` is the result of LoadAutoSetupFile (nullopt: unreadable).
StoredValue readStored(const std::optional<PlistDict> &file, std::string_view key, const keys::ReadRule &rule);

}  // namespace nvx::store
