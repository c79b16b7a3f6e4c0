// Where an update of the auto-setup file may write, decided by the trust table (folder_trust.h):
// the config folder, which holds the lock file, and the folder and name of the real file (the same
// folder, unless the file is a symbolic link that its folder's owner made). Every step works on
// open folder descriptors, so a path that changes under the update cannot redirect it.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <variant>

#include "store/fd.h"
#include "store/folder_trust.h"
#include "store/update_outcome.h"

namespace nvx::store {

struct TrustedFolder {
  Fd fd;
  std::string path;
  struct stat info {};
  FolderVerdict verdict;
};

struct RealFile {
  TrustedFolder folder;
  std::string name;
  std::optional<struct stat> existing;  // nothing when the file is still to be made
};

using Obstacle = UpdateObstacle;

template <class T>
using OrObstacle = std::variant<T, Obstacle>;

// The config folder of `filePath`, judged for the effective user. With `create`, a missing folder
// is made (0700; missing parents as `mkdir -p` makes them) where the nearest existing ancestor's
// row allows it, and given to the folder owner that row names; without, the ancestor is judged and
// returned in its place.
OrObstacle<TrustedFolder> openConfigFolder(const std::string &filePath, bool create);

// Opens (with `create`, makes) the lock file `name` in the config folder. A symbolic link is
// followed only when the folder's owner made it and its target's folder passes the table; anything
// but a regular file is an obstacle (LockNotAFile). Without `create` a missing lock gives an
// invalid descriptor.
OrObstacle<Fd> openLockFile(const TrustedFolder &config, const std::string &name, bool create);

// Follows `name` in the config folder to the real file, link by link, each link owned by its
// folder's owner and each folder passing the table; the file, when it exists, must be a regular
// file of its folder's owner.
OrObstacle<RealFile> findRealFile(const TrustedFolder &config, const std::string &name);

// The failure of a system call, as a reason for people.
NotStoredReason reasonOfErrno(int error);

}  // namespace nvx::store
