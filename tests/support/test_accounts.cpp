#include "support/test_accounts.h"

#include "support/process.h"

#include <grp.h>
#include <pwd.h>
#include <map>
#include <mutex>
#include <stdexcept>

namespace nvx::test {

namespace {

constexpr const char *kSharedGroup = "nvxtest-crew";

gid_t ensureSharedGroup() {
  run({"groupadd", "--force", kSharedGroup});  // succeeds when the group is there already
  const group *found = getgrnam(kSharedGroup);
  if (!found) throw std::runtime_error(std::string("cannot make the group ") + kSharedGroup);
  return found->gr_gid;
}

TestAccount ensureAccount(const std::string &name) {
  ensureSharedGroup();
  // A second process making the same account at the same time fails with "already exists"; either
  // way the account is there afterwards.
  if (!getpwnam(name.c_str()))
    run({"useradd", "--user-group", "--no-create-home", "--shell", "/usr/sbin/nologin", "--groups", kSharedGroup,
         name});
  const passwd *found = getpwnam(name.c_str());
  if (!found) throw std::runtime_error("cannot make the test account " + name + " (the tests make it as root)");
  return {name, found->pw_uid, found->pw_gid};
}

}  // namespace

const TestAccount &testAccount(Role role) {
  static std::mutex making;
  static std::map<Role, TestAccount> made;
  const std::lock_guard<std::mutex> lock(making);
  auto it = made.find(role);
  if (it == made.end())
    it = made.emplace(role, ensureAccount(role == Role::User ? "nvxtest-user" : "nvxtest-other")).first;
  return it->second;
}

gid_t sharedTestGroup() {
  testAccount(Role::User);
  return getgrnam(kSharedGroup)->gr_gid;
}

std::vector<std::string> runAs(const TestAccount &account) {
  return {"/usr/bin/setpriv", "--reuid=" + std::to_string(account.uid), "--regid=" + std::to_string(account.gid),
          "--init-groups", "--"};
}

}  // namespace nvx::test
