// A store client for the concurrency and fault tests, run as many processes at once (or as another
// user). It uses the library's store directly, so it can update keys of its own:
//
//   stress_store update PREFIX COUNT [--wait | --step]
//       sets PREFIX000 .. PREFIX<COUNT-1> to 1000 + index, one update each; with --wait it first
//       reads one line from standard input (so many processes can be started, then let go at once),
//       with --step it reads one line before every update (so a test can act between updates).
//       Prints "done <index> <outcome> <CLOCK_MONOTONIC µs>" after each update (with one write(2));
//       the outcome is "stored", "replaced" or "not-stored".
//   stress_store read
//       reads the settings file over and over, as the library reads it and independently with
//       libplist, until standard input closes; then prints
//       "reads <n> unreadable <n> shrank <n> keys <largest key count seen>". A read counts as
//       unreadable when either reader refuses the file, and as shrunk when it holds fewer keys than
//       the read before (keys are only ever added in these tests).
#include <plist/plist.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "store/auto_setup_file.h"
#include "stress_support.h"

namespace {

void say(const std::string &line) {
  const std::string text = line + "\n";
  [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
}

bool inputClosed() {
  pollfd p{STDIN_FILENO, POLLIN, 0};
  if (poll(&p, 1, 0) <= 0) return false;
  char byte;
  return read(STDIN_FILENO, &byte, 1) <= 0;
}

bool awaitLine() {
  char line[16];
  return std::fgets(line, sizeof line, stdin) != nullptr;
}

int update(const std::string &prefix, int count, const char *mode) {
  const bool wait = mode && std::strcmp(mode, "--wait") == 0;
  const bool step = mode && std::strcmp(mode, "--step") == 0;
  if (wait && !awaitLine()) return 1;
  for (int i = 0; i < count; ++i) {
    if (step && !awaitLine()) return 1;
    char key[128];
    std::snprintf(key, sizeof key, "%s%03d", prefix.c_str(), i);
    const nvx::store::KeyUpdate change{key, 1000 + i};
    const auto outcome = nvx::store::UpdateAutoSetupFile({&change, 1});
    using Result = nvx::store::UpdateOutcome::Result;
    const char *said = outcome.result == Result::Stored                      ? "stored"
                       : outcome.result == Result::StoredReplacingUnreadable ? "replaced"
                                                                             : "not-stored";
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    say("done " + std::to_string(i) + " " + said + " " + std::to_string(now.tv_sec * 1'000'000LL + now.tv_nsec / 1000));
  }
  return 0;
}

int readLoop() {
  const std::string path = nvx::store::GetAutoSetupFilePath();
  long reads = 0, unreadable = 0, shrank = 0;
  size_t last = 0, largest = 0;
  while (!inputClosed()) {
    const auto library = nvx::store::LoadAutoSetupFile();
    const auto independent = nvx::stress::readIntegers(path);
    ++reads;
    if (!library || !independent) {
      ++unreadable;
      continue;
    }
    const size_t keys = independent->size();
    if (keys < last) ++shrank;
    last = keys;
    if (keys > largest) largest = keys;
  }
  say("reads " + std::to_string(reads) + " unreadable " + std::to_string(unreadable) + " shrank " +
      std::to_string(shrank) + " keys " + std::to_string(largest));
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc >= 4 && std::strcmp(argv[1], "update") == 0)
    return update(argv[2], std::atoi(argv[3]), argc == 5 ? argv[4] : nullptr);
  if (argc == 2 && std::strcmp(argv[1], "read") == 0) return readLoop();
  std::fprintf(stderr, "usage: stress_store update PREFIX COUNT [--wait | --step] | read\n");
  return 2;
}
