// A listening process for the notification latency benchmark. It uses the library's public API only:
// registers a boost level callback, then runs a GLib main loop. It prints "ready <result>" once
// registered, then one line per callback: "<index> <CLOCK_MONOTONIC ns>". It exits when its standard
// input closes.
#include <glib-unix.h>
#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>

#include "NorvaneMXRK7Setup.h"

namespace {

bool quit = false;

long long monotonicNanos() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<long long>(ts.tv_sec) * 1'000'000'000LL + ts.tv_nsec;
}

void onBoost(int32_t index, void *) {
  const long long now = monotonicNanos();
  std::printf("%d %lld\n", index, now);
}

gboolean onStdin(gint fd, GIOCondition, gpointer) {
  char buffer[64];
  if (read(fd, buffer, sizeof buffer) <= 0) {
    quit = true;
    return G_SOURCE_REMOVE;
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), onStdin, nullptr);
  std::printf("ready %d\n", NVX_RegisterBoostLevelChangedCallback(0, onBoost, nullptr));
  while (!quit) g_main_context_iteration(nullptr, TRUE);
  return 0;
}
