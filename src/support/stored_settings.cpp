#include "support/stored_settings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "store/auto_setup_file.h"
#include "store/file_paths.h"
#include "tables/settings.h"

namespace nvx::support {

namespace {

bool writableByMe(const std::string &path) { return ::faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0; }

}  // namespace

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

std::vector<std::string> StoredSettings::keys() const {
  std::vector<std::string> all;
  if (!dict_) return all;
  plist_dict_iter iter = nullptr;
  plist_dict_new_iter(dict_->raw(), &iter);
  if (!iter) return all;
  for (;;) {
    char *key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(dict_->raw(), iter, &key, &value);
    if (!key) break;
    all.emplace_back(key);
    std::free(key);
  }
  std::free(iter);
  return all;
}

std::optional<std::string> StoredSettings::writeProblem() const {
  struct stat info {};
  // The file an update replaces: where the path's symbolic links finally lead.
  const std::string file = store::realFileOf(path_).value_or(path_);
  if (::stat(file.c_str(), &info) == 0 && ::faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0)
    return "the file " + file + " is not writable by this user";
  // The file is replaced by a new one made in its folder; a missing folder is made first, in the
  // nearest folder that exists.
  std::string folder = store::parentOf(file);
  while (::stat(folder.c_str(), &info) != 0 && errno == ENOENT && folder != "/") folder = store::parentOf(folder);
  if (!writableByMe(folder)) return "the folder " + folder + " is not writable by this user";
  return std::nullopt;
}

std::string StoredSettings::unreadableReason() const {
  if (state_ != State::Unreadable) return {};
  const int fd = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return std::strerror(errno);
  struct stat info {};
  const bool regular = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
  ::close(fd);
  if (!regular) return "it is not a regular file";
  if (static_cast<uint64_t>(info.st_size) > store::kMaxPlistBytes) return "it is larger than 1 MiB";
  if (info.st_size == 0) return "it is empty";
  return "it is not a property list whose root is a dictionary (or it nests too deep)";
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
