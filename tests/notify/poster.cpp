// Makes one change through the library's public setters, which post it, then prints the setter's
// result, how long it took and when it returned (CLOCK_MONOTONIC µs): "posted <result> <µs> <end>".
//
//   nvx_notify_poster input <channel> <index>     NVX_SetUSBInputAudio
//   nvx_notify_poster boost <index>               NVX_SetBoostLevelIndex
//
// Run it with MXRK7_VIRTUAL_MIXERS and XDG_CONFIG_HOME pointing into a scratch folder.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "NorvaneMXRK7Setup.h"

namespace {

long long monotonicMicros() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<long long>(ts.tv_sec) * 1000000LL + ts.tv_nsec / 1000;
}

long number(const char *text) { return std::strtol(text, nullptr, 10); }

}  // namespace

int main(int argc, char **argv) {
  const long long start = monotonicMicros();
  int32_t result = 0;
  if (argc == 4 && std::strcmp(argv[1], "input") == 0) {
    result = NVX_SetUSBInputAudio(0, static_cast<int32_t>(number(argv[2])), static_cast<uint32_t>(number(argv[3])));
  } else if (argc == 3 && std::strcmp(argv[1], "boost") == 0) {
    result = NVX_SetBoostLevelIndex(0, static_cast<uint32_t>(number(argv[2])));
  } else {
    std::fprintf(stderr, "usage: %s input CHANNEL INDEX | boost INDEX\n", argv[0]);
    return 2;
  }
  const long long end = monotonicMicros();
  std::printf("posted %d %lld %lld\n", result, end - start, end);
  return 0;
}
