#include "usb/umockdev_preload.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace nvx::test {

namespace {

constexpr const char *kRestartedMark = "NVX_UMOCKDEV_RESTARTED";

bool preloaded() {
  const char *preload = std::getenv("LD_PRELOAD");
  return preload && std::strstr(preload, "libumockdev-preload") != nullptr;
}

}  // namespace

bool runUnderUmockdev(char **argv) {
  if (preloaded()) {
    // umockdev's sockets live in the testbed folder under TMPDIR, and a socket path has at most 108 bytes.
    if (const char *tmp = std::getenv("TMPDIR"); tmp && std::strlen(tmp) > 40) setenv("TMPDIR", "/tmp", 1);
    return true;
  }
  if (std::getenv(kRestartedMark)) {
    std::fprintf(stderr, "umockdev's preload library did not load\n");
    return false;
  }
  const char *old = std::getenv("LD_PRELOAD");
  std::string preload = NVX_UMOCKDEV_PRELOAD;
  if (old && *old) preload += std::string(":") + old;
  setenv("LD_PRELOAD", preload.c_str(), 1);
  // AddressSanitizer wants its runtime first among the loaded libraries; umockdev's must come first.
  const char *asan = std::getenv("ASAN_OPTIONS");
  const std::string options = asan && *asan ? std::string(asan) + ":" : std::string();
  setenv("ASAN_OPTIONS", (options + "verify_asan_link_order=0").c_str(), 1);
  setenv(kRestartedMark, "1", 1);
  execv("/proc/self/exe", argv);
  std::perror("cannot restart with umockdev's preload library");
  return false;
}

}  // namespace nvx::test
