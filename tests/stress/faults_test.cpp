// Faults during updates of the settings file: a full disk (a small tmpfs), a read-only mount, a
// writer stuck while it holds the lock, and a lock file that is not a file. Whatever fails, the file that was
// there stays as it was and readable (no update goes ahead without the lock), no temporary file is
// left behind, and once the fault is gone the next update succeeds again.
//
// The test mounts file systems, in a mount namespace of its own (made in main, before any test
// runs), so nothing is visible outside the test process and its children. It needs root, as CI
// has; without it every test here fails (none is skipped). The crash and concurrency campaigns
// share this program.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <chrono>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "stress.h"
#include "support/plist_integers.h"
#include "support/process.h"
#include "support/settings_file.h"

namespace nvx::test {
namespace {

using namespace std::chrono_literals;

std::string namespaceError;  // why main could not make a mount namespace, if it could not

// A writer stuck while it holds the update lock (here: this test, on a descriptor of its own).
int stuckWriter = -1;

// The helper's updates PREFIX000 .. of COUNT keys, run to their end; the number it reported.
size_t runUpdates(const std::string &prefix, int count) {
  const auto run = nvx::test::run({NVX_CORE_HELPER, "update", prefix, std::to_string(count)});
  EXPECT_EQ(run.exitCode, 0) << run.transcript();
  return run.lines().size();
}

std::optional<std::map<std::string, int64_t>> readIntegers(const std::string &path) { return plistIntegers(readFile(path)); }

// A small tmpfs of its own, with the config home inside, unmounted at the end.
class SmallDisk {
 public:
  explicit SmallDisk(const std::string &mountPoint, const char *size = "size=256k") : mountPoint_(mountPoint) {
    mkdir(mountPoint.c_str(), 0755);
    mounted_ = mount("tmpfs", mountPoint.c_str(), "tmpfs", 0, (std::string(size) + ",mode=0755").c_str()) == 0;
    EXPECT_TRUE(mounted_) << "cannot mount a tmpfs: " << std::strerror(errno);
  }
  ~SmallDisk() {
    if (mounted_) umount2(mountPoint_.c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk &) = delete;
  SmallDisk &operator=(const SmallDisk &) = delete;
  bool mounted() const { return mounted_; }

  // Fills the file system with a filler file until not one more byte fits, then frees `leave` bytes.
  void fill(off_t leave = 0) {
    const std::string filler = mountPoint_ + "/filler";
    const int fd = open(filler.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ASSERT_GE(fd, 0);
    std::vector<char> chunk(65536, 'x');
    for (size_t size = chunk.size(); size > 0; size /= 2) {
      while (write(fd, chunk.data(), size) == static_cast<ssize_t>(size)) {
      }
    }
    ASSERT_EQ(write(fd, chunk.data(), 1), -1) << "the disk is not full";
    ASSERT_EQ(errno, ENOSPC);
    if (leave > 0) {
      struct stat info {};
      ASSERT_EQ(fstat(fd, &info), 0);
      ASSERT_EQ(ftruncate(fd, info.st_size - leave), 0);
    }
    close(fd);
  }
  void empty() { unlink((mountPoint_ + "/filler").c_str()); }

 private:
  std::string mountPoint_;
  bool mounted_ = false;
};

// Makes `folder` a read-only bind mount of itself, and writable again.
bool setReadOnly(const std::string &folder, bool readOnly) {
  if (readOnly && mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr) != 0) return false;
  if (!readOnly) return umount2(folder.c_str(), 0) == 0;
  return mount(nullptr, folder.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

class StressFault : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(namespaceError, "") << "the fault tests mount file systems and need root: " << namespaceError;
    disk_ = std::make_unique<SmallDisk>(dir_.file("disk"));
    ASSERT_TRUE(disk_->mounted());
    home_ = dir_.file("disk/config");
    env_.set("XDG_CONFIG_HOME", home_);
    env_.set("MXRK7_STORE_LOCK_TIMEOUT_MS", "300");  // how long an update waits for a stuck writer
    file_ = home_ + "/" + kSettingsFileName;
  }

  // Checks that the file holds exactly `bytes` and parses, and that no temporary file is left.
  void expectUnchanged(const std::string &bytes, const std::string &when) {
    EXPECT_EQ(readFile(file_), bytes) << when << ": the file changed";
    EXPECT_TRUE(readIntegers(file_).has_value()) << when << ": the file does not parse";
    EXPECT_EQ(temporaryFilesIn(home_), std::vector<std::string>{}) << when;
    EXPECT_NE(access((file_ + ".bak").c_str(), F_OK), 0) << when << ": a backup was made of a readable file";
  }

  test::ScratchDir dir_;
  test::EnvGuard env_;
  std::unique_ptr<SmallDisk> disk_;
  std::string home_;
  std::string file_;
};

struct StaticFault {
  const char *name;
  int keysBefore;  // size of the file before the fault (about 45 bytes a key)
  std::function<void(StressFault &, SmallDisk &, const std::string &home)> apply;
  std::function<void(SmallDisk &, const std::string &home)> remove;
};

void PrintTo(const StaticFault &fault, std::ostream *os) { *os << fault.name; }

class StressFaults : public StressFault, public ::testing::WithParamInterface<StaticFault> {};

TEST_P(StressFaults, TheOldFileStaysIntactAndUpdatesWorkAgainAfterwards) {
  const StaticFault &fault = GetParam();
  ASSERT_EQ(runUpdates("Before", fault.keysBefore), static_cast<size_t>(fault.keysBefore));
  const auto before = readIntegers(file_);
  ASSERT_TRUE(before.has_value());
  ASSERT_EQ(before->size(), static_cast<size_t>(fault.keysBefore));
  const std::string bytes = readFile(file_);

  fault.apply(*this, *disk_, home_);
  if (HasFatalFailure()) return;
  // Updates of new keys and of a key already there: each would make the file larger or change it.
  runUpdates("During", 3);
  runUpdates("Before", 1);
  expectUnchanged(bytes, fault.name);

  fault.remove(*disk_, home_);
  ASSERT_EQ(runUpdates("After", 1), 1U);
  const auto after = readIntegers(file_);
  ASSERT_TRUE(after.has_value());
  EXPECT_EQ(after->size(), static_cast<size_t>(fault.keysBefore + 1)) << "the update after the fault";
  EXPECT_EQ(after->count("After000"), 1U);
  EXPECT_EQ(after->count("During000"), 0U);
}

const StaticFault kStaticFaults[] = {
    {"disk full", 100, [](StressFault &, SmallDisk &disk, const std::string &) { disk.fill(); },
     [](SmallDisk &disk, const std::string &) { disk.empty(); }},
    // Room for the lock and a part of the new file: the write of the temporary file fails midway.
    {"disk almost full", 200, [](StressFault &, SmallDisk &disk, const std::string &) { disk.fill(4096); },
     [](SmallDisk &disk, const std::string &) { disk.empty(); }},
    {"read-only mount",
     100,
     [](StressFault &, SmallDisk &, const std::string &home) { ASSERT_TRUE(setReadOnly(home, true)) << std::strerror(errno); },
     [](SmallDisk &, const std::string &home) { ASSERT_TRUE(setReadOnly(home, false)) << std::strerror(errno); }},
    {"stuck writer", 100,
     [](StressFault &, SmallDisk &, const std::string &home) {
       stuckWriter = open((home + "/" + kSettingsFileName + ".lock").c_str(), O_RDONLY | O_CLOEXEC);
       ASSERT_EQ(flock(stuckWriter, LOCK_EX), 0);
     },
     [](SmallDisk &, const std::string &) { close(stuckWriter); }},
    {"lock file is a folder", 100,
     [](StressFault &, SmallDisk &, const std::string &home) {
       const std::string lock = home + "/" + kSettingsFileName + ".lock";
       ASSERT_EQ(unlink(lock.c_str()), 0);
       ASSERT_EQ(mkdir(lock.c_str(), 0700), 0);
     },
     [](SmallDisk &, const std::string &home) { ASSERT_EQ(rmdir((home + "/" + kSettingsFileName + ".lock").c_str()), 0); }},
};

std::string faultName(const ::testing::TestParamInfo<StaticFault> &fault) {
  std::string name = fault.param.name;
  for (char &c : name)
    if (c == ' ' || c == '-') c = '_';
  return name;
}

INSTANTIATE_TEST_SUITE_P(, StressFaults, ::testing::ValuesIn(kStaticFaults), faultName);

// A fault that comes and goes while one writer keeps updating: it is let go one update at a time,
// and the fault starts right as the 50th update is let go, so it may meet that update midway.
void faultDuringUpdates(StressFault &test, const std::string &file, const std::function<void()> &start,
                        const std::function<void()> &stop) {
  constexpr int kUpdates = 150, kFaultFrom = 50, kFaultUntil = 100;
  Process writer({NVX_CORE_HELPER, "update", "Live", std::to_string(kUpdates), "--step"});
  size_t keys = 0;
  for (int i = 0; i < kUpdates; ++i) {
    writer.writeLine("go");
    if (i == kFaultFrom) start();
    if (i == kFaultUntil) stop();
    if (test.HasFatalFailure()) return;
    const std::string done = writer.readLine(30s).value_or("(nothing)");
    ASSERT_TRUE(done.starts_with("done " + std::to_string(i) + " ")) << done;
    const auto values = readIntegers(file);
    ASSERT_TRUE(values.has_value()) << "after update " << i << ": the file does not parse";
    ASSERT_GE(values->size(), keys) << "after update " << i << ": keys were lost";
    keys = values->size();
    char key[32];
    std::snprintf(key, sizeof key, "Live%03d", i);
    const bool present = values->count(key) == 1;
    if (i < kFaultFrom || i > kFaultUntil) {
      ASSERT_TRUE(present) << "update " << i << " was lost with no fault in the way";
    } else if (i > kFaultFrom && i < kFaultUntil) {
      ASSERT_FALSE(present) << "update " << i << " was stored during the fault: the fault did not take";
    }
  }
  EXPECT_EQ(writer.finish().exitCode, 0);
}

TEST_F(StressFault, DiskFillsUpAndEmptiesWhileUpdating) {
  faultDuringUpdates(*this, file_, [&] { disk_->fill(); }, [&] { disk_->empty(); });
  EXPECT_EQ(temporaryFilesIn(home_), std::vector<std::string>{});
}

TEST_F(StressFault, FolderTurnsReadOnlyAndBackWhileUpdating) {
  ASSERT_EQ(runUpdates("Before", 1), 1U);  // the folder must exist before it can be mounted over
  faultDuringUpdates(
      *this, file_, [&] { ASSERT_TRUE(setReadOnly(home_, true)) << std::strerror(errno); },
      [&] { ASSERT_TRUE(setReadOnly(home_, false)) << std::strerror(errno); });
  EXPECT_EQ(temporaryFilesIn(home_), std::vector<std::string>{});
}

}  // namespace
}  // namespace nvx::test

int main(int argc, char **argv) {
  // A mount namespace of this process's own, with no propagation back: the test's mounts stay
  // inside it and vanish with it.
  if (geteuid() != 0) {
    nvx::test::namespaceError = "not running as root";
  } else if (unshare(CLONE_NEWNS) != 0) {
    nvx::test::namespaceError = std::string("unshare: ") + std::strerror(errno);
  } else if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    nvx::test::namespaceError = std::string("making mounts private: ") + std::strerror(errno);
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
