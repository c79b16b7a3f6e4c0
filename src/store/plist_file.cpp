#include "store/plist_file.h"

#include "store/plist_reader.h"
#include "store/plist_text.h"
#include "store/safe_file.h"

namespace nvx::store {

std::optional<int32_t> PlistDict::integer(std::string_view key) const {
  const PlistValue *value = root_.find(key);
  const auto *number = value ? value->as<PlistInteger>() : nullptr;
  if (!number) return std::nullopt;
  return static_cast<int32_t>(static_cast<int64_t>(number->bits));
}

std::optional<std::string> PlistDict::string(std::string_view key) const {
  const PlistValue *value = root_.find(key);
  const auto *text = value ? value->as<std::string>() : nullptr;
  if (!text) return std::nullopt;
  return *text;
}

std::optional<std::string> PlistDict::scalarText(std::string_view key) const {
  const PlistValue *value = root_.find(key);
  if (!value) return std::nullopt;
  if (const auto *text = value->as<std::string>()) return *text;
  if (const auto *number = value->as<PlistInteger>()) return integerText(*number);
  if (const auto *real = value->as<PlistReal>()) return realText(real->value);
  if (const auto *flag = value->as<bool>()) return std::string(*flag ? "true" : "false");
  return std::nullopt;
}

std::vector<std::string> PlistDict::keys() const {
  std::vector<std::string> all;
  all.reserve(root_.size());
  for (size_t i = 0; i < root_.size(); ++i) all.push_back(root_.keyAt(i));
  return all;
}

std::optional<PlistDict> parsePlistDictionary(std::string_view bytes) {
  auto root = parsePlist(bytes);
  auto *dict = root ? root->as<PlistDictionary>() : nullptr;
  if (!dict) return std::nullopt;
  return PlistDict(std::move(*dict));
}

std::optional<PlistDict> readPlistDictionary(const std::string &path) {
  const FileBytes file = readRegularFile(path, kMaxPlistBytes);
  if (!file.ok()) return std::nullopt;
  return parsePlistDictionary(file.bytes);
}

}  // namespace nvx::store
