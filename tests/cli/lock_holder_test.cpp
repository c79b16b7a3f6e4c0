// Who holds a busy mixer's device node, as the tool and the setup application name it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include "support/mixer_probe.h"
#include "support/scratch_dir.h"

namespace nvx::test {
namespace {

TEST(ToolLockHolder, NamesTheProcessThatHoldsTheFile) {
  ScratchDir dir;
  const std::string path = dir.write("node", "");
  EXPECT_FALSE(nvx::support::findLockHolder(path)) << "nobody holds it yet";
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(fd, LOCK_EX | LOCK_NB), 0);
  const auto holder = nvx::support::findLockHolder(path);
  ASSERT_TRUE(holder);
  EXPECT_EQ(holder->pid, ::getpid());
  EXPECT_EQ(holder->program + "\n", readFile("/proc/self/comm"));
  EXPECT_FALSE(nvx::support::findLockHolder(dir.write("other", ""))) << "another file of the same folder";
  ::close(fd);
}

}  // namespace
}  // namespace nvx::test
