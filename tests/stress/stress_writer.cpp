// The crash test's writer: changes settings through the public setters, one after another, in an
// order and with values drawn from a seed, and reports each call on standard output with one
// write(2) per line, so that what it wrote is in the pipe the moment it was written:
//   start <setting> <value>     just before the setter is called
//   done <setting> <value>      after it returned NVX_OK
//   failed <setting> <value>    after it returned anything else
//
//   stress_writer SEED [COUNT]   COUNT calls (default: until killed)
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "crash_settings.h"

namespace {

void report(const char *what, uint32_t setting, uint32_t value) {
  char line[64];
  const int length = std::snprintf(line, sizeof line, "%s %u %u\n", what, setting, value);
  [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, line, static_cast<size_t>(length));
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: stress_writer SEED [COUNT]\n");
    return 2;
  }
  std::mt19937 random(static_cast<std::mt19937::result_type>(std::strtoul(argv[1], nullptr, 10)));
  const long count = argc == 3 ? std::atol(argv[2]) : -1;
  for (long n = 0; count < 0 || n < count; ++n) {
    const auto setting = static_cast<uint32_t>(random() % nvx::stress::kCrashSettings);
    const auto value = static_cast<uint32_t>(random() % (nvx::stress::maximumOf(setting) + 1));
    report("start", setting, value);
    const int32_t result = nvx::stress::setSetting(setting, value);
    report(result == NVX_OK ? "done" : "failed", setting, value);
  }
  return 0;
}
