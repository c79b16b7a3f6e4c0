// The password and group databases, as far as the store needs them.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace nvx::store {

struct Account {
  std::string name;
  gid_t group;       // primary group
  std::string home;  // home folder
};

std::optional<Account> accountOf(uid_t uid);

// The user's home folder: $HOME when it is an absolute path, else the password database's entry of
// the real user; empty when neither tells. The one rule for the settings file's folder and for the
// programs' own folders (the demo settings of --virtual, the user's units).
std::string homeFolder();

struct Group {
  std::string name;
  std::vector<std::string> members;  // listed as members (primary members are not listed)
};

std::optional<Group> groupOf(gid_t gid);

// Whether any account but `except` has `gid` as its primary group.
bool othersHavePrimaryGroup(gid_t gid, uid_t except);

}  // namespace nvx::store
