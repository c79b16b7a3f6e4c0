#include "store/backup_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "store/durable_file.h"

namespace nvx::store {

namespace {

std::string backupName(const std::string &name, int age) {
  return age == 0 ? newestBackupName(name) : newestBackupName(name) + "." + std::to_string(age);
}

}  // namespace

std::string newestBackupName(const std::string &name) { return name + ".bak"; }

int keepBackup(int folderFd, const std::string &name, const struct stat &file, std::string_view bytes, bool complete) {
  // Make room for the newest: each backup moves one place older, the oldest drops out.
  if (::unlinkat(folderFd, backupName(name, kBackupsKept - 1).c_str(), 0) != 0 && errno != ENOENT) return errno;
  for (int age = kBackupsKept - 2; age >= 0; --age) {
    if (::renameat(folderFd, backupName(name, age).c_str(), folderFd, backupName(name, age + 1).c_str()) != 0 &&
        errno != ENOENT)
      return errno;
  }
  const std::string newest = backupName(name, 0);
  // A hard link keeps the bytes, mode and owner without copying them.
  if (::linkat(folderFd, name.c_str(), folderFd, newest.c_str(), 0) == 0) return 0;
  // A file system without hard links: a copy, written as durably as the file itself.
  if (!complete) return EFBIG;
  const auto failure = replaceDurably({folderFd, newest, bytes, file.st_mode, ownerToKeep(file)});
  return failure ? failure->error : 0;
}

}  // namespace nvx::store
