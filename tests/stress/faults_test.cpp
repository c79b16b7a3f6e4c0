// Faults of the file system while a writer keeps updating the settings file: a full disk, a disk
// with room for a part of the new file only (a small tmpfs), a read-only mount. While a fault lasts
// the file stays as it was, byte for byte, and no backup is made of it; after every update it parses
// and has lost no key; once the fault is gone updates succeed again, and no temporary file is left.
//
// The test mounts file systems in a mount namespace of its own (made in main, before any test runs),
// so nothing is visible outside the test process and its children. It needs root, as CI has; without
// it every test here fails (none is skipped). The crash and concurrency campaigns share this program.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "stress.h"
#include "support/plist_integers.h"
#include "support/process.h"
#include "support/settings_file.h"

namespace nvx::test {
namespace {

std::string namespaceError;  // why main could not make a mount namespace, if it could not

std::optional<std::map<std::string, int64_t>> readIntegers(const std::string &path) {
  return plistIntegers(readFile(path));
}

// Fills the file system of `folder` until not one more byte fits, then frees `leave` bytes.
void fill(const std::string &folder, off_t leave) {
  const int fd = open((folder + "/filler").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  ASSERT_GE(fd, 0);
  std::vector<char> chunk(65536, 'x');
  for (size_t size = chunk.size(); size > 0; size /= 2)
    while (write(fd, chunk.data(), size) == static_cast<ssize_t>(size)) {
    }
  struct stat info {};
  ASSERT_EQ(fstat(fd, &info), 0);
  ASSERT_EQ(ftruncate(fd, info.st_size - leave), 0);
  close(fd);
}

// Makes `folder` a read-only bind mount of itself.
void mountReadOnly(const std::string &folder) {
  ASSERT_EQ(mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr), 0) << std::strerror(errno);
  ASSERT_EQ(mount(nullptr, folder.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr), 0)
      << std::strerror(errno);
}

struct Fault {
  const char *name;
  std::function<void(const std::string &disk, const std::string &home)> start, stop;
};

void PrintTo(const Fault &fault, std::ostream *os) { *os << fault.name; }

class StressFault : public testing::TestWithParam<Fault> {};

// Seeded with 200 keys (about 9 KB), then updated one key at a time: the fault comes for updates
// 50 to 99 of every 100 (it starts right as update 50 is let go, so it may meet that one midway).
TEST_P(StressFault, FileStaysWholeAndUpdatesResumeAfterwards) {
  ASSERT_EQ(namespaceError, "") << "the fault tests mount file systems and need root: " << namespaceError;
  ScratchDir dir;
  const std::string disk = dir.file("disk"), home = disk + "/config", file = home + "/" + kSettingsFileName;
  ASSERT_EQ(mkdir(disk.c_str(), 0755), 0);
  ASSERT_EQ(mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=256k,mode=0755"), 0) << std::strerror(errno);
  const auto detach = [](const char *path) { umount2(path, MNT_DETACH); };
  const std::unique_ptr<const char, decltype(detach)> unmount(disk.c_str(), detach);
  EnvGuard env;
  env.set("XDG_CONFIG_HOME", home);
  ASSERT_EQ(run({NVX_CORE_HELPER, "update", "Seed", "200"}).exitCode, 0);

  const int updates = 100 * testScale() + 50;
  Process writer({NVX_CORE_HELPER, "update", "Live", std::to_string(updates), "--step"});
  size_t keys = 0;
  std::string during;  // the file as the fault found it
  for (int i = 0; i < updates && !HasFatalFailure(); ++i) {
    const bool faulty = i % 100 >= 50;
    if (i % 100 == 0 && i > 0) GetParam().stop(disk, home);
    writer.writeLine("go");
    if (i % 100 == 50) GetParam().start(disk, home);
    const std::string done = writer.readLine(30s).value_or("(nothing)");
    ASSERT_TRUE(done.starts_with("done " + std::to_string(i) + " ")) << done;
    const auto values = readIntegers(file);
    ASSERT_TRUE(values.has_value()) << "after update " << i << ": the file does not parse";
    ASSERT_GE(values->size(), keys) << "after update " << i << ": keys were lost";
    keys = values->size();
    char key[32];
    std::snprintf(key, sizeof key, "Live%03d", i);
    ASSERT_TRUE(faulty || (done.ends_with(" stored") && values->count(key))) << "update " << i << ": " << done;
    if (i % 100 == 50) during = readFile(file);
    if (faulty && i % 100 > 50) {
      ASSERT_EQ(readFile(file), during) << "update " << i << " was stored during the fault";
    }
  }
  EXPECT_EQ(writer.finish().exitCode, 0);
  EXPECT_EQ(temporaryFilesIn(home), std::vector<std::string>{});
  EXPECT_NE(access((file + ".bak").c_str(), F_OK), 0) << "a backup was made of a readable file";
}

INSTANTIATE_TEST_SUITE_P(
    , StressFault,
    testing::Values(Fault{"DiskFull", [](auto &disk, auto &) { fill(disk, 0); },
                          [](auto &disk, auto &) { unlink((disk + "/filler").c_str()); }},
                    // Room for the lock and a part of the new file: its write fails midway.
                    Fault{"DiskAlmostFull", [](auto &disk, auto &) { fill(disk, 4096); },
                          [](auto &disk, auto &) { unlink((disk + "/filler").c_str()); }},
                    Fault{"ReadOnlyMount", [](auto &, auto &home) { mountReadOnly(home); },
                          [](auto &, auto &home) { ASSERT_EQ(umount2(home.c_str(), 0), 0) << std::strerror(errno); }}),
    [](const testing::TestParamInfo<Fault> &fault) { return std::string(fault.param.name); });

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
