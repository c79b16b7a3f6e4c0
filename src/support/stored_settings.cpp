#include "support/stored_settings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "store/auto_setup_file.h"
#include "store/safe_file.h"
#include "tables/settings.h"

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

std::vector<std::string> StoredSettings::keys() const { return dict_ ? dict_->keys() : std::vector<std::string>{}; }

std::optional<std::string> StoredSettings::writeProblem() const {
  const auto obstacle = store::FindUpdateObstacle();
  if (!obstacle) return std::nullopt;
  const std::string &where = obstacle->path;
  switch (obstacle->reason) {
    case store::NotStoredReason::FolderNotYours:
      return "the folder " + where + " belongs to another user";
    case store::NotStoredReason::FolderWritableByOthers:
      return "the folder " + where + " may be written by other users (only its owner, or the owner's own group, may)";
    case store::NotStoredReason::FileNotYours:
      return where + " belongs to another user than its folder";
    case store::NotStoredReason::LockNotAFile:
      return "the lock file " + where + " is not a regular file";
    case store::NotStoredReason::ReadOnly:
      return (where == path_ ? "the file " : "the folder ") + where + " is not writable by this user";
    case store::NotStoredReason::ForeignContent:
      return where + " holds values of another program that this library cannot write back (it keeps them as they are)";
    default:
      return std::string(store::reasonText(obstacle->reason)) + (where.empty() ? "" : ": " + where);
  }
}

std::string StoredSettings::unreadableReason() const {
  if (state_ != State::Unreadable) return {};
  const auto file = store::readRegularFile(path_, store::kMaxPlistBytes);
  switch (file.failure) {
    case store::ReadFailure::NotRegular:
      return "it is not a regular file";
    case store::ReadFailure::TooLarge:
      return "it is larger than 1 MiB";
    case store::ReadFailure::Denied:
      return "permission denied";
    case store::ReadFailure::Missing:
    case store::ReadFailure::Failed:
      return "it cannot be opened";
    case store::ReadFailure::None:
      break;
  }
  if (file.bytes.empty()) return "it is empty";
  return "it is not a property list whose root is a dictionary (or it is nested too deep, holds too many values, "
         "or declares entities)";
}

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

bool isLibraryKey(std::string_view key) { return tables::isLibraryKey(key); }

}  // namespace nvx::support
