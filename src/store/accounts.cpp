#include "store/accounts.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <mutex>

namespace nvx::store {

namespace {

constexpr size_t kLargestEntry = size_t{1} << 20;

// Calls a reentrant lookup (getpwuid_r, getgrgid_r) with a buffer that grows while it is too small.
template <class Entry, class Lookup>
bool lookUp(Entry &entry, std::vector<char> &buffer, Lookup &&lookup) {
  const long hint = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  buffer.resize(hint > 0 ? static_cast<size_t>(hint) : 16384);
  Entry *found = nullptr;
  int error = 0;
  while ((error = lookup(&entry, buffer.data(), buffer.size(), &found)) == ERANGE && buffer.size() < kLargestEntry)
    buffer.resize(buffer.size() * 2);
  return error == 0 && found;
}

}  // namespace

std::optional<Account> accountOf(uid_t uid) {
  passwd entry{};
  std::vector<char> buffer;
  if (!lookUp(entry, buffer, [uid](passwd *e, char *b, size_t n, passwd **f) { return ::getpwuid_r(uid, e, b, n, f); }))
    return std::nullopt;
  return Account{entry.pw_name ? entry.pw_name : "", entry.pw_gid, entry.pw_dir ? entry.pw_dir : ""};
}

std::string homeFolder() {
  if (const char *home = std::getenv("HOME"); home && home[0] == '/') return home;
  const auto account = accountOf(::getuid());
  return account ? account->home : std::string();
}

std::optional<Group> groupOf(gid_t gid) {
  group entry{};
  std::vector<char> buffer;
  if (!lookUp(entry, buffer, [gid](group *e, char *b, size_t n, group **f) { return ::getgrgid_r(gid, e, b, n, f); }))
    return std::nullopt;
  Group found{entry.gr_name ? entry.gr_name : "", {}};
  for (char **member = entry.gr_mem; member && *member; ++member) found.members.emplace_back(*member);
  return found;
}

bool othersHavePrimaryGroup(gid_t gid, uid_t except) {
  // The database's iteration state is global to the process: one walk at a time in this library.
  static std::mutex walking;
  const std::lock_guard<std::mutex> lock(walking);
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd *found = nullptr;
  bool shared = false;
  ::setpwent();
  for (;;) {
    const int error = ::getpwent_r(&entry, buffer.data(), buffer.size(), &found);
    if (error == ERANGE && buffer.size() < kLargestEntry) {
      buffer.resize(buffer.size() * 2);
      continue;
    }
    if (error != 0 || !found) break;
    if (entry.pw_gid == gid && entry.pw_uid != except) {
      shared = true;
      break;
    }
  }
  ::endpwent();
  return shared;
}

}  // namespace nvx::store
