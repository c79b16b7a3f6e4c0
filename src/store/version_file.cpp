#include "store/version_file.h"

#include <strings.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace nvx::store {

std::optional<PlistDict> readVersionFile(const std::string &path) {
  if (auto dict = readPlistDictionary(path)) return dict;
  std::error_code error;
  if (fs::exists(path, error)) return std::nullopt;  // present but unreadable: no second guess
  const fs::path wanted(path);
  for (const auto &entry : fs::directory_iterator(wanted.parent_path(), error)) {
    if (strcasecmp(entry.path().filename().c_str(), wanted.filename().c_str()) == 0)
      return readPlistDictionary(entry.path().string());
  }
  return std::nullopt;
}

}  // namespace nvx::store
