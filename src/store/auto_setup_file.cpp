// The auto-setup file: where it lives, how it is read, and the read-merge-write update.
//
// An update runs entirely under an advisory lock on "<file>.lock", so concurrent writers in any
// number of processes lose no key. The file itself is only ever replaced by rename(), so a reader
// (which takes no lock) sees either the old or the new file, never a half-written one.
#include "store/auto_setup_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "store/file_paths.h"

namespace nvx::store {

namespace {

constexpr std::string_view kFileName = "com.norvane.MXR-K7autosetup.plist";
// Temporary files of an update: "." + file name + "." + six characters from mkstemp.
constexpr std::string_view kTempPrefix = ".com.norvane.MXR-K7autosetup.plist.";
constexpr size_t kTempSuffixLength = 6;

constexpr auto kLockWait = std::chrono::seconds(10);
constexpr auto kLockFirstPause = std::chrono::milliseconds(1);
// Short, so that the lock does not lie idle long between a release and the next waiter's poll.
constexpr auto kLockLongestPause = std::chrono::milliseconds(2);

class Fd {
 public:
  explicit Fd(int fd = -1) : fd_(fd) {}
  ~Fd() {
    if (fd_ >= 0) ::close(fd_);
  }
  Fd(const Fd &) = delete;
  Fd &operator=(const Fd &) = delete;
  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }
  // Closes now and reports whether the close succeeded (a write error can surface only here).
  bool close() {
    const int fd = fd_;
    fd_ = -1;
    return fd < 0 || ::close(fd) == 0;
  }

 private:
  int fd_;
};

bool writeAll(int fd, const char *data, size_t size) {
  while (size > 0) {
    const ssize_t done = ::write(fd, data, size);
    if (done < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += done;
    size -= static_cast<size_t>(done);
  }
  return true;
}

bool fsyncRetrying(int fd) {
  while (::fsync(fd) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

void syncFolder(const std::string &folder) {
  const Fd fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd.valid()) fsyncRetrying(fd.get());
}

// Creates the config folder with mode 0700 when it is missing. Missing parents are made as
// `mkdir -p` makes them (0777 less the umask); only the config folder itself is private.
void ensureConfigFolder(const std::string &folder) {
  struct stat info {};
  if (::stat(folder.c_str(), &info) == 0 || errno != ENOENT) return;
  const std::string parent = parentOf(folder);
  if (parent != folder && ::stat(parent.c_str(), &info) != 0 && errno == ENOENT) {
    std::vector<std::string> missing;
    for (std::string p = parent; p != "/" && p != "."; p = parentOf(p)) {
      if (::stat(p.c_str(), &info) == 0 || errno != ENOENT) break;
      missing.push_back(p);
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it) ::mkdir(it->c_str(), 0777);
  }
  ::mkdir(folder.c_str(), 0700);
}

// Byte of the lock file that waiting writers hold a shared open-file-description lock on, so that a
// writer can tell whether others are waiting. (flock and these record locks do not interact.)
constexpr off_t kWaitingByte = 1;

bool setWaitingMark(int fd, short type) {
  struct flock mark {};
  mark.l_type = type;
  mark.l_whence = SEEK_SET;
  mark.l_start = kWaitingByte;
  mark.l_len = 1;
  return ::fcntl(fd, F_OFD_SETLK, &mark) == 0;
}

// Whether another writer has marked itself as waiting for the lock.
bool othersWaiting(int fd) {
  struct flock probe {};
  probe.l_type = F_WRLCK;
  probe.l_whence = SEEK_SET;
  probe.l_start = kWaitingByte;
  probe.l_len = 1;
  return ::fcntl(fd, F_OFD_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
}

// Holds the advisory lock of one update. The lock file stays in place after the update: removing
// it could let two writers lock two different files of the same name.
//
// Waiting is polled rather than blocking, so a writer that hangs while holding the lock delays the
// others by at most kLockWait; after that they go on without it. Polling alone is unfair: a process
// that updates many keys in a row takes the lock again within microseconds of releasing it, while
// the others sleep between polls, and measured with 16 writers of 100 keys each, whole batches of
// 100 went through while others waited, long enough under a slow disk to reach kLockWait (and then
// to write unlocked). So a writer that finds others waiting joins them instead of taking the lock,
// and pauses once first, which lets every earlier waiter poll at least once.
class UpdateLock {
 public:
  explicit UpdateLock(const std::string &lockPath)
      : fd_(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600)) {
    if (!fd_.valid()) return;  // e.g. a read-only folder: go on unlocked, the write will tell
    const auto deadline = std::chrono::steady_clock::now() + kLockWait;
    const bool deferring = othersWaiting(fd_.get());
    if (!deferring) {
      if (tryLock()) return;
      if (errno != EWOULDBLOCK && errno != EINTR) return;
    }
    const bool marked = setWaitingMark(fd_.get(), F_RDLCK);
    auto pause = std::chrono::duration_cast<std::chrono::microseconds>(deferring ? kLockLongestPause : kLockFirstPause);
    for (;;) {
      std::this_thread::sleep_for(pause);
      pause = std::min<std::chrono::microseconds>(pause * 2, kLockLongestPause);
      if (tryLock()) break;
      if (errno != EWOULDBLOCK && errno != EINTR) break;
      if (std::chrono::steady_clock::now() >= deadline) break;
    }
    if (marked) setWaitingMark(fd_.get(), F_UNLCK);
  }
  bool held() const { return held_; }

 private:
  bool tryLock() {
    held_ = ::flock(fd_.get(), LOCK_EX | LOCK_NB) == 0;
    return held_;
  }

  Fd fd_;
  bool held_ = false;
};

bool isTempName(std::string_view name) {
  if (name.size() != kTempPrefix.size() + kTempSuffixLength || !name.starts_with(kTempPrefix)) return false;
  for (char c : name.substr(kTempPrefix.size())) {
    const bool alnum = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (!alnum) return false;
  }
  return true;
}

// Removes temporary files that writers killed mid-update left behind. Called only with the lock
// held: every writer that holds or held the lock has finished, so any such file is dead. (A writer
// that gave up waiting for the lock and went on unlocked may lose its update here; that writer
// already runs without the guarantee.)
void removeLeftoverTempFiles(const std::string &folder) {
  DIR *dir = ::opendir(folder.c_str());
  if (!dir) return;
  const int dirFd = ::dirfd(dir);
  while (const dirent *entry = ::readdir(dir)) {
    if (!isTempName(entry->d_name)) continue;
    struct stat info {};
    if (::fstatat(dirFd, entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(info.st_mode))
      ::unlinkat(dirFd, entry->d_name, 0);
  }
  ::closedir(dir);
}

// A new temporary file next to the real file, named as removeLeftoverTempFiles expects.
Fd makeTempFile(const std::string &folder, std::string &tempPath) {
  std::string pattern = folder + "/" + std::string(kTempPrefix) + std::string(kTempSuffixLength, 'X');
  const int fd = ::mkostemp(pattern.data(), O_CLOEXEC);
  if (fd >= 0) tempPath = pattern;
  return Fd(fd);
}

// Keeps the bytes of an unreadable file as "<file>.bak" before the update replaces it. Kept once:
// an existing .bak is never overwritten, so the first unreadable version (most likely the one that
// still holds the user's settings) survives later mishaps. A hard link keeps the bytes without
// copying them; where the file system has none, a copy is made under a temporary name and linked
// into place, so a .bak is never seen half-written.
void keepBackupOnce(const std::string &realFile, const std::string &folder) {
  const std::string backup = realFile + ".bak";
  if (::link(realFile.c_str(), backup.c_str()) == 0 || errno == EEXIST) return;

  const Fd source(::open(realFile.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  if (!source.valid()) return;
  std::string tempPath;
  Fd copy = makeTempFile(folder, tempPath);
  if (!copy.valid()) return;
  bool ok = true;
  char chunk[16384];
  for (;;) {
    const ssize_t got = ::read(source.get(), chunk, sizeof chunk);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) {
      ok = got == 0;
      break;
    }
    if (!writeAll(copy.get(), chunk, static_cast<size_t>(got))) {
      ok = false;
      break;
    }
  }
  ok = ok && fsyncRetrying(copy.get());
  ok = copy.close() && ok;
  if (ok) ::link(tempPath.c_str(), backup.c_str());
  ::unlink(tempPath.c_str());
}

struct XmlDeleter {
  void operator()(char *xml) const { plist_to_xml_free(xml); }
};

// The failure of the last system call, as a reason for people.
NotStoredReason reasonOfErrno() {
  switch (errno) {
    case ENOSPC:
    case EDQUOT:
      return NotStoredReason::DiskFull;
    case EROFS:
    case EACCES:
    case EPERM:
      return NotStoredReason::ReadOnly;
    default:
      return NotStoredReason::Failed;
  }
}

UpdateOutcome update(std::span<const KeyUpdate> changes) {
  for (const auto &change : changes)
    if (change.key.find('\0') != std::string::npos) return UpdateOutcome::notStored(NotStoredReason::Failed);
  const std::string path = GetAutoSetupFilePath();
  if (path.empty()) return UpdateOutcome::notStored(NotStoredReason::NoConfigHome);

  ensureConfigFolder(parentOf(path));
  const UpdateLock lock(path + ".lock");

  // The update goes to the file the path finally names; symbolic links on the way stay as they are.
  const auto realFile = realFileOf(path);
  if (!realFile) return UpdateOutcome::notStored(NotStoredReason::NotAFile);
  const std::string folder = parentOf(*realFile);
  if (lock.held()) removeLeftoverTempFiles(folder);

  struct stat existing {};
  const bool exists = ::stat(realFile->c_str(), &existing) == 0;
  if (!exists && errno != ENOENT) return UpdateOutcome::notStored(reasonOfErrno());

  UpdateOutcome outcome = UpdateOutcome::storedOk();
  std::optional<PlistDict> dict;
  if (exists) {
    // Something else in the file's place (a folder, a device) is left alone.
    if (!S_ISREG(existing.st_mode)) return UpdateOutcome::notStored(NotStoredReason::NotAFile);
    // A read-only file stays as it is: whoever made it so wants the settings kept.
    if (::faccessat(AT_FDCWD, realFile->c_str(), W_OK, AT_EACCESS) != 0)
      return UpdateOutcome::notStored(NotStoredReason::ReadOnly);
    // A file that cannot even be opened for reading is never replaced: its bytes could not be kept.
    if (::faccessat(AT_FDCWD, realFile->c_str(), R_OK, AT_EACCESS) != 0)
      return UpdateOutcome::notStored(NotStoredReason::ReadOnly);
    dict = readPlistDictionary(*realFile);
    // Unreadable (not a property list, not a dictionary, over a cap): replaced by a file holding
    // only the new keys, after its bytes are kept. An empty file has no bytes worth keeping.
    if (!dict && existing.st_size > 0) {
      keepBackupOnce(*realFile, folder);
      outcome.result = UpdateOutcome::Result::StoredReplacingUnreadable;
      outcome.backup = *realFile + ".bak";
    }
  }
  if (!dict) dict.emplace(plist_new_dict());

  for (const auto &change : changes) {
    if (change.value) {
      // libplist stores integers as 64 bits without sign; the two's complement of a negative value
      // is written back as a negative number.
      plist_dict_set_item(dict->raw(), change.key.c_str(),
                          plist_new_uint(static_cast<uint64_t>(static_cast<int64_t>(*change.value))));
    } else {
      plist_dict_remove_item(dict->raw(), change.key.c_str());
    }
  }

  char *rawXml = nullptr;
  uint32_t xmlLength = 0;
  plist_to_xml(dict->raw(), &rawXml, &xmlLength);
  const std::unique_ptr<char, XmlDeleter> xml(rawXml);
  if (!xml) return UpdateOutcome::notStored(NotStoredReason::Failed);
  // A file over the size cap would read as unreadable, and the next update would replace it: better
  // to lose this one update than every setting. (Only foreign content can come near the cap.)
  if (xmlLength > kMaxPlistBytes) return UpdateOutcome::notStored(NotStoredReason::TooLarge);

  std::string tempPath;
  Fd temp = makeTempFile(folder, tempPath);
  if (!temp.valid()) return UpdateOutcome::notStored(reasonOfErrno());
  if (exists) {
    ::fchmod(temp.get(), existing.st_mode & 07777);
    // Keeps the owner too when a privileged caller updates another user's file. An unprivileged
    // caller is refused, which is fine: the file then simply belongs to the one who wrote it.
    if (existing.st_uid != ::geteuid() || existing.st_gid != ::getegid()) {
      [[maybe_unused]] const int refused = ::fchown(temp.get(), existing.st_uid, existing.st_gid);
    }
  } else {
    ::fchmod(temp.get(), 0600);
  }
  bool ok = writeAll(temp.get(), xml.get(), xmlLength) && fsyncRetrying(temp.get());
  ok = temp.close() && ok;
  if (!ok || ::rename(tempPath.c_str(), realFile->c_str()) != 0) {
    const NotStoredReason why = reasonOfErrno();
    ::unlink(tempPath.c_str());
    return UpdateOutcome::notStored(why);
  }
  syncFolder(folder);
  return outcome;
}

}  // namespace

std::string GetAutoSetupFilePath() {
  std::string home;
  const char *xdg = std::getenv("XDG_CONFIG_HOME");
  if (xdg && xdg[0] == '/') {
    home = xdg;
  } else {
    const char *userHome = std::getenv("HOME");
    if (userHome && userHome[0] != '\0') {
      home = std::string(userHome) + "/.config";
    } else {
      long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
      std::vector<char> buffer(static_cast<size_t>(size > 0 ? size : 16384));
      passwd entry{};
      passwd *found = nullptr;
      while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE &&
             buffer.size() < (size_t{1} << 20))
        buffer.resize(buffer.size() * 2);
      if (!found || !found->pw_dir || found->pw_dir[0] == '\0') return {};
      home = std::string(found->pw_dir) + "/.config";
    }
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
