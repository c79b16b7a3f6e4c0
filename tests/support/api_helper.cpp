// The tests' helper that uses the shared library through its public interface only, in a process
// of its own:
//
//   api_helper post input CHANNEL INDEX | post boost INDEX
//       one change through the setter, which posts it; prints "posted <result> <end, CLOCK_MONOTONIC µs>"
//   api_helper write SEED [COUNT]
//       COUNT beat FX changes (default: until killed), slot and value drawn from SEED; reports each
//       with one write(2): "start <slot> <value>" before the setter, "done ..." or "failed ..." after.
//       Slot n is bank n / 18, position n / 3 % 6, item n % 3; values 0-14 suit every item.
//   api_helper listen
//       runs a GLib main loop and takes commands on standard input, answering one line each:
//       "register input|boost" -> "registered <family> <result> <ms the call took>";
//       callbacks print "input <channel> <index> <µs>" and "boost <index> <µs>" (context checked).
#include <glib-unix.h>
#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>

#include "NorvaneMXRK7Setup.h"

namespace {

long long micros() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<long long>(ts.tv_sec) * 1000000LL + ts.tv_nsec / 1000;
}

void say(const std::string &line) {
  const std::string text = line + "\n";
  [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
}

int post(int argc, char **argv) {
  const auto number = [&](int at) { return static_cast<uint32_t>(std::strtoul(argv[at], nullptr, 10)); };
  int32_t result = -1;
  if (argc == 5 && std::strcmp(argv[2], "input") == 0)
    result = NVX_SetUSBInputAudio(0, static_cast<int32_t>(number(3)), number(4));
  else if (argc == 4 && std::strcmp(argv[2], "boost") == 0)
    result = NVX_SetBoostLevelIndex(0, number(3));
  else
    return 2;
  say("posted " + std::to_string(result) + " " + std::to_string(micros()));
  return 0;
}

int write(const char *seed, long count) {
  std::mt19937 random(static_cast<std::mt19937::result_type>(std::strtoul(seed, nullptr, 10)));
  for (long n = 0; count < 0 || n < count; ++n) {
    const auto slot = static_cast<uint32_t>(random() % 54), value = static_cast<uint32_t>(random() % 15);
    const std::string what = std::to_string(slot) + " " + std::to_string(value);
    say("start " + what);
    const int32_t result = NVX_SetFXBANKBFXModeIndex(0, slot / 18, slot / 3 % 6, slot % 3, value);
    say((result == NVX_OK ? "done " : "failed ") + what);
  }
  return 0;
}

int inputContext, boostContext;
bool quit = false;
std::string pending;

void command(const std::string &line) {
  const bool input = line.ends_with(" input");
  const std::string family = input ? "input" : "boost";
  if (line.starts_with("register ")) {
    const long long start = micros();
    const int32_t result =
        input ? NVX_RegisterInputAudioChangedCallback(
                    0,
                    [](int32_t c, int32_t i, void *x) {
                      if (x == &inputContext)
                        say("input " + std::to_string(c) + " " + std::to_string(i) + " " + std::to_string(micros()));
                    },
                    &inputContext)
              : NVX_RegisterBoostLevelChangedCallback(
                    0,
                    [](int32_t i, void *x) {
                      if (x == &boostContext) say("boost " + std::to_string(i) + " " + std::to_string(micros()));
                    },
                    &boostContext);
    say("registered " + family + " " + std::to_string(result) + " " + std::to_string((micros() - start) / 1000));
  } else {
    say("unknown " + line);
  }
}

gboolean onInput(gint fd, GIOCondition, gpointer) {
  char buffer[256];
  const ssize_t n = ::read(fd, buffer, sizeof buffer);
  if (n <= 0) {
    quit = true;
    return G_SOURCE_REMOVE;
  }
  pending.append(buffer, static_cast<size_t>(n));
  for (auto end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
    command(pending.substr(0, end));
    pending.erase(0, end + 1);
  }
  return G_SOURCE_CONTINUE;
}

int listen() {
  g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), onInput, nullptr);
  say("hello");
  while (!quit) g_main_context_iteration(nullptr, TRUE);
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  const std::string verb = argc > 1 ? argv[1] : "";
  if (verb == "post") return post(argc, argv);
  if (verb == "write" && (argc == 3 || argc == 4)) return write(argv[2], argc == 4 ? std::atol(argv[3]) : -1);
  if (verb == "listen" && argc == 2) return listen();
  std::fprintf(stderr, "usage: api_helper post input CHANNEL INDEX | post boost INDEX | write SEED [COUNT] | listen\n");
  return 2;
}
