// Test runner for the libusb backend under umockdev. umockdev works by intercepting file and ioctl
// calls, so its preload library has to be in place before the program starts: the runner starts
// itself again with it when it is missing, whether run by CTest (also for test discovery) or by hand.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr const char *kRestartedMark = "NVX_UMOCKDEV_RESTARTED";

bool preloaded() {
  const char *preload = std::getenv("LD_PRELOAD");
  return preload && std::strstr(preload, "libumockdev-preload") != nullptr;
}

// Starts this program again with the preload in place; returns only if that failed.
void restartWithPreload(char **argv) {
  const char *old = std::getenv("LD_PRELOAD");
  std::string preload = NVX_UMOCKDEV_PRELOAD;
  if (old && *old) preload += std::string(":") + old;
  setenv("LD_PRELOAD", preload.c_str(), 1);
  // AddressSanitizer wants its runtime first among the loaded libraries; umockdev's must come first.
  const char *asan = std::getenv("ASAN_OPTIONS");
  std::string options = asan && *asan ? std::string(asan) + ":" : std::string();
  setenv("ASAN_OPTIONS", (options + "verify_asan_link_order=0").c_str(), 1);
  setenv(kRestartedMark, "1", 1);
  execv("/proc/self/exe", argv);
  std::perror("cannot restart the tests with umockdev");
}

// umockdev's sockets live in the testbed folder under TMPDIR, and a socket path has at most 108 bytes.
void keepTmpdirShort() {
  const char *tmp = std::getenv("TMPDIR");
  if (tmp && std::strlen(tmp) > 40) setenv("TMPDIR", "/tmp", 1);
}

}  // namespace

int main(int argc, char **argv) {
  if (!preloaded()) {
    if (std::getenv(kRestartedMark)) {
      std::fprintf(stderr, "umockdev's preload library did not load\n");
      return 1;
    }
    restartWithPreload(argv);
    return 1;
  }
  keepTmpdirShort();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
