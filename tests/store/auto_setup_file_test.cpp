// The auto-setup file: its location, the read-merge-write update, its safety nets (lock, leftover
// temporary files, backup of unreadable files) and its behaviour without permissions.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <limits>
#include <thread>

#include "plist_builders.h"
#include "store/auto_setup_file.h"
#include "support/settings_file.h"

extern char **environ;

namespace {

namespace fs = std::filesystem;
using nvx::store::GetAutoSetupFilePath;
using nvx::store::LoadAutoSetupFile;
using nvx::store::StoreAutoSetupValue;
using namespace nvx::test;

constexpr const char *kFileName = "com.norvane.MXR-K7autosetup.plist";
constexpr const char *kTempPrefix = ".com.norvane.MXR-K7autosetup.plist.";
constexpr uid_t kNobody = 65534;

std::vector<std::string> tempFilesIn(const std::string &folder) {
  std::vector<std::string> found;
  for (const auto &entry : fs::directory_iterator(folder))
    if (entry.path().filename().string().starts_with(kTempPrefix)) found.push_back(entry.path().filename());
  return found;
}

mode_t modeOf(const std::string &path) {
  struct stat info {};
  EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
  return info.st_mode & 07777;
}

// Sets the umask for one test, so that modes are seen as the library sets them.
class UmaskGuard {
 public:
  explicit UmaskGuard(mode_t mask) : old_(umask(mask)) {}
  ~UmaskGuard() { umask(old_); }

 private:
  mode_t old_;
};

// Parsed root dictionary of a file, compared by value in the tests.
struct ParsedFile {
  explicit ParsedFile(const std::string &path) {
    const std::string bytes = readFile(path);
    plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
  }
  ~ParsedFile() {
    if (root) plist_free(root);
  }
  ParsedFile(const ParsedFile &) = delete;
  ParsedFile &operator=(const ParsedFile &) = delete;
  plist_t root = nullptr;
};

// --- other processes -----------------------------------------------------------------------------

struct ProbeResult {
  int status = -1;  // exit status, or -1 when the process did not exit normally
  std::string output;
};

pid_t spawn(const std::vector<std::string> &args, const std::string &outputFile) {
  std::vector<char *> argv;
  for (const auto &a : args) argv.push_back(const_cast<char *>(a.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (!outputFile.empty())
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  pid_t pid = -1;
  const int rc = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  EXPECT_EQ(rc, 0) << "cannot start " << args[0];
  return rc == 0 ? pid : -1;
}

int waitFor(pid_t pid) {
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) != pid) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Runs the probe program; as an unprivileged user when the tests run as root (root ignores file
// permissions). The output file is opened before the user changes, in a folder of the test's own.
ProbeResult runProbe(const std::vector<std::string> &probeArgs, bool unprivileged = false) {
  std::vector<std::string> args;
  if (unprivileged && geteuid() == 0)
    args = {"/usr/bin/setpriv", "--reuid=" + std::to_string(kNobody), "--regid=" + std::to_string(kNobody),
            "--clear-groups"};
  args.push_back(NVX_STORE_PROBE);
  args.insert(args.end(), probeArgs.begin(), probeArgs.end());
  ScratchDir outputDir;
  const std::string output = outputDir.file("stdout");
  ProbeResult result;
  result.status = waitFor(spawn(args, output));
  result.output = readFile(output);
  return result;
}

// Hands a path to the user the unprivileged probe runs as (only needed when the tests run as root).
void giveToProbeUser(const std::string &path) {
  if (geteuid() == 0) {
    ASSERT_EQ(lchown(path.c_str(), kNobody, kNobody), 0) << path;
  }
}

// --- location ------------------------------------------------------------------------------------

struct PathCase {
  const char *name;
  std::optional<std::string> xdgConfigHome;
  std::optional<std::string> home;
  std::string expectedFolder;  // empty: the password database's home + "/.config"
};

TEST(AutoSetupFilePath, FollowsTheXdgRules) {
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
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    EnvGuard env;
    env.set("XDG_CONFIG_HOME", c.xdgConfigHome);
    env.set("HOME", c.home);
    EXPECT_EQ(GetAutoSetupFilePath(), c.expectedFolder + "/" + kFileName);
  }
}

TEST(AutoSetupFile, LoadingCreatesNothing) {
  ScratchDir dir;
  EnvGuard env;
  env.set("XDG_CONFIG_HOME", dir.file("config"));
  EXPECT_FALSE(LoadAutoSetupFile());
  EXPECT_FALSE(fs::exists(dir.file("config")));
}

// --- read-merge-write ----------------------------------------------------------------------------

TEST(AutoSetupFile, FirstUpdateCreatesAFileWithExactlyThatKey) {
  SettingsHome home;
  StoreAutoSetupValue("MaxLevel", 2);
  ASSERT_TRUE(home.exists());
  EXPECT_EQ(home.keyCount(), 1u);
  EXPECT_EQ(home.value("MaxLevel"), 2);
  EXPECT_FALSE(readFile(home.filePath()).starts_with("bplist")) << "written as XML";
  EXPECT_TRUE(tempFilesIn(home.home()).empty());
}

TEST(AutoSetupFile, SameKeyTwiceKeepsOneEntryWithTheLaterValue) {
  SettingsHome home;
  StoreAutoSetupValue("PADMode", 1);
  StoreAutoSetupValue("PADMode", 2);
  EXPECT_EQ(home.keyCount(), 1u);
  EXPECT_EQ(home.value("PADMode"), 2);
}

TEST(AutoSetupFile, UpdatesMergeWithEarlierKeys) {
  SettingsHome home;
  home.writeIntegers({{"Output0", 3}, {"MaxLevel", 1}});
  StoreAutoSetupValue("PADMode", 2);
  StoreAutoSetupValue("MaxLevel", 0);
  EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"Output0", 3}, {"MaxLevel", 0}, {"PADMode", 2}}));
}

TEST(AutoSetupFile, SignedValuesReadBackUnchanged) {
  SettingsHome home;
  const std::pair<const char *, int32_t> values[] = {
      {"zero", 0}, {"minusOne", -1}, {"filterWord", -32768}, {"min", std::numeric_limits<int32_t>::min()},
      {"max", std::numeric_limits<int32_t>::max()}};
  for (const auto &[key, value] : values) StoreAutoSetupValue(key, value);
  const auto file = LoadAutoSetupFile();
  ASSERT_TRUE(file);
  for (const auto &[key, value] : values) {
    SCOPED_TRACE(key);
    EXPECT_EQ(file->integer(key), value);
    EXPECT_EQ(home.value(key), value) << "as another reader of the file sees it";
  }
}

// A root dictionary holding a key of every property-list type, as another program might write.
plist_t foreignEntries() {
  plist_t root = plist_new_dict();
  plist_dict_set_item(root, "ForeignInteger", plist_new_uint(5));
  plist_dict_set_item(root, "ForeignNegative", plist_new_uint(static_cast<uint64_t>(int64_t{-12})));
  plist_dict_set_item(root, "ForeignHuge", plist_new_uint(uint64_t{1} << 40));
  plist_dict_set_item(root, "ForeignString", plist_new_string("Gr\xC3\xBC\xC3\x9F" "e <&> \"x\""));
  plist_dict_set_item(root, "ForeignReal", plist_new_real(2.5));
  plist_dict_set_item(root, "ForeignDate", plist_new_date(631152000, 0));
  plist_dict_set_item(root, "ForeignData", plist_new_data("\x00\x01\xFF binary", 10));
  plist_dict_set_item(root, "ForeignBoolean", plist_new_bool(1));
  plist_t list = plist_new_array();
  plist_array_append_item(list, plist_new_uint(1));
  plist_array_append_item(list, plist_new_string("two"));
  plist_t innerList = plist_new_array();
  plist_array_append_item(innerList, plist_new_real(3.25));
  plist_array_append_item(list, innerList);
  plist_dict_set_item(root, "ForeignArray", list);
  plist_t nested = plist_new_dict();
  plist_t deeper = plist_new_dict();
  plist_dict_set_item(deeper, "bytes", plist_new_data("abc", 3));
  plist_dict_set_item(nested, "inner", deeper);
  plist_dict_set_item(nested, "flag", plist_new_bool(0));
  plist_dict_set_item(root, "ForeignDictionary", nested);
  plist_dict_set_item(root, "MaxLevel", plist_new_uint(1));
  return root;
}

TEST(AutoSetupFile, ForeignKeysOfEveryTypeSurviveUpdates) {
  for (const bool binary : {false, true}) {
    SCOPED_TRACE(binary ? "binary file" : "XML file");
    SettingsHome home;
    plist_t original = foreignEntries();
    home.writeRaw(binary ? toBinary(original) : toXml(original));

    StoreAutoSetupValue("MaxLevel", 2);
    StoreAutoSetupValue("PADMode", 1);

    ParsedFile updated(home.filePath());
    ASSERT_TRUE(updated.root && plist_get_node_type(updated.root) == PLIST_DICT);
    EXPECT_EQ(plist_dict_get_size(updated.root), plist_dict_get_size(original) + 1);
    for (const char *key : {"ForeignInteger", "ForeignNegative", "ForeignHuge", "ForeignString", "ForeignReal",
                            "ForeignDate", "ForeignData", "ForeignBoolean", "ForeignArray", "ForeignDictionary"}) {
      SCOPED_TRACE(key);
      EXPECT_TRUE(plistEqual(plist_dict_get_item(original, key), plist_dict_get_item(updated.root, key)));
    }
    EXPECT_EQ(home.value("MaxLevel"), 2);
    EXPECT_EQ(home.value("PADMode"), 1);
    EXPECT_FALSE(readFile(home.filePath()).starts_with("bplist")) << "rewritten as XML";
    plist_free(original);
  }
}

struct UnreadableFileCase {
  const char *name;
  std::string bytes;
};

TEST(AutoSetupFile, UnreadableFileIsReplacedAndItsBytesKeptOnce) {
  const UnreadableFileCase cases[] = {
      {"not a property list", "garbage \x01\x02 that is no property list"},
      {"array root", "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><integer>1</integer></array></plist>"},
      {"2 MiB", integerPlistXml({{"Output0", 1}}) + std::string(2 * 1024 * 1024, ' ')},
      {"deep XML", deepXmlPlist(50000)},
      {"deep binary", deepBinaryPlist(50000)},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    SettingsHome home;
    home.writeRaw(c.bytes);
    EXPECT_FALSE(LoadAutoSetupFile());

    StoreAutoSetupValue("MaxLevel", 2);
    EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"MaxLevel", 2}}));
    EXPECT_EQ(home.keyCount(), 1u);
    const std::string backup = home.filePath() + ".bak";
    EXPECT_TRUE(readFile(backup) == c.bytes) << "the backup does not hold the first unreadable bytes";

    // A later unreadable version does not replace the first one kept.
    home.writeRaw("second garbage");
    StoreAutoSetupValue("PADMode", 1);
    EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"PADMode", 1}}));
    EXPECT_TRUE(readFile(backup) == c.bytes) << "the backup does not hold the first unreadable bytes";
    // A readable file is merged, and needs no backup.
    StoreAutoSetupValue("MaxLevel", 3);
    EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"PADMode", 1}, {"MaxLevel", 3}}));
    EXPECT_TRUE(readFile(backup) == c.bytes) << "the backup does not hold the first unreadable bytes";
    EXPECT_TRUE(tempFilesIn(home.home()).empty());
  }
}

TEST(AutoSetupFile, EmptyFileIsReplacedWithoutBackup) {
  SettingsHome home;
  home.writeRaw("");
  StoreAutoSetupValue("MaxLevel", 1);
  EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"MaxLevel", 1}}));
  EXPECT_FALSE(fs::exists(home.filePath() + ".bak"));
}

TEST(AutoSetupFile, SomethingElseInTheFilesPlaceIsLeftAlone) {
  {
    SettingsHome home;
    fs::create_directory(home.filePath());
    fs::create_directory(home.filePath() + "/inside");
    StoreAutoSetupValue("MaxLevel", 1);
    EXPECT_TRUE(fs::is_directory(home.filePath() + "/inside"));
    EXPECT_TRUE(tempFilesIn(home.home()).empty());
  }
  {
    SettingsHome home;
    ASSERT_EQ(mkfifo(home.filePath().c_str(), 0600), 0);
    StoreAutoSetupValue("MaxLevel", 1);  // must neither block nor replace the FIFO
    EXPECT_TRUE(fs::is_fifo(home.filePath()));
    EXPECT_FALSE(LoadAutoSetupFile());
  }
}

// --- symbolic links, modes, folders --------------------------------------------------------------

struct SymlinkCase {
  const char *name;
  bool relative;
  bool targetExists;
};

TEST(AutoSetupFile, SymlinkedFileStaysALinkAndItsTargetIsUpdated) {
  const SymlinkCase cases[] = {
      {"absolute link", false, true}, {"relative link", true, true}, {"link to a missing file", false, false}};
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    SettingsHome home;
    const std::string dotfiles = home.dir().file("dotfiles");
    fs::create_directory(dotfiles);
    const std::string target = dotfiles + "/mixer.plist";
    if (c.targetExists) home.dir().write("dotfiles/mixer.plist", integerPlistXml({{"Foreign", 5}}));
    const std::string linkText = c.relative ? "dotfiles/mixer.plist" : target;
    ASSERT_EQ(symlink(linkText.c_str(), home.filePath().c_str()), 0);

    StoreAutoSetupValue("MaxLevel", 2);

    ASSERT_TRUE(fs::is_symlink(home.filePath()));
    EXPECT_EQ(fs::read_symlink(home.filePath()).string(), linkText);
    const auto expected = c.targetExists ? std::map<std::string, int64_t>{{"Foreign", 5}, {"MaxLevel", 2}}
                                         : std::map<std::string, int64_t>{{"MaxLevel", 2}};
    EXPECT_EQ(home.integers(), expected);  // read through the link
    ParsedFile direct(target);
    EXPECT_TRUE(direct.root && plist_get_node_type(direct.root) == PLIST_DICT);
    EXPECT_TRUE(tempFilesIn(home.home()).empty());
    EXPECT_TRUE(tempFilesIn(dotfiles).empty());
  }
}

TEST(AutoSetupFile, NewFileIsPrivateAndAnExistingFileKeepsItsMode) {
  const UmaskGuard umaskOff(0);
  {
    SettingsHome home;
    StoreAutoSetupValue("MaxLevel", 1);
    EXPECT_EQ(modeOf(home.filePath()), 0600u);
  }
  for (const mode_t mode : {mode_t{0640}, mode_t{0604}, mode_t{0600}}) {
    SCOPED_TRACE(mode);
    SettingsHome home;
    home.writeIntegers({{"Output1", 2}});
    ASSERT_EQ(chmod(home.filePath().c_str(), mode), 0);
    StoreAutoSetupValue("MaxLevel", 1);
    EXPECT_EQ(modeOf(home.filePath()), mode);
    EXPECT_EQ(home.value("MaxLevel"), 1);
  }
}

TEST(AutoSetupFile, MissingConfigFolderIsCreatedPrivate) {
  const UmaskGuard umaskOff(0);
  ScratchDir dir;
  EnvGuard env;
  const std::string config = dir.file("home/user/.config");
  env.set("XDG_CONFIG_HOME", config);
  StoreAutoSetupValue("MaxLevel", 3);
  EXPECT_EQ(modeOf(config), 0700u);
  const auto file = LoadAutoSetupFile();
  ASSERT_TRUE(file);
  EXPECT_EQ(file->integer("MaxLevel"), 3);
  EXPECT_EQ(plist_dict_get_size(file->raw()), 1u);
}

// --- leftovers and the lock ----------------------------------------------------------------------

TEST(AutoSetupFile, NextUpdateRemovesTemporaryFilesOfKilledWriters) {
  SettingsHome home;
  home.writeIntegers({{"Output2", 1}});
  const std::string dead1 = home.dir().write(std::string(kTempPrefix) + "Ab12Cd", "<?xml half written");
  const std::string dead2 = home.dir().write(std::string(kTempPrefix) + "zzzzzz", "");
  // Names that only look alike are someone else's.
  const std::string other1 = home.dir().write(std::string(kTempPrefix) + "bak", "keep");
  const std::string other2 = home.dir().write(std::string(kTempPrefix) + "Ab12Cd.x", "keep");
  const std::string other3 = home.dir().write("com.norvane.MXR-K7autosetup.plist.Ab12Cd", "keep");

  StoreAutoSetupValue("MaxLevel", 1);

  EXPECT_FALSE(fs::exists(dead1));
  EXPECT_FALSE(fs::exists(dead2));
  for (const auto &kept : {other1, other2, other3}) EXPECT_EQ(readFile(kept), "keep") << kept;
  EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"Output2", 1}, {"MaxLevel", 1}}));
}

TEST(AutoSetupFile, UpdateWaitsForTheLockHolder) {
  SettingsHome home;
  const int lockFd = open((home.filePath() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(lockFd, 0);
  ASSERT_EQ(flock(lockFd, LOCK_EX), 0);

  std::thread writer([] { StoreAutoSetupValue("MaxLevel", 2); });
  std::this_thread::sleep_for(std::chrono::milliseconds(400));
  EXPECT_FALSE(home.exists()) << "the update went ahead while another writer held the lock";
  const auto released = std::chrono::steady_clock::now();
  close(lockFd);
  writer.join();
  EXPECT_LT(std::chrono::steady_clock::now() - released, std::chrono::seconds(2));
  EXPECT_EQ(home.value("MaxLevel"), 2);
}

TEST(AutoSetupFile, UpdateGoesOnUnlockedAfterABoundedWait) {
  SettingsHome home;
  const int lockFd = open((home.filePath() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(lockFd, 0);
  ASSERT_EQ(flock(lockFd, LOCK_EX), 0);
  // The lock holder's temporary file: without the lock, nobody may take it for a leftover.
  const std::string live = home.dir().write(std::string(kTempPrefix) + "L1veW2", "being written");

  const auto started = std::chrono::steady_clock::now();
  StoreAutoSetupValue("MaxLevel", 2);
  const auto waited = std::chrono::steady_clock::now() - started;
  close(lockFd);

  EXPECT_GE(waited, std::chrono::milliseconds(9500));
  EXPECT_LT(waited, std::chrono::seconds(15));
  EXPECT_EQ(home.value("MaxLevel"), 2);
  EXPECT_TRUE(fs::exists(live));
}

TEST(AutoSetupFile, ConcurrentProcessesLoseNoKey) {
  SettingsHome home;
  constexpr int kProcesses = 8;
  constexpr int kKeysEach = 50;
  std::vector<pid_t> pids;
  for (int p = 0; p < kProcesses; ++p)
    pids.push_back(spawn({NVX_STORE_PROBE, "set-many", "p" + std::to_string(p) + "_", std::to_string(kKeysEach)}, ""));
  for (pid_t pid : pids) EXPECT_EQ(waitFor(pid), 0);

  const auto values = home.integers();
  EXPECT_EQ(values.size(), size_t{kProcesses * kKeysEach});
  for (int p = 0; p < kProcesses; ++p)
    for (int k = 0; k < kKeysEach; ++k) {
      const std::string key = "p" + std::to_string(p) + "_" + std::to_string(k);
      const auto it = values.find(key);
      EXPECT_TRUE(it != values.end() && it->second == k) << key;
    }
  EXPECT_TRUE(tempFilesIn(home.home()).empty());
}

TEST(AutoSetupFile, ConcurrentThreadsLoseNoKey) {
  SettingsHome home;
  constexpr int kThreads = 4;
  constexpr int kKeysEach = 25;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([t] {
      for (int k = 0; k < kKeysEach; ++k) StoreAutoSetupValue("t" + std::to_string(t) + "_" + std::to_string(k), k);
    });
  for (auto &thread : threads) thread.join();
  EXPECT_EQ(home.keyCount(), size_t{kThreads * kKeysEach});
}

// --- without permissions (run as an unprivileged user) ------------------------------------------

TEST(AutoSetupFilePermissions, UnprivilegedProbeCanUpdateItsOwnFile) {
  // The control for the cases below: the unprivileged probe does reach and update the file.
  SettingsHome home;
  home.dir().shareWithEveryone();
  home.writeIntegers({{"Output0", 1}});
  giveToProbeUser(home.filePath());

  const ProbeResult set = runProbe({"set", "MaxLevel", "-2"}, true);
  EXPECT_EQ(set.status, 0);
  EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"Output0", 1}, {"MaxLevel", -2}}));
  const ProbeResult get = runProbe({"get", "MaxLevel"}, true);
  EXPECT_EQ(get.status, 0);
  EXPECT_EQ(get.output, "-2\n");
}

TEST(AutoSetupFilePermissions, ReadOnlyFileIsNotChanged) {
  SettingsHome home;
  home.dir().shareWithEveryone();  // the folder is writable: only the file says no
  home.writeIntegers({{"MaxLevel", 1}});
  giveToProbeUser(home.filePath());
  ASSERT_EQ(chmod(home.filePath().c_str(), 0400), 0);
  const std::string before = readFile(home.filePath());

  const ProbeResult set = runProbe({"set", "MaxLevel", "3"}, true);
  EXPECT_EQ(set.status, 0);
  EXPECT_EQ(readFile(home.filePath()), before);
  EXPECT_EQ(modeOf(home.filePath()), 0400u);
  EXPECT_EQ(runProbe({"get", "MaxLevel"}, true).output, "1\n");
  EXPECT_TRUE(tempFilesIn(home.home()).empty());
}

TEST(AutoSetupFilePermissions, ReadOnlyFolderLosesTheUpdateSilently) {
  for (const bool fileExists : {true, false}) {
    SCOPED_TRACE(fileExists ? "existing file" : "no file yet");
    SettingsHome home;
    if (fileExists) {
      home.writeIntegers({{"MaxLevel", 1}});
      giveToProbeUser(home.filePath());
    }
    ASSERT_EQ(chmod(home.home().c_str(), 0555), 0);  // readable and searchable, not writable

    const ProbeResult set = runProbe({"set", "MaxLevel", "3"}, true);
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(home.exists(), fileExists);
    if (fileExists) {
      EXPECT_EQ(home.value("MaxLevel"), 1);
    }
    EXPECT_EQ(runProbe({"get", "MaxLevel"}, true).output, fileExists ? "1\n" : "unreadable\n");
    EXPECT_FALSE(fs::exists(home.filePath() + ".lock"));
  }
}

}  // namespace
