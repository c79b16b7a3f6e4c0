// The auto-setup file: its location, the read-merge-write update and its outcome, the files it must
// survive (crafted ones, other programs' values in any locale), its backups, leftovers and lock.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <filesystem>
#include <functional>
#include <limits>
#include <regex>
#include <sstream>

#include "store/auto_setup_file.h"
#include "store/plist_reader.h"
#include "support/binary_plist.h"
#include "support/crafted_files.h"
#include "support/outcome_text.h"
#include "support/process.h"
#include "support/settings_file.h"

namespace {

namespace fs = std::filesystem;
using namespace nvx::store;
using namespace nvx::test;

const std::string kFileName = kSettingsFileName;
const std::string kTempPrefix = "." + kFileName + ".";

mode_t modeOf(const std::string &path) {
  struct stat info {};
  EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
  return info.st_mode & 07777;
}

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
  auto *job = new std::function<void()>(work);
  const int started = pthread_create(
      &thread, &attributes,
      [](void *arg) -> void * {
        const std::unique_ptr<std::function<void()>> run(static_cast<std::function<void()> *>(arg));
        (*run)();
        return nullptr;
      },
      job);
  pthread_attr_destroy(&attributes);
  ASSERT_EQ(started, 0);
  pthread_join(thread, nullptr);
}

// --- location ------------------------------------------------------------------------------------

struct PathCase {
  const char *name;
  std::optional<std::string> xdgConfigHome;
  std::optional<std::string> home;
  std::string expectedFolder;  // empty: the password database's home + "/.config"
};

TEST(StoreFilePath, FollowsTheXdgRules) {
  const passwd *user = getpwuid(getuid());
  ASSERT_TRUE(user && user->pw_dir);
  const std::string databaseConfig = std::string(user->pw_dir) + "/.config";
  const PathCase cases[] = {
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

TEST(StoreUpdate, LoadingCreatesNothing) {
  ScratchDir dir;
  EnvGuard env;
  env.set("XDG_CONFIG_HOME", dir.file("config"));
  EXPECT_FALSE(LoadAutoSetupFile());
  EXPECT_FALSE(fs::exists(dir.file("config")));
}

// --- read-merge-write ----------------------------------------------------------------------------

TEST(StoreUpdate, OneUpdateSetsAndRemovesKeysTogether) {
  SettingsHome home;
  home.writeIntegers({{"Output0", 3}, {"MaxLevel", 1}});
  constexpr int32_t kMin = std::numeric_limits<int32_t>::min(), kMax = std::numeric_limits<int32_t>::max();
  const KeyUpdate changes[] = {{"PADMode", 2}, {"MaxLevel", 0}, {"Output0", std::nullopt}, {"min", kMin},
                               {"max", kMax},  {"PADMode", -1}, {"absent", std::nullopt}};
  EXPECT_EQ(outcomeText(UpdateAutoSetupFile(changes)), "stored");
  // As another reader of the file (libplist) sees it, and as the library reads it.
  EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"MaxLevel", 0}, {"PADMode", -1}, {"min", kMin}, {"max", kMax}}));
  const auto file = LoadAutoSetupFile();
  ASSERT_TRUE(file);
  EXPECT_EQ(file->keys(), (std::vector<std::string>{"MaxLevel", "PADMode", "min", "max"}));
  EXPECT_EQ(file->integer("min"), kMin);
  EXPECT_EQ(file->integer("PADMode"), -1);
  EXPECT_TRUE(temporaryFilesIn(home.home()).empty());
}

TEST(StoreUpdate, NewFilesArePrivateAndAnExistingFileKeepsItsMode) {
  const mode_t oldMask = umask(0);
  ScratchDir dir;
  EnvGuard env;
  const std::string config = dir.file("home/user/.config");
  env.set("XDG_CONFIG_HOME", config);
  EXPECT_EQ(set("MaxLevel", 3), "stored");
  EXPECT_EQ(modeOf(config), 0700u);
  EXPECT_EQ(modeOf(config + "/" + kFileName), 0600u);
  ASSERT_EQ(chmod((config + "/" + kFileName).c_str(), 0640), 0);
  EXPECT_EQ(set("MaxLevel", 2), "stored");
  EXPECT_EQ(modeOf(config + "/" + kFileName), 0640u);
  umask(oldMask);
}

// Keys of every kind another program may write, as XML text and in a binary file.
std::string foreignXml() {
  return xmlPlist(
      "<key>Real</key><real>1.75</real>\n<key>Third</key><real>0.3333</real>\n"
      "<key>Huge</key><integer>18446744073709551615</integer>\n<key>Negative</key><integer>-12</integer>\n"
      "<key>Infinite</key><real>-infinity</real>\n<key>NotANumber</key><real>nan</real>\n"
      "<key>Date</key><date>1999-12-31T23:59:59Z</date>\n<key>Data</key><data>AAH/</data>\n"
      "<key>Text</key><string>Gr\xC3\xBC\xC3\x9F" "e &lt;&amp;&gt; &#13;</string>\n<key>Flag</key><true/>\n"
      "<key>Nested</key><dict><key>list</key><array><real>3.25</real><dict/></array></dict>\n"
      "<key>MaxLevel</key><integer>1</integer>\n");
}

std::string foreignBinary() {
  BinaryPlistBuilder b;
  const uint64_t nested = b.dict({{b.string("list"), b.array({b.real(3.25), b.dict({})})}});
  return b.bytes(b.dict({{b.string("Real"), b.real(1.75)},
                         {b.string("Third"), b.real(0.3333)},
                         {b.string("Negative"), b.integer(-12)},
                         {b.string("Date"), b.date(-31622401)},
                         {b.string("Data"), b.data(std::string("\0\1\xFF", 3))},
                         {b.string("Text"), b.utf16(u"Gr\u00FC\u00DFe <&> \r")},
                         {b.string("Nested"), nested},
                         {b.string("MaxLevel"), b.integer(1)}}));
}

TEST(StoreUpdate, ForeignValuesSurviveUpdatesExactlyInAnyLocale) {
  const std::string locales[] = {"C", "de_DE.UTF-8"};  // the second writes 1,75 for 1.75
  for (const auto &locale : locales) {
    ASSERT_NE(std::setlocale(LC_ALL, locale.c_str()), nullptr) << locale << " is missing (scripts/bootstrap.sh makes it)";
    for (const std::string &bytes : {foreignXml(), foreignBinary()}) {
      SCOPED_TRACE(locale + (bytes.starts_with("bplist") ? ", binary file" : ", XML file"));
      SettingsHome home;
      home.writeRaw(bytes);
      auto expected = parsePlist(bytes);
      ASSERT_TRUE(expected);
      EXPECT_EQ(set("MaxLevel", 2), "stored");
      EXPECT_EQ(set("PADMode", 1), "stored");
      expected->as<PlistDictionary>()->set("MaxLevel", PlistValue::signedInteger(2));
      expected->as<PlistDictionary>()->set("PADMode", PlistValue::signedInteger(1));
      const std::string written = readFile(home.filePath());
      EXPECT_FALSE(written.starts_with("bplist")) << "rewritten as XML";
      EXPECT_EQ(parsePlist(written), expected);
      EXPECT_EQ(home.value("MaxLevel"), 2) << "libplist reads the file too";
    }
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
  EXPECT_EQ(readFile(backup), "damaged 4");
  EXPECT_EQ(readFile(backup + ".1"), "damaged 3");
  EXPECT_EQ(readFile(backup + ".2"), "damaged 2");
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

struct SymlinkCase {
  const char *name;
  bool relative;
  bool targetExists;
};

TEST(StoreUpdate, SymlinkedFileStaysALinkAndItsTargetIsUpdated) {
  const SymlinkCase cases[] = {
      {"absolute link", false, true}, {"relative link", true, true}, {"link to a missing file", false, false}};
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    SettingsHome home;
    const std::string dotfiles = home.dir().file("dotfiles");
    ASSERT_EQ(mkdir(dotfiles.c_str(), 0700), 0);
    const std::string target = dotfiles + "/mixer.plist";
    if (c.targetExists) home.dir().write("dotfiles/mixer.plist", integerPlistXml({{"Foreign", 5}}));
    const std::string linkText = c.relative ? "dotfiles/mixer.plist" : target;
    ASSERT_EQ(symlink(linkText.c_str(), home.filePath().c_str()), 0);

    EXPECT_EQ(set("MaxLevel", 2), "stored");

    ASSERT_TRUE(fs::is_symlink(home.filePath()));
    EXPECT_EQ(fs::read_symlink(home.filePath()).string(), linkText);
    const auto expected = c.targetExists ? std::map<std::string, int64_t>{{"Foreign", 5}, {"MaxLevel", 2}}
                                         : std::map<std::string, int64_t>{{"MaxLevel", 2}};
    EXPECT_EQ(home.integers(), expected);  // read through the link
    EXPECT_TRUE(temporaryFilesIn(dotfiles).empty());
  }
}

// --- leftovers and the lock ----------------------------------------------------------------------

TEST(StoreUpdate, NextUpdateRemovesTemporaryFilesOfKilledWriters) {
  SettingsHome home;
  home.writeIntegers({{"Output2", 1}});
  const std::string dead1 = home.dir().write(kTempPrefix + "Ab12Cd", "<?xml half written");
  const std::string dead2 = home.dir().write(kTempPrefix + "bak.zzzzzz", "");
  // Names that only look alike are someone else's.
  const std::string other1 = home.dir().write(kTempPrefix + "bak", "keep");
  const std::string other2 = home.dir().write(kTempPrefix + "Ab12Cd.x", "keep");
  const std::string other3 = home.dir().write(kFileName + ".Ab12Cd", "keep");

  EXPECT_EQ(set("MaxLevel", 1), "stored");

  EXPECT_FALSE(fs::exists(dead1));
  EXPECT_FALSE(fs::exists(dead2));
  for (const auto &kept : {other1, other2, other3}) EXPECT_EQ(readFile(kept), "keep") << kept;
  EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"Output2", 1}, {"MaxLevel", 1}}));
}

// A stuck writer (here: this test, holding the lock) or a broken lock file: the update is not made.
TEST(StoreUpdate, WithoutTheLockNothingIsWritten) {
  struct Case {
    const char *name;
    std::function<int(const std::string &lock)> breakLock;  // returns a descriptor to close after
    std::string outcome;
  };
  const Case cases[] = {
      {"held by a stuck writer",
       [](const std::string &lock) {
         const int fd = open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
         EXPECT_EQ(flock(fd, LOCK_EX), 0);
         return fd;
       },
       "not stored: lock not had"},
      {"a folder", [](const std::string &lock) { return mkdir(lock.c_str(), 0700) == 0 ? -1 : -2; },
       "not stored: lock file is not a file"},
      {"a FIFO", [](const std::string &lock) { return mkfifo(lock.c_str(), 0600) == 0 ? -1 : -2; },
       "not stored: lock file is not a file"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    SettingsHome home;
    EnvGuard env;
    env.set("MXRK7_STORE_LOCK_TIMEOUT_MS", "200");
    home.writeIntegers({{"MaxLevel", 1}});
    const std::string before = readFile(home.filePath());
    // A temporary file of the lock holder: without the lock, nobody may take it for a leftover.
    const std::string live = home.dir().write(kTempPrefix + "L1veW2", "being written");
    const int held = c.breakLock(home.filePath() + ".lock");
    ASSERT_NE(held, -2);
    EXPECT_EQ(set("MaxLevel", 2), c.outcome);
    EXPECT_EQ(readFile(home.filePath()), before);
    EXPECT_TRUE(fs::exists(live));
    if (held >= 0) close(held);
  }
}

// The update reaches the disk whole: the new bytes are written and synced before the temporary file
// is renamed over the file, and the folder is synced after the rename. Traced on the helper's update.
TEST(StoreUpdate, SyncsTheTemporaryFileBeforeTheRenameAndTheFolderAfter) {
  SettingsHome home;
  home.writeIntegers({{"Output0", 1}});
  ScratchDir trace;
  const char *asan = std::getenv("ASAN_OPTIONS");  // LeakSanitizer does not work under ptrace
  const auto run = nvx::test::run({"strace", "-f", "-qq", "-o", trace.file("log"), "-e",
                                   "trace=openat,write,fsync,fdatasync,rename,renameat,renameat2",
                                   NVX_CORE_HELPER, "set", "MaxLevel", "2"},
                                  {.env = {{"ASAN_OPTIONS", std::string(asan ? asan : "") + ":detect_leaks=0"}}});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  ASSERT_EQ(run.out, "stored\n");
  struct Call {
    std::string name, args;
    std::string result;
  };
  std::vector<Call> calls;
  const std::regex traced(R"(^\d+ +(\w+)\((.*)\) += (-?\d+))");
  std::istringstream log(readFile(trace.file("log")));
  for (std::string line; std::getline(log, line);)
    if (std::smatch m; std::regex_search(line, m, traced)) calls.push_back({m[1], m[2], m[3]});
  const auto first = [&](size_t from, const std::function<bool(const Call &)> &is) {
    for (size_t i = from; i < calls.size(); ++i)
      if (is(calls[i])) return i;
    return std::string::npos;
  };
  const std::string temp = "\"" + kTempPrefix;
  const size_t opened = first(0, [&](const Call &c) { return c.name == "openat" && c.args.find(temp) != std::string::npos; });
  ASSERT_NE(opened, std::string::npos) << "no temporary file was made";
  const std::string fd = calls[opened].result, folder = calls[opened].args.substr(0, calls[opened].args.find(','));
  const size_t written = first(opened, [&](const Call &c) { return c.name == "write" && c.args.starts_with(fd + ","); });
  const size_t synced = first(opened, [&](const Call &c) { return c.name.ends_with("sync") && c.args == fd; });
  const size_t renamed = first(opened, [&](const Call &c) {
    return c.name.starts_with("rename") && c.args.find(temp) != std::string::npos &&
           c.args.find(", \"com.norvane.MXR-K7autosetup.plist\"") != std::string::npos;
  });
  const size_t folderSynced =
      renamed == std::string::npos ? renamed : first(renamed, [&](const Call &c) { return c.name == "fsync" && c.args == folder; });
  const std::vector<size_t> order = {written, synced, renamed, folderSynced};
  EXPECT_TRUE(std::find(order.begin(), order.end(), std::string::npos) == order.end() &&
              std::is_sorted(order.begin(), order.end()))
      << "write(temp), fsync(temp), rename, fsync(folder) at calls " << ::testing::PrintToString(order) << " of:\n"
      << readFile(trace.file("log"));
}

}  // namespace
