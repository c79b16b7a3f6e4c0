#include "store/update_place.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "store/file_paths.h"

namespace nvx::store {

namespace {

// Symbolic links followed before giving up, as the kernel does (ELOOP).
constexpr int kMaxLinkHops = 40;

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

std::string joined(const std::string &folder, const std::string &name) {
  return folder == "/" ? "/" + name : folder + "/" + name;
}

Obstacle obstacleOfErrno(const std::string &path) { return Obstacle{reasonOfErrno(errno), path}; }

// Judges the folder open at `fd`.
OrObstacle<TrustedFolder> judged(Fd fd, const std::string &path) {
  TrustedFolder folder;
  folder.fd = std::move(fd);
  folder.path = path;
  if (::fstat(folder.fd.get(), &folder.info) != 0) return obstacleOfErrno(path);
  folder.verdict = judgeFolder(folder.info, ::geteuid());
  if (folder.verdict.refused) return Obstacle{*folder.verdict.refused, path};
  return folder;
}

OrObstacle<TrustedFolder> openFolder(const std::string &path) {
  Fd fd(::open(path.c_str(), kOpenFolder));
  if (!fd.valid()) return obstacleOfErrno(path);
  return judged(std::move(fd), path);
}

bool giveTo(int fd, const FolderVerdict &verdict) {
  return !verdict.giveAway || ::fchown(fd, verdict.newFiles.uid, verdict.newFiles.gid) == 0;
}

// Follows `name` in `start` to what it finally names, link by link: each link must belong to the
// owner of its folder, and each folder a link leads to must pass the table. With `requireOwner`,
// a file at the end must belong to its folder's owner too.
OrObstacle<RealFile> resolve(const TrustedFolder &start, const std::string &name, bool requireOwner) {
  TrustedFolder folder{Fd(::fcntl(start.fd.get(), F_DUPFD_CLOEXEC, 0)), start.path, start.info, start.verdict};
  if (!folder.fd.valid()) return obstacleOfErrno(start.path);
  std::string current = name;
  for (int hop = 0; hop <= kMaxLinkHops; ++hop) {
    const std::string where = joined(folder.path, current);
    struct stat info {};
    if (::fstatat(folder.fd.get(), current.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
      if (errno == ENOENT) return RealFile{std::move(folder), current, std::nullopt};
      return obstacleOfErrno(where);
    }
    const bool link = S_ISLNK(info.st_mode);
    if ((link || requireOwner) && info.st_uid != folder.info.st_uid) return Obstacle{NotStoredReason::FileNotYours, where};
    if (!link) return RealFile{std::move(folder), current, info};

    std::vector<char> target(static_cast<size_t>(info.st_size > 0 ? info.st_size : 255) + 1);
    const ssize_t length = ::readlinkat(folder.fd.get(), current.c_str(), target.data(), target.size());
    if (length < 0 || static_cast<size_t>(length) >= target.size()) return obstacleOfErrno(where);
    const std::string next(target.data(), static_cast<size_t>(length));
    const std::string path = next.starts_with('/') ? next : joined(folder.path, next);
    auto nextFolder = openFolder(parentOf(path));
    if (auto *obstacle = std::get_if<Obstacle>(&nextFolder)) return *obstacle;
    folder = std::move(std::get<TrustedFolder>(nextFolder));
    current = baseNameOf(path);
  }
  return Obstacle{NotStoredReason::NotAFile, joined(start.path, name)};
}

}  // namespace

NotStoredReason reasonOfErrno(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return NotStoredReason::DiskFull;
    case EROFS:
    case EACCES:
    case EPERM:
      return NotStoredReason::ReadOnly;
    case ENOTDIR:
    case EISDIR:
    case ELOOP:
      return NotStoredReason::NotAFile;
    default:
      return NotStoredReason::Failed;
  }
}

OrObstacle<TrustedFolder> openConfigFolder(const std::string &filePath, bool create) {
  const std::string path = parentOf(filePath);
  Fd fd(::open(path.c_str(), kOpenFolder));
  if (fd.valid()) return judged(std::move(fd), path);
  if (errno != ENOENT) return obstacleOfErrno(path);

  // Missing: the nearest existing ancestor's row decides.
  std::vector<std::string> missing{path};
  std::string ancestor = parentOf(path);
  struct stat info {};
  while (ancestor != "/" && ancestor != "." && ::stat(ancestor.c_str(), &info) != 0 && errno == ENOENT) {
    missing.push_back(ancestor);
    ancestor = parentOf(ancestor);
  }
  auto base = openFolder(ancestor);
  if (!create || std::holds_alternative<Obstacle>(base)) return base;

  // Only the folder that will hold the file is judged; the ones above it are made on the way.
  TrustedFolder current = std::move(std::get<TrustedFolder>(base));
  const FolderVerdict verdict = current.verdict;
  for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
    const std::string name = baseNameOf(*it);
    const bool last = it + 1 == missing.rend();
    // The config folder is private (XDG); folders above it are made as `mkdir -p` makes them.
    const bool made = ::mkdirat(current.fd.get(), name.c_str(), last ? 0700 : 0777) == 0;
    if (!made && errno != EEXIST) return obstacleOfErrno(*it);
    Fd next(::openat(current.fd.get(), name.c_str(), kOpenFolder | O_NOFOLLOW));
    if (!next.valid()) return obstacleOfErrno(*it);
    if (made && !giveTo(next.get(), verdict)) {
      ::unlinkat(current.fd.get(), name.c_str(), AT_REMOVEDIR);
      return Obstacle{NotStoredReason::OwnerNotSet, *it};
    }
    if (last) return judged(std::move(next), *it);  // made by this update or, in a race, by another
    current.fd = std::move(next);
  }
  return obstacleOfErrno(path);  // not reached: `missing` holds the config folder at least
}

OrObstacle<RealFile> findRealFile(const TrustedFolder &config, const std::string &name) {
  auto found = resolve(config, name, true);
  if (auto *file = std::get_if<RealFile>(&found); file && file->existing && !S_ISREG(file->existing->st_mode))
    return Obstacle{NotStoredReason::NotAFile, joined(file->folder.path, file->name)};
  return found;
}

OrObstacle<Fd> openLockFile(const TrustedFolder &config, const std::string &name, bool create) {
  // A lock file of another owner (root's, from an older version run with sudo) still serves when
  // it may be read: the lock is taken on a read-only descriptor.
  auto found = resolve(config, name, false);
  if (auto *obstacle = std::get_if<Obstacle>(&found)) return *obstacle;
  const RealFile &lock = std::get<RealFile>(found);
  const std::string where = joined(lock.folder.path, lock.name);
  if (lock.existing && !S_ISREG(lock.existing->st_mode)) return Obstacle{NotStoredReason::LockNotAFile, where};
  if (!lock.existing && !create) return Fd();

  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  Fd fd;
  if (!lock.existing) {
    fd = Fd(::openat(lock.folder.fd.get(), lock.name.c_str(), kFlags | O_CREAT | O_EXCL, 0600));
    if (fd.valid() && !giveTo(fd.get(), lock.folder.verdict)) {
      ::unlinkat(lock.folder.fd.get(), lock.name.c_str(), 0);
      return Obstacle{NotStoredReason::OwnerNotSet, where};
    }
    if (!fd.valid() && errno != EEXIST) return obstacleOfErrno(where);
  }
  if (!fd.valid()) fd = Fd(::openat(lock.folder.fd.get(), lock.name.c_str(), kFlags));
  struct stat info {};
  if (!fd.valid() && errno == EACCES && lock.existing && lock.existing->st_uid != ::geteuid())
    return Obstacle{NotStoredReason::FileNotYours, where};
  if (!fd.valid() && errno != ELOOP) return obstacleOfErrno(where);
  if (!fd.valid() || ::fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode))
    return Obstacle{NotStoredReason::LockNotAFile, where};
  return fd;
}

}  // namespace nvx::store
