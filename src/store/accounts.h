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

struct Group {
  std::string name;
  std::vector<std::string> members;  // listed as members (primary members are not listed)
};

std::optional<Group> groupOf(gid_t gid);

// Whether any account but `except` has `gid` as its primary group.
bool othersHavePrimaryGroup(gid_t gid, uid_t except);

}  // namespace nvx::store
