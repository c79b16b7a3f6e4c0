#include "support/stored_settings.h"

#include <sys/stat.h>

#include <cerrno>

#include "store/auto_setup_file.h"

namespace nvx::support {

StoredSettings StoredSettings::read() {
  std::string path = store::GetAutoSetupFilePath();
  auto dict = store::LoadAutoSetupFile();
  if (dict) return {State::Readable, std::move(path), std::move(dict)};
  // The library treats a missing and an unreadable file alike; a person needs to know which.
  struct stat info {};
  const bool missing = ::stat(path.c_str(), &info) != 0 && errno == ENOENT;
  return {missing ? State::Missing : State::Unreadable, std::move(path), std::nullopt};
}

std::optional<int32_t> StoredSettings::integer(std::string_view key) const {
  if (!dict_) return std::nullopt;
  return dict_->integer(key);
}

bool StoredSettings::contains(std::string_view key) const { return dict_ && dict_->contains(key); }

const char *stateName(StoredSettings::State state) {
  switch (state) {
    case StoredSettings::State::Missing:
      return "missing";
    case StoredSettings::State::Unreadable:
      return "unreadable";
    case StoredSettings::State::Readable:
      break;
  }
  return "readable";
}

}  // namespace nvx::support
