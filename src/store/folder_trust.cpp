#include "store/folder_trust.h"

#include <unistd.h>

#include <algorithm>

#include "store/accounts.h"

namespace nvx::store {

bool isPrivateGroup(uid_t user, gid_t group) {
  const auto account = accountOf(user);
  if (!account || account->group != group) return false;
  const auto entry = groupOf(group);
  if (!entry || entry->name != account->name) return false;
  const bool othersListed = std::any_of(entry->members.begin(), entry->members.end(),
                                        [&](const std::string &member) { return member != account->name; });
  return !othersListed && !othersHavePrimaryGroup(group, user);
}

FolderVerdict judgeFolder(const struct stat &folder, uid_t caller) {
  FolderVerdict verdict;
  const uid_t owner = folder.st_uid;
  if (caller != 0 && owner != caller) {
    verdict.refused = NotStoredReason::FolderNotYours;
    return verdict;
  }
  // From here the folder is the caller's, or the caller is root writing for the folder's owner:
  // the owner's row applies either way.
  const bool othersWrite = (folder.st_mode & S_IWOTH) != 0;
  const bool groupWrites = (folder.st_mode & S_IWGRP) != 0;
  if (othersWrite || (groupWrites && !isPrivateGroup(owner, folder.st_gid))) {
    verdict.refused = NotStoredReason::FolderWritableByOthers;
    return verdict;
  }
  if (owner == caller) {
    verdict.newFiles = {caller, ::getegid()};
    return verdict;
  }
  // Root writing into user V's folder: what it makes there is V's.
  const auto account = accountOf(owner);
  verdict.newFiles = {owner, account ? account->group : folder.st_gid};
  verdict.giveAway = true;
  return verdict;
}

}  // namespace nvx::store
