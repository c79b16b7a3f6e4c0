// The auto-setup file: its location, the read-merge-write update and its outcome, the files it must
// survive (crafted ones, other programs' values in any locale), its backups, leftovers and lock.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <filesystem>
#include <functional>
#include <limits>

#include "store/auto_setup_file.h"
#include "store/plist_reader.h"
#include "support/crafted_files.h"
#include "support/outcome_text.h"
#include "support/settings_file.h"

namespace {

namespace fs = std::filesystem;
using namespace nvx::store;
using namespace nvx::test;

const std::string kFileName = kSettingsFileName;
const std::string kTempPrefix = "." + kFileName + ".";

std::string set(const std::string &key, std::optional<int32_t> value) {
  const KeyUpdate change{key, value};
  return outcomeText(UpdateAutoSetupFile({&change, 1}));
}

// Runs `work` on a thread with a stack of `bytes`, as a program with small thread stacks would.
void onSmallStack(size_t bytes, const std::function<void()> &work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, bytes);
  pthread_t thread;
  const auto body = [](void *job) -> void * {
    (*static_cast<const std::function<void()> *>(job))();
    return nullptr;
  };
  const int started = pthread_create(&thread, &attributes, body, const_cast<std::function<void()> *>(&work));
  pthread_attr_destroy(&attributes);
  ASSERT_EQ(started, 0);
  pthread_join(thread, nullptr);
}

// --- location ------------------------------------------------------------------------------------

TEST(StoreFilePath, FollowsTheXdgRules) {
  const passwd *user = getpwuid(getuid());
  ASSERT_TRUE(user && user->pw_dir);
  const std::string databaseConfig = std::string(user->pw_dir) + "/.config";
  const struct {
    const char *name;
    std::optional<std::string> xdgConfigHome, home;
    std::string expectedFolder;
  } cases[] = {
      {"absolute XDG_CONFIG_HOME", "/srv/conf", "/home/u", "/srv/conf"},
      {"trailing slashes dropped", "/srv/conf//", "/home/u", "/srv/conf"},
      {"relative XDG_CONFIG_HOME ignored", "relative/conf", "/home/u", "/home/u/.config"},
      {"empty XDG_CONFIG_HOME ignored", "", "/home/u", "/home/u/.config"},
      {"no XDG_CONFIG_HOME", std::nullopt, "/home/u", "/home/u/.config"},
      {"no HOME either", std::nullopt, std::nullopt, databaseConfig},
      {"empty HOME", "relative", "", databaseConfig},
      {"relative HOME ignored", std::nullopt, "home/u", databaseConfig},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    EnvGuard env;
    env.set("XDG_CONFIG_HOME", c.xdgConfigHome);
    env.set("HOME", c.home);
    EXPECT_EQ(GetAutoSetupFilePath(), c.expectedFolder + "/" + kFileName);
  }
}

// --- read-merge-write ----------------------------------------------------------------------------

TEST(StoreUpdate, OneUpdateSetsAndRemovesKeysTogether) {
  SettingsHome home;
  home.writeIntegers({{"Output0", 3}, {"MaxLevel", 1}});
  constexpr int32_t kMin = std::numeric_limits<int32_t>::min(), kMax = std::numeric_limits<int32_t>::max();
  const KeyUpdate changes[] = {{"PADMode", 2}, {"MaxLevel", 0}, {"Output0", std::nullopt}, {"min", kMin},
                               {"max", kMax},  {"PADMode", -1}, {"absent", std::nullopt}};
  EXPECT_EQ(outcomeText(UpdateAutoSetupFile(changes)), "stored");
  // The values as another reader of the file (libplist) sees them; the keys in their order.
  EXPECT_EQ(home.integers(),
            (std::map<std::string, int64_t>{{"MaxLevel", 0}, {"PADMode", -1}, {"min", kMin}, {"max", kMax}}));
  const auto file = LoadAutoSetupFile();
  ASSERT_TRUE(file);
  EXPECT_EQ(file->keys(), (std::vector<std::string>{"MaxLevel", "PADMode", "min", "max"}));
  EXPECT_TRUE(temporaryFilesIn(home.home()).empty());
}

// New files' and folders' modes and owners are the trust table's business.
TEST(StoreUpdate, ReadsMakeNothingAndAnExistingFileKeepsItsMode) {
  ScratchDir dir;
  EnvGuard env;
  const std::string config = dir.file("home/user/.config"), file = config + "/" + kFileName;
  env.set("XDG_CONFIG_HOME", config);
  EXPECT_FALSE(LoadAutoSetupFile());
  EXPECT_FALSE(fs::exists(config)) << "a read made the folder";
  EXPECT_EQ(set("MaxLevel", 3), "stored");
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  EXPECT_EQ(set("MaxLevel", 2), "stored");
  struct stat info {};
  ASSERT_EQ(stat(file.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0640u);
}

// Values of every kind another program may write survive an update exactly (reals, dates and integers at
// their edges included), also where the locale writes 1,75 for 1.75.
TEST(StoreUpdate, ForeignValuesSurviveUpdatesExactlyInAnyLocale) {
  const std::string foreign = xmlPlist(
      "<key>Real</key><real>1.75</real>\n<key>Sum</key><real>0.30000000000000004</real>\n"
      "<key>Huge</key><integer>18446744073709551615</integer>\n"
      "<key>Least</key><integer>-9223372036854775808</integer>\n<key>Tiny</key><real>5e-324</real>\n"
      "<key>Zero</key><real>-0</real>\n<key>Old</key><date>0001-01-01T00:00:00Z</date>\n"
      "<key>Infinite</key><real>-infinity</real>\n<key>NotANumber</key><real>nan</real>\n"
      "<key>Date</key><date>1999-12-31T23:59:59Z</date>\n<key>Data</key><data>AAH/</data>\n"
      "<key>Text</key><string>Gr\xC3\xBC\xC3\x9F" "e &lt;&amp;&gt; &#13;</string>\n<key>Flag</key><true/>\n"
      "<key>Nested</key><dict><key>list</key><array><real>3.25</real><dict/></array></dict>\n"
      "<key>MaxLevel</key><integer>1</integer>\n");
  for (const char *locale : {"C", "de_DE.UTF-8"}) {
    ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale << " is missing (scripts/bootstrap.sh makes it)";
    SCOPED_TRACE(locale);
    SettingsHome home;
    home.writeRaw(foreign);
    auto expected = parsePlist(foreign);
    ASSERT_TRUE(expected);
    EXPECT_EQ(set("MaxLevel", 2), "stored");
    EXPECT_EQ(set("PADMode", 1), "stored");
    expected->as<PlistDictionary>()->set("MaxLevel", PlistValue::signedInteger(2));
    expected->as<PlistDictionary>()->set("PADMode", PlistValue::signedInteger(1));
    EXPECT_EQ(parsePlist(readFile(home.filePath())), expected);
    EXPECT_EQ(home.value("MaxLevel"), 2) << "libplist reads the file too";
  }
  std::setlocale(LC_ALL, "C");
}

// Every crafted file, read and updated on a thread with a 256 KiB stack.
TEST(StoreUpdate, CraftedFilesNeitherCrashNorLeakTheirContent) {
  for (const auto &crafted : craftedFiles()) {
    SCOPED_TRACE(crafted.name);
    SettingsHome home;
    home.writeRaw(crafted.bytes);
    std::optional<PlistDict> loaded;
    std::string outcome;
    onSmallStack(256 * 1024, [&] {
      loaded = LoadAutoSetupFile();
      outcome = set("MaxLevel", 3);
    });
    EXPECT_EQ(loaded.has_value(), crafted.readable);
    EXPECT_EQ(loaded ? loaded->integer("PADMode") : std::nullopt, crafted.padMode);
    if (!crafted.readable) {
      EXPECT_EQ(outcome, "replaced");
      EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"MaxLevel", 3}}));
      EXPECT_TRUE(readFile(home.filePath() + ".bak") == crafted.bytes) << "the backup lost the file's bytes";
    } else if (!crafted.rewritable) {
      EXPECT_EQ(outcome, "not stored: holds values this library cannot rewrite");
      EXPECT_TRUE(readFile(home.filePath()) == crafted.bytes) << "the file changed";
    } else {
      EXPECT_EQ(outcome, "stored");
      const auto after = LoadAutoSetupFile();
      EXPECT_TRUE(after && after->integer("MaxLevel") == 3);
    }
  }
}

TEST(StoreUpdate, BackupsOfUnreadableFilesNeverOverwriteOneAnother) {
  SettingsHome home;
  const std::string backup = home.filePath() + ".bak";
  for (int i = 1; i <= 4; ++i) {
    home.writeRaw("damaged " + std::to_string(i));
    const KeyUpdate change{"MaxLevel", i};
    const auto outcome = UpdateAutoSetupFile({&change, 1});
    EXPECT_EQ(outcomeText(outcome), "replaced");
    EXPECT_EQ(outcome.backup, backup);
  }
  for (const auto &[name, kept] : {std::pair{"", "damaged 4"}, {".1", "damaged 3"}, {".2", "damaged 2"}})
    EXPECT_EQ(readFile(backup + name), kept);
  EXPECT_FALSE(fs::exists(backup + ".3"));
  // An empty file holds nothing worth keeping.
  home.writeRaw("");
  EXPECT_EQ(set("MaxLevel", 1), "stored");
  EXPECT_EQ(readFile(backup), "damaged 4");
  EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"MaxLevel", 1}}));
}

TEST(StoreUpdate, SomethingElseInTheFilesPlaceIsLeftAlone) {
  for (const bool fifo : {false, true}) {
    SCOPED_TRACE(fifo ? "a FIFO" : "a folder");
    SettingsHome home;
    if (fifo) ASSERT_EQ(mkfifo(home.filePath().c_str(), 0600), 0);
    else fs::create_directories(home.filePath() + "/inside");
    EXPECT_EQ(set("MaxLevel", 1), "not stored: not a regular file");  // must not block on the FIFO
    EXPECT_FALSE(LoadAutoSetupFile());
    EXPECT_TRUE(fifo ? fs::is_fifo(home.filePath()) : fs::is_directory(home.filePath() + "/inside"));
    EXPECT_TRUE(temporaryFilesIn(home.home()).empty());
  }
}

// --- leftovers and the lock ----------------------------------------------------------------------

TEST(StoreUpdate, NextUpdateRemovesTemporaryFilesOfKilledWriters) {
  SettingsHome home;
  home.writeIntegers({{"Output2", 1}});
  const std::string dead[] = {home.dir().write(kTempPrefix + "Ab12Cd", "<?xml half written"),
                              home.dir().write(kTempPrefix + "bak.zzzzzz", "")};
  // Names that only look alike are someone else's.
  const std::string others[] = {home.dir().write(kTempPrefix + "bak", "keep"),
                                home.dir().write(kTempPrefix + "Ab12Cd.x", "keep"),
                                home.dir().write(kFileName + ".Ab12Cd", "keep")};
  EXPECT_EQ(set("MaxLevel", 1), "stored");
  for (const auto &gone : dead) EXPECT_FALSE(fs::exists(gone)) << gone;
  for (const auto &kept : others) EXPECT_EQ(readFile(kept), "keep") << kept;
  EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"Output2", 1}, {"MaxLevel", 1}}));
}

// A stuck writer (here: this test, holding the lock) or a broken lock file: the update is not made.
TEST(StoreUpdate, WithoutTheLockNothingIsWritten) {
  for (const std::string kind : {"held by a stuck writer", "a folder", "a FIFO"}) {
    SCOPED_TRACE(kind);
    SettingsHome home;
    EnvGuard env;
    env.set("MXRK7_STORE_LOCK_TIMEOUT_MS", "200");
    home.writeIntegers({{"MaxLevel", 1}});
    const std::string before = readFile(home.filePath()), lock = home.filePath() + ".lock";
    // A temporary file of the lock holder: without the lock, nobody may take it for a leftover.
    const std::string live = home.dir().write(kTempPrefix + "L1veW2", "being written");
    const bool stuck = kind == "held by a stuck writer";
    const int held = stuck ? open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600) : -1;
    if (stuck) ASSERT_EQ(flock(held, LOCK_EX), 0);
    else ASSERT_EQ(kind == "a folder" ? mkdir(lock.c_str(), 0700) : mkfifo(lock.c_str(), 0600), 0);
    EXPECT_EQ(set("MaxLevel", 2), stuck ? "not stored: lock not had" : "not stored: lock file is not a file");
    EXPECT_EQ(readFile(home.filePath()), before);
    EXPECT_TRUE(fs::exists(live));
    if (stuck) close(held);
  }
}

}  // namespace
