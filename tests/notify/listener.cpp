// A client process for the cross-process tests. It uses the library through its public API only,
// runs a GLib main loop, takes commands on stdin and reports on stdout, one line each:
//
//   register input|boost     -> "registered <family> <result> <milliseconds the call took>"
//   unregister input|boost   -> "unregistered <family> <result>"
//   threads                  -> "threads <number of threads of this process>"
//   quit (or end of input)   -> exits
//
// Callbacks print "input <channel> <index> <context ok|wrong> <CLOCK_MONOTONIC µs>" and
// "boost <index> <context ok|wrong> <µs>".
#include <glib-unix.h>
#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <string>

#include "NorvaneMXRK7Setup.h"
#include "main_loop.h"

namespace {

int inputContext;
int boostContext;
bool quit = false;
std::string pendingInput;

long long monotonicMicros() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<long long>(ts.tv_sec) * 1000000LL + ts.tv_nsec / 1000;
}

const char *contextCheck(void *context, const int *expected) { return context == expected ? "ok" : "wrong"; }

void onInput(int32_t channel, int32_t index, void *context) {
  std::printf("input %d %d %s %lld\n", channel, index, contextCheck(context, &inputContext), monotonicMicros());
}

void onBoost(int32_t index, void *context) {
  std::printf("boost %d %s %lld\n", index, contextCheck(context, &boostContext), monotonicMicros());
}

void run(const std::string &command) {
  if (command == "quit") {
    quit = true;
  } else if (command == "threads") {
    std::printf("threads %d\n", nvx::test::threadCount());
  } else if (command == "register input" || command == "register boost") {
    const bool input = command == "register input";
    const long long start = monotonicMicros();
    const int32_t result = input ? NVX_RegisterInputAudioChangedCallback(0, onInput, &inputContext)
                                 : NVX_RegisterBoostLevelChangedCallback(0, onBoost, &boostContext);
    std::printf("registered %s %d %lld\n", input ? "input" : "boost", result, (monotonicMicros() - start) / 1000);
  } else if (command == "unregister input") {
    std::printf("unregistered input %d\n", NVX_UnregisterInputAudioChangedCallback(0));
  } else if (command == "unregister boost") {
    std::printf("unregistered boost %d\n", NVX_UnregisterBoostLevelChangedCallback(0));
  } else {
    std::printf("unknown %s\n", command.c_str());
  }
}

gboolean onStdin(gint fd, GIOCondition, gpointer) {
  char buffer[256];
  const ssize_t n = read(fd, buffer, sizeof(buffer));
  if (n <= 0) {
    quit = true;
    return G_SOURCE_REMOVE;
  }
  pendingInput.append(buffer, static_cast<size_t>(n));
  for (auto end = pendingInput.find('\n'); end != std::string::npos; end = pendingInput.find('\n')) {
    run(pendingInput.substr(0, end));
    pendingInput.erase(0, end + 1);
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), onStdin, nullptr);
  std::printf("hello\n");
  while (!quit) {
    g_main_context_iteration(nullptr, TRUE);
  }
  return 0;
}
