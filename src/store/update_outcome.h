// What one update of the auto-setup file did. The exported setters ignore it (their results never
// depend on the file); the tool and the setup application report it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace nvx::store {

// Why an update did not reach the file.
enum class NotStoredReason : uint8_t {
  NoConfigHome,            // neither XDG_CONFIG_HOME, HOME nor the password database names a home
  FolderNotYours,          // the folder holding the file belongs to another user
  FolderWritableByOthers,  // others (or a shared group) may write into that folder
  FileNotYours,            // the file, or a link in the config folder, belongs to another user
  LockNotHad,              // another writer held the lock for longer than the bound
  LockNotAFile,            // the lock file is not a regular file
  NotAFile,                // something other than a regular file stands in the file's place
  ReadOnly,                // the file, its folder or the file system may not be written
  DiskFull,                // no space left (or quota exceeded)
  ForeignContent,          // the file holds values that a rewrite would change (binary-only types)
  OwnerNotSet,             // a file made for another user could not be given to that user
  TooLarge,                // the new file would exceed the size cap
  Failed,                  // any other failure (an I/O error, a failed allocation)
};

// A short text for people: "folder not yours", "lock not had", ...
const char *reasonText(NotStoredReason reason);

struct UpdateOutcome {
  enum class Result : uint8_t {
    Stored,                     // the file holds the change
    StoredReplacingUnreadable,  // stored, but the file was unreadable: its bytes were kept as `backup`
                                // and whatever else it held is gone
    NotStored,                  // the file is as it was; `reason` says why
  };
  Result result = Result::NotStored;
  std::optional<NotStoredReason> reason;
  std::string backup;  // where an unreadable file's bytes were kept (StoredReplacingUnreadable)

  bool stored() const { return result != Result::NotStored; }

  static UpdateOutcome storedOk() { return {Result::Stored, std::nullopt, {}}; }
  static UpdateOutcome notStored(NotStoredReason why) { return {Result::NotStored, why, {}}; }
};

// Why an update would not be made now, and the path it is about (a folder, the file, a link or the
// lock file; empty when there is no path).
struct UpdateObstacle {
  NotStoredReason reason;
  std::string path;
};

}  // namespace nvx::store
