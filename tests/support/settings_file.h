// The auto-setup file as a test sees it: a scratch XDG_CONFIG_HOME, and the file's integer keys
// parsed with libplist independently of the library's own reader.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/scratch_dir.h"

namespace nvx::test {

inline constexpr const char *kSettingsFileName = "com.norvane.MXR-K7autosetup.plist";

class SettingsHome {
 public:
  SettingsHome();
  const std::string &home() const { return dir_.path(); }
  std::string filePath() const;
  bool exists() const;
  // Integer keys of the file; other value types are left out. Fails the test if the file exists
  // but is not a dictionary property list.
  std::map<std::string, int64_t> integers() const;
  std::optional<int64_t> value(const std::string &key) const;
  void writeRaw(const std::string &bytes) const;
  void writeIntegers(const std::map<std::string, int64_t> &values) const;
  ScratchDir &dir() { return dir_; }

 private:
  ScratchDir dir_;
  EnvGuard env_;
};

// An XML property list holding the given integers.
std::string integerPlistXml(const std::map<std::string, int64_t> &values);

// Names of the update's temporary files (".com.norvane.MXR-K7autosetup.plist.XXXXXX") in `folder`.
std::vector<std::string> temporaryFilesIn(const std::string &folder);

}  // namespace nvx::test
