// The auto-setup file: where it lives, how it is read, and the read-merge-write update.
//
// An update runs entirely under an advisory lock on "<file>.lock" or not at all, so concurrent
// writers in any number of processes lose no key. It writes only where the trust table allows
// (update_place.h). The file itself is only ever replaced by rename(), so a reader (which takes no
// lock) sees either the old or the new file, never a half-written one.
#include "store/auto_setup_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "store/accounts.h"
#include "store/backup_files.h"
#include "store/durable_file.h"
#include "store/file_paths.h"
#include "store/plist_writer.h"
#include "store/safe_file.h"
#include "store/update_lock.h"
#include "store/update_place.h"

namespace nvx::store {

namespace {

constexpr std::string_view kFileName = "com.norvane.MXR-K7autosetup.plist";
constexpr std::string_view kLockSuffix = ".lock";

// Removes temporary files that writers killed mid-update left behind (of the file and of a backup
// copy). Called only with the lock held: every writer that held it before has finished.
void removeLeftoverTempFiles(int folderFd, const std::string &name) {
  const int dirFd = ::fcntl(folderFd, F_DUPFD_CLOEXEC, 0);
  DIR *dir = dirFd >= 0 ? ::fdopendir(dirFd) : nullptr;
  if (!dir) {
    if (dirFd >= 0) ::close(dirFd);
    return;
  }
  const std::string backup = newestBackupName(name);
  while (const dirent *entry = ::readdir(dir)) {
    if (!isTemporaryOf(entry->d_name, name) && !isTemporaryOf(entry->d_name, backup)) continue;
    struct stat info {};
    if (::fstatat(folderFd, entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(info.st_mode))
      ::unlinkat(folderFd, entry->d_name, 0);
  }
  ::closedir(dir);
}

template <class T>
const Obstacle *obstacleIn(const OrObstacle<T> &step) {
  return std::get_if<Obstacle>(&step);
}

// The read-merge-write on the real file, with the lock held.
UpdateOutcome mergeAndWrite(RealFile &file, std::span<const KeyUpdate> changes) {
  const int folder = file.folder.fd.get();
  removeLeftoverTempFiles(folder, file.name);

  UpdateOutcome outcome = UpdateOutcome::storedOk();
  FileBytes old;
  std::optional<PlistDict> dict;
  if (file.existing) {
    // A read-only file stays as it is: whoever made it so wants the settings kept.
    if (::faccessat(folder, file.name.c_str(), W_OK, AT_EACCESS) != 0)
      return UpdateOutcome::notStored(NotStoredReason::ReadOnly);
    old = readRegularFileAt(folder, file.name, kMaxPlistBytes, false);
    // A file that cannot even be read is never replaced: its bytes could not be kept.
    if (!old.ok() && old.failure != ReadFailure::TooLarge)
      return UpdateOutcome::notStored(old.failure == ReadFailure::Denied ? NotStoredReason::ReadOnly
                                                                          : NotStoredReason::NotAFile);
    if (old.ok()) dict = parsePlistDictionary(old.bytes);
  }
  // Unreadable (not a property list, not a dictionary, over a cap): replaced by a file holding
  // only the new keys, once its bytes are kept. An empty file has no bytes worth keeping.
  const bool replacing = file.existing && !dict && file.existing->st_size > 0;
  PlistDictionary entries = dict ? std::move(dict->entries()) : PlistDictionary{};
  for (const auto &change : changes) {
    if (change.value) entries.set(change.key, PlistValue::signedInteger(*change.value));
    else entries.remove(change.key);
  }

  const auto xml = plistXml(PlistValue(std::move(entries)));
  if (const auto *refusal = std::get_if<XmlRefusal>(&xml))
    return UpdateOutcome::notStored(*refusal == XmlRefusal::TooLarge ? NotStoredReason::TooLarge
                                                                     : NotStoredReason::ForeignContent);
  if (replacing) {
    if (const int error = keepBackup(folder, file.name, *file.existing, old.bytes, old.ok()))
      return UpdateOutcome::notStored(reasonOfErrno(error));
    outcome.result = UpdateOutcome::Result::StoredReplacingUnreadable;
    outcome.backup = file.folder.path + "/" + newestBackupName(file.name);
  }

  std::optional<Owner> owner;
  if (file.existing) owner = ownerToKeep(*file.existing);
  else if (file.folder.verdict.giveAway) owner = file.folder.verdict.newFiles;
  const mode_t mode = file.existing ? file.existing->st_mode : 0600;
  if (const auto failure = replaceDurably({folder, file.name, std::get<std::string>(xml), mode, owner}))
    return UpdateOutcome::notStored(failure->step == WriteStep::Owner ? NotStoredReason::OwnerNotSet
                                                                      : reasonOfErrno(failure->error));
  return outcome;
}

UpdateOutcome update(std::span<const KeyUpdate> changes) {
  for (const auto &change : changes)
    if (change.key.find('\0') != std::string::npos) return UpdateOutcome::notStored(NotStoredReason::Failed);
  const std::string path = GetAutoSetupFilePath();
  if (path.empty()) return UpdateOutcome::notStored(NotStoredReason::NoConfigHome);
  const std::string name(kFileName);

  const auto config = openConfigFolder(path, true);
  if (const auto *obstacle = obstacleIn(config)) return UpdateOutcome::notStored(obstacle->reason);
  const auto &configFolder = std::get<TrustedFolder>(config);
  const auto lock = openLockFile(configFolder, name + std::string(kLockSuffix), true);
  if (const auto *obstacle = obstacleIn(lock)) return UpdateOutcome::notStored(obstacle->reason);
  if (!takeUpdateLock(std::get<Fd>(lock).get(), lockTimeout()))
    return UpdateOutcome::notStored(NotStoredReason::LockNotHad);

  auto file = findRealFile(configFolder, name);
  if (const auto *obstacle = obstacleIn(file)) return UpdateOutcome::notStored(obstacle->reason);
  return mergeAndWrite(std::get<RealFile>(file), changes);
}

bool writableFolder(int fd) { return ::faccessat(fd, ".", W_OK | X_OK, AT_EACCESS) == 0; }

}  // namespace

std::string GetAutoSetupFilePath() {
  std::string home;
  const char *xdg = std::getenv("XDG_CONFIG_HOME");
  if (xdg && xdg[0] == '/') {
    home = xdg;
  } else {
    const std::string userHome = homeFolder();
    if (userHome.empty()) return {};
    home = userHome + "/.config";
  }
  while (home.size() > 1 && home.back() == '/') home.pop_back();
  if (home == "/") home.clear();
  return home + "/" + std::string(kFileName);
}

std::optional<PlistDict> LoadAutoSetupFile() {
  try {
    const std::string path = GetAutoSetupFilePath();
    if (path.empty()) return std::nullopt;
    return readPlistDictionary(path);
  } catch (...) {
    return std::nullopt;
  }
}

UpdateOutcome UpdateAutoSetupFile(std::span<const KeyUpdate> changes) {
  try {
    return update(changes);
  } catch (...) {
    return UpdateOutcome::notStored(NotStoredReason::Failed);  // a failed allocation included
  }
}

void StoreAutoSetupValue(std::string_view key, int32_t value) {
  try {
    const KeyUpdate change{std::string(key), value};
    UpdateAutoSetupFile({&change, 1});
  } catch (...) {
    // The outcome of an update is never reported (an allocation failure included).
  }
}

std::optional<UpdateObstacle> FindUpdateObstacle() {
  try {
    const std::string path = GetAutoSetupFilePath();
    if (path.empty()) return UpdateObstacle{NotStoredReason::NoConfigHome, {}};
    const std::string name(kFileName);
    const auto config = openConfigFolder(path, false);
    if (const auto *obstacle = obstacleIn(config)) return *obstacle;
    const auto &folder = std::get<TrustedFolder>(config);
    // A missing config folder: the ancestor it would be made in was judged instead.
    if (folder.path != parentOf(path))
      return writableFolder(folder.fd.get()) ? std::nullopt
                                             : std::optional<UpdateObstacle>({NotStoredReason::ReadOnly, folder.path});
    const auto lock = openLockFile(folder, name + std::string(kLockSuffix), false);
    if (const auto *obstacle = obstacleIn(lock)) return *obstacle;
    const auto found = findRealFile(folder, name);
    if (const auto *obstacle = obstacleIn(found)) return *obstacle;
    const auto &file = std::get<RealFile>(found);
    const std::string where = file.folder.path + "/" + file.name;
    if (file.existing && ::faccessat(file.folder.fd.get(), file.name.c_str(), W_OK, AT_EACCESS) != 0)
      return UpdateObstacle{NotStoredReason::ReadOnly, where};
    if (!writableFolder(file.folder.fd.get())) return UpdateObstacle{NotStoredReason::ReadOnly, file.folder.path};
    if (const auto dict = readPlistDictionary(where);
        dict && std::holds_alternative<XmlRefusal>(plistXml(PlistValue(dict->entries()))))
      return UpdateObstacle{NotStoredReason::ForeignContent, where};
    return std::nullopt;
  } catch (...) {
    return UpdateObstacle{NotStoredReason::Failed, {}};
  }
}

const char *reasonText(NotStoredReason reason) {
  switch (reason) {
    case NotStoredReason::NoConfigHome:
      return "no home folder";
    case NotStoredReason::FolderNotYours:
      return "folder not yours";
    case NotStoredReason::FolderWritableByOthers:
      return "folder writable by others";
    case NotStoredReason::FileNotYours:
      return "file not yours";
    case NotStoredReason::LockNotHad:
      return "lock not had";
    case NotStoredReason::LockNotAFile:
      return "lock file is not a file";
    case NotStoredReason::NotAFile:
      return "not a regular file";
    case NotStoredReason::ReadOnly:
      return "read-only";
    case NotStoredReason::DiskFull:
      return "disk full";
    case NotStoredReason::ForeignContent:
      return "holds values this library cannot rewrite";
    case NotStoredReason::OwnerNotSet:
      return "owner could not be set";
    case NotStoredReason::TooLarge:
      return "too large";
    case NotStoredReason::Failed:
      break;
  }
  return "failed";
}

}  // namespace nvx::store
