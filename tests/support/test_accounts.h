// Unprivileged accounts that the tests make for themselves (as root, with useradd), so permission
// cases run as real users with private groups, never as "nobody" (whose group others share).
// Making them is idempotent and safe when several test processes do it at once.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace nvx::test {

struct TestAccount {
  std::string name;
  uid_t uid;
  gid_t gid;  // its own private group
};

enum class Role { User, Other };

// "nvxtest-user" and "nvxtest-other", both members of the shared group sharedTestGroup().
const TestAccount &testAccount(Role role);
gid_t sharedTestGroup();  // "nvxtest-crew"

// The command prefix that runs a program as `account` (setpriv, with its groups).
std::vector<std::string> runAs(const TestAccount &account);

}  // namespace nvx::test
