#include "store/stored_value.h"

namespace nvx::store {

namespace {

StoredValue answer(keys::Missing missing, int32_t fallback) {
  switch (missing) {
    case keys::Missing::Fallback:
      return {StoredValue::Kind::Value, fallback};
    case keys::Missing::Untouched:
      return {StoredValue::Kind::Untouched, 0};
    case keys::Missing::Error:
      break;
  }
  return {StoredValue::Kind::Error, 0};
}

}  // namespace

StoredValue readStored(const std::optional<PlistDict> &file, std::string_view key, const keys::ReadRule &rule) {
  if (!file) return answer(rule.unreadable, rule.fallback);
  const auto value = file->integer(key);
  if (!value) return answer(rule.absent, rule.fallback);
  return {StoredValue::Kind::Value, *value};
}

}  // namespace nvx::store
