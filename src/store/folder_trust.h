// Whose folder the settings file may be written into: the rule of docs/store.md, "Trust".
//
// | caller | owner of the folder | folder mode                      | write | new files owned by |
// | U      | U                   | not writable by others (*)       | yes   | U                  |
// | U      | anyone else         | any                              | no: FolderNotYours          |
// | U      | U                   | writable by others or a shared group | no: FolderWritableByOthers |
// | root   | root                | as for U                         | yes   | root               |
// | root   | V                   | as for V                         | yes   | V                  |
// (*) group-writable only when the group is U's own private group (isPrivateGroup).
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>

#include "store/durable_file.h"
#include "store/update_outcome.h"

namespace nvx::store {

struct FolderVerdict {
  std::optional<NotStoredReason> refused;  // nothing: the caller may write there
  Owner newFiles{};                        // who new files and folders in it belong to
  bool giveAway = false;                   // newFiles differs from the caller: chown what is made
};

// The row of the table for `folder` (its stat) and the effective user `caller`.
FolderVerdict judgeFolder(const struct stat &folder, uid_t caller);

// Whether `group` is `user`'s own private group: named as the user, the user's primary group, and
// no other account has it as primary group or lists it as a member.
bool isPrivateGroup(uid_t user, gid_t group);

}  // namespace nvx::store
