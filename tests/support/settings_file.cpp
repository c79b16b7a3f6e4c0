#include "support/settings_file.h"

#include "support/crafted_files.h"
#include "support/plist_integers.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <filesystem>

namespace nvx::test {

SettingsHome::SettingsHome() { env_.set("XDG_CONFIG_HOME", dir_.path()); }

std::string SettingsHome::filePath() const { return dir_.file(kSettingsFileName); }

bool SettingsHome::exists() const { return std::filesystem::exists(filePath()); }

std::map<std::string, int64_t> SettingsHome::integers() const {
  const std::string bytes = readFile(filePath());
  auto values = plistIntegers(bytes);
  EXPECT_TRUE(values.has_value()) << "not a dictionary property list:\n" << bytes;
  return values.value_or(std::map<std::string, int64_t>{});
}

std::optional<int64_t> SettingsHome::value(const std::string &key) const {
  if (!exists()) return std::nullopt;
  auto values = integers();
  auto it = values.find(key);
  return it == values.end() ? std::nullopt : std::optional<int64_t>(it->second);
}


void SettingsHome::writeRaw(const std::string &bytes) const {
  dir_.write(kSettingsFileName, bytes);
}

void SettingsHome::writeIntegers(const std::map<std::string, int64_t> &values) const {
  writeRaw(integerPlistXml(values));
}

std::string integerPlistXml(const std::map<std::string, int64_t> &values) {
  std::string entries;
  for (const auto &[key, value] : values)
    entries += "\t<key>" + key + "</key>\n\t<integer>" + std::to_string(value) + "</integer>\n";
  return xmlPlist(entries);
}

std::vector<std::string> temporaryFilesIn(const std::string &folder) {
  const std::string prefix = std::string(".") + kSettingsFileName + ".";
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename();
    if (name.size() == prefix.size() + 6 && name.starts_with(prefix)) names.push_back(name);
  }
  return names;
}

}  // namespace nvx::test
