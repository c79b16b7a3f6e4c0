// The trust table of docs/store.md, row by row: an update run as an unprivileged user the tests make
// for themselves, or as root with a user's folder, in folders, files and links set up as another
// user (or an attacker) would leave them. Needs root, as CI has.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <filesystem>
#include <functional>

#include "store/plist_file.h"
#include "support/process.h"
#include "support/settings_file.h"

namespace {

namespace fs = std::filesystem;
using namespace nvx::test;

enum class Caller { User, Root, RootWithoutTheUsersGroup };

// The folders of one row: `base` (open to all), the config home, and the accounts involved.
struct Place {
  ScratchDir base;
  std::string config = base.file("cfg");
  const TestAccount &user = testAccount(Role::User);
  const TestAccount &other = testAccount(Role::Other);

  std::string file() const { return config + "/" + kSettingsFileName; }
  std::string lock() const { return file() + ".lock"; }
  gid_t groupOf(uid_t uid) const { return uid == 0 ? 0 : uid == user.uid ? user.gid : other.gid; }

  void folder(const std::string &path, mode_t mode, uid_t uid, gid_t gid) const {
    ASSERT_EQ(mkdir(path.c_str(), mode), 0) << path;
    ASSERT_EQ(chown(path.c_str(), uid, gid), 0);
    ASSERT_EQ(chmod(path.c_str(), mode), 0);  // after the owner: a change of owner clears set-id bits
  }
  void ownFolder(mode_t mode) const { folder(config, mode, user.uid, user.gid); }
  void regularFile(const std::string &path, uid_t uid, mode_t mode = 0600) const {
    base.write(fs::relative(path, base.path()), integerPlistXml({{"MaxLevel", 1}}));
    ASSERT_EQ(chown(path.c_str(), uid, groupOf(uid)), 0);
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
  }
  // The user's own folder (0700) holding a file of `uid` at `path`.
  void ownFolderHolding(const std::string &path, uid_t uid, mode_t mode = 0600) const {
    ownFolder(0700);
    regularFile(path, uid, mode);
  }
  void link(const std::string &path, const std::string &target, uid_t uid) const {
    ASSERT_EQ(symlink(target.c_str(), path.c_str()), 0);
    ASSERT_EQ(lchown(path.c_str(), uid, groupOf(uid)), 0);
  }
};

struct Owned {
  uid_t uid = static_cast<uid_t>(-1);
  gid_t gid = static_cast<gid_t>(-1);
  mode_t mode = 0;
  bool operator==(const Owned &) const = default;
};

// The owner and mode of `path` itself; nobody's when it is missing.
Owned ownerOf(const std::string &path) {
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0) return {};
  return {info.st_uid, info.st_gid, info.st_mode & 07777};
}

// What the file holds (through a link), nothing when it is missing.
std::optional<std::string> contentOf(const std::string &path) {
  return fs::exists(path) ? std::optional(readFile(path)) : std::nullopt;
}

struct TrustRow {
  const char *name;
  Caller caller;
  std::function<void(Place &)> prepare;  // sets the folders up; may point XDG_CONFIG_HOME elsewhere
  std::string outcome;                   // as the helper prints it
  std::function<void(const Place &)> check = [](const Place &) {};  // beyond what every row checks
};

void PrintTo(const TrustRow &row, std::ostream *os) { *os << row.name; }

const std::vector<TrustRow> &rows() {
  static const std::vector<TrustRow> all = {
      {"own folder", Caller::User, [](Place &p) { p.ownFolder(0700); }, "stored"},
      {"own folder, writable by the user's private group", Caller::User, [](Place &p) { p.ownFolder(0770); }, "stored"},
      {"own folder, writable by a shared group", Caller::User,
       [](Place &p) {
         p.ownFolder(0770);
         ASSERT_EQ(chown(p.config.c_str(), p.user.uid, sharedTestGroup()), 0);
       },
       "not stored: folder writable by others"},
      {"own folder, writable by all", Caller::User, [](Place &p) { p.ownFolder(0777); },
       "not stored: folder writable by others"},
      {"another user's folder, writable by all", Caller::User,
       [](Place &p) { p.folder(p.config, 0777, p.other.uid, p.other.gid); }, "not stored: folder not yours"},
      {"a shared sticky folder where another user planted the lock as a link", Caller::User,
       [](Place &p) {
         p.folder(p.config, 01777, 0, 0);
         p.link(p.lock(), p.base.file("planted"), p.other.uid);
       },
       "not stored: folder not yours", [](const Place &p) { EXPECT_FALSE(fs::exists(p.base.file("planted"))); }},
      {"a missing folder in the user's own", Caller::User,
       [](Place &p) {
         p.folder(p.base.file("home"), 0755, p.user.uid, p.user.gid);
         p.config = p.base.file("home/.config");
       },
       "stored", [](const Place &p) { EXPECT_EQ(ownerOf(p.config), (Owned{p.user.uid, p.user.gid, 0700})); }},
      {"a missing folder in a shared sticky folder", Caller::User,
       [](Place &p) {
         p.folder(p.base.file("tmp"), 01777, 0, 0);
         p.config = p.base.file("tmp/cfg");
       },
       "not stored: folder not yours", [](const Place &p) { EXPECT_FALSE(fs::exists(p.config)); }},
      {"another user's file in the user's folder", Caller::User,
       [](Place &p) { p.ownFolderHolding(p.file(), p.other.uid, 0666); }, "not stored: file not yours"},
      {"another user's link in the user's folder", Caller::User,
       [](Place &p) {
         p.ownFolder(0700);
         p.regularFile(p.base.file("victim"), p.user.uid);
         p.link(p.file(), p.base.file("victim"), p.other.uid);
       },
       "not stored: file not yours"},
      {"another user's lock link in the user's folder", Caller::User,
       [](Place &p) {
         p.ownFolder(0700);
         p.link(p.lock(), p.base.file("planted"), p.other.uid);
       },
       "not stored: file not yours", [](const Place &p) { EXPECT_FALSE(fs::exists(p.base.file("planted"))); }},
      {"own relative link into an own folder", Caller::User,
       [](Place &p) {
         p.ownFolder(0700);
         p.folder(p.base.file("dots"), 0700, p.user.uid, p.user.gid);
         p.regularFile(p.base.file("dots/mixer.plist"), p.user.uid);
         p.link(p.file(), "../dots/mixer.plist", p.user.uid);
       },
       "stored", [](const Place &p) { EXPECT_EQ(fs::read_symlink(p.file()), "../dots/mixer.plist"); }},
      {"own link to a missing file in an own folder", Caller::User,
       [](Place &p) {
         p.ownFolder(0700);
         p.folder(p.base.file("dots"), 0700, p.user.uid, p.user.gid);
         p.link(p.file(), p.base.file("dots/mixer.plist"), p.user.uid);
       },
       "stored", [](const Place &p) { EXPECT_TRUE(fs::is_symlink(p.file())); }},
      {"own link into another user's folder", Caller::User,
       [](Place &p) {
         p.ownFolder(0700);
         p.folder(p.base.file("dots"), 0777, p.other.uid, p.other.gid);
         p.regularFile(p.base.file("dots/mixer.plist"), p.other.uid, 0666);
         p.link(p.file(), p.base.file("dots/mixer.plist"), p.user.uid);
       },
       "not stored: folder not yours"},
      {"a read-only file", Caller::User, [](Place &p) { p.ownFolderHolding(p.file(), p.user.uid, 0400); },
       "not stored: read-only"},
      {"own folder without write permission", Caller::User, [](Place &p) { p.ownFolder(0500); },
       "not stored: read-only", [](const Place &p) { EXPECT_FALSE(fs::exists(p.lock())); }},
      {"root, its own folder", Caller::Root, [](Place &p) { p.folder(p.config, 0700, 0, 0); }, "stored"},
      {"root, a user's folder", Caller::Root, [](Place &p) { p.ownFolder(0700); }, "stored"},
      {"root, a user's home without its config folder", Caller::Root,
       [](Place &p) {
         p.folder(p.base.file("home"), 0755, p.user.uid, p.user.gid);
         p.config = p.base.file("home/.config/mixer");
       },
       "stored",
       [](const Place &p) {
         EXPECT_EQ(ownerOf(p.base.file("home/.config")).uid, p.user.uid);
         EXPECT_EQ(ownerOf(p.config), (Owned{p.user.uid, p.user.gid, 0700}));
       }},
      {"root, a user's folder holding a file of root's", Caller::Root,
       [](Place &p) { p.ownFolderHolding(p.file(), 0); },
       "not stored: file not yours"},
      {"root, a user's folder, the user's group not at hand", Caller::RootWithoutTheUsersGroup,
       [](Place &p) { p.folder(p.config, 0700, p.user.uid, 0); }, "not stored: owner could not be set",
       [](const Place &p) { EXPECT_FALSE(fs::exists(p.lock())); }},
  };
  return all;
}

// The helper's update as the row's caller. Root without the user's group: in a user namespace where
// root is root and the user is the user, but the user's group has no id, so giving a new file to
// the user fails, as on a root-squashed network file system.
std::string updateAs(Caller caller, const TestAccount &user) {
  ProcessOptions options;
  if (caller == Caller::User) options.asUser = &user;
  if (caller == Caller::RootWithoutTheUsersGroup) options.namespaceUser = user.uid;
  const auto run = nvx::test::run({NVX_CORE_HELPER, "set", "MaxLevel", "2"}, options);
  EXPECT_EQ(run.exitCode, 0) << run.transcript();
  return run.out.substr(0, run.out.find('\n'));
}

class StoreTrust : public ::testing::TestWithParam<TrustRow> {};

// Every row also checks: a refused update leaves the file (or a link's target) as it was; a stored
// one leaves the new value in a file of mode 0600 given, as its lock file, to the folder's owner, and
// no temporary file.
TEST_P(StoreTrust, UpdatesFollowTheTable) {
  ASSERT_EQ(geteuid(), 0u) << "the trust table's rows need root to set up other users' files";
  Place place;
  place.base.letEveryoneIn();
  GetParam().prepare(place);
  if (HasFatalFailure()) return;
  EnvGuard env;
  env.set("XDG_CONFIG_HOME", place.config);
  const auto before = contentOf(place.file());
  const std::string outcome = updateAs(GetParam().caller, place.user);
  EXPECT_EQ(outcome, GetParam().outcome);
  if (outcome != "stored") {
    EXPECT_EQ(contentOf(place.file()), before) << "a refused update changed the file";
  } else {
    const std::string real = fs::canonical(place.file());
    const auto dict = nvx::store::readPlistDictionary(real);
    EXPECT_TRUE(dict && dict->integer("MaxLevel") == 2);
    const Owned folder = ownerOf(place.config), expected{folder.uid, folder.gid, 0600};
    EXPECT_EQ(ownerOf(real), expected);
    EXPECT_EQ(ownerOf(place.lock()), expected);
    EXPECT_EQ(temporaryFilesIn(fs::path(real).parent_path()), std::vector<std::string>{});
  }
  GetParam().check(place);
}

INSTANTIATE_TEST_SUITE_P(, StoreTrust, ::testing::ValuesIn(rows()), [](const auto &test) {
  std::string name;
  for (const char c : std::string(test.param.name)) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return name;
});

}  // namespace
