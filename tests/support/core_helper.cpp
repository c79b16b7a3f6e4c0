// The tests' helper that runs the library's core in a process of its own: as another user, in
// another namespace, many at once, or under strace.
//
//   core_helper set KEY VALUE
//       one update of the settings file; prints its outcome ("stored", "replaced", "not stored: <reason>")
//   core_helper update PREFIX COUNT [--wait | --step]
//       sets PREFIX000 .. PREFIX<COUNT-1> to 1000 + index, one update each; --wait reads one line of
//       standard input first (many writers let go at once), --step one before every update. Prints
//       "done <index> <CLOCK_MONOTONIC µs> <outcome>" after each, with one write(2).
//   core_helper read
//       reads the settings file over and over, with the library and with libplist, until standard
//       input closes; then prints "reads <n> unreadable <n> shrank <n>": a read is unreadable when
//       either reader refuses the file, shrunk when it holds fewer keys than the read before.
//   core_helper open VVVV:PPPP
//       opens the first such USB device through the libusb transport: "open 0x<I/O return code>"
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "store/auto_setup_file.h"
#include "support/outcome_text.h"
#include "support/plist_integers.h"
#include "support/scratch_dir.h"
#include "usb/transport.h"

namespace {

void say(const std::string &line) {
  const std::string text = line + "\n";
  [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
}

bool awaitLine() {
  char line[16];
  return std::fgets(line, sizeof line, stdin) != nullptr;
}

std::string outcomeOf(const std::string &key, int32_t value) {
  const nvx::store::KeyUpdate change{key, value};
  return nvx::test::outcomeText(nvx::store::UpdateAutoSetupFile({&change, 1}));
}

int update(const std::string &prefix, int count, const std::string &mode) {
  if (mode == "--wait" && !awaitLine()) return 1;
  for (int i = 0; i < count; ++i) {
    if (mode == "--step" && !awaitLine()) return 1;
    char key[128];
    std::snprintf(key, sizeof key, "%s%03d", prefix.c_str(), i);
    const std::string outcome = outcomeOf(key, 1000 + i);
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    say("done " + std::to_string(i) + " " + std::to_string(now.tv_sec * 1'000'000LL + now.tv_nsec / 1000) + " " +
        outcome);
  }
  return 0;
}

bool inputClosed() {
  pollfd p{STDIN_FILENO, POLLIN, 0};
  char byte;
  return ::poll(&p, 1, 0) > 0 && ::read(STDIN_FILENO, &byte, 1) <= 0;
}

int readLoop() {
  const std::string path = nvx::store::GetAutoSetupFilePath();
  long reads = 0, unreadable = 0, shrank = 0;
  size_t last = 0;
  while (!inputClosed()) {
    const auto library = nvx::store::LoadAutoSetupFile();
    const auto independent = nvx::test::plistIntegers(nvx::test::readFile(path));
    ++reads;
    if (!library || !independent) {
      ++unreadable;
      continue;
    }
    shrank += independent->size() < last;
    last = independent->size();
  }
  say("reads " + std::to_string(reads) + " unreadable " + std::to_string(unreadable) + " shrank " +
      std::to_string(shrank));
  return 0;
}

int open(const char *id) {
  unsigned vendor = 0, product = 0;
  if (std::sscanf(id, "%4x:%4x", &vendor, &product) != 2) return 2;
  const auto transport = nvx::usb::makeLibusbTransport();
  for (const auto &entry : transport ? transport->enumerate() : std::vector<nvx::usb::DeviceEntry>{}) {
    if (entry.vendor != vendor || entry.product != product) continue;
    const auto device = transport->reference(entry);
    std::printf("open 0x%08X\n", device ? static_cast<unsigned>(device->open()) : 0u);
    return 0;
  }
  std::puts("not found");
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  const std::string verb = argc > 1 ? argv[1] : "";
  if (verb == "set" && argc == 4) {
    std::puts(outcomeOf(argv[2], static_cast<int32_t>(std::strtol(argv[3], nullptr, 10))).c_str());
    return 0;
  }
  if (verb == "update" && (argc == 4 || argc == 5))
    return update(argv[2], std::atoi(argv[3]), argc == 5 ? argv[4] : "");
  if (verb == "read" && argc == 2) return readLoop();
  if (verb == "open" && argc == 3) return open(argv[2]);
  std::fprintf(stderr,
               "usage: core_helper set KEY VALUE | update PREFIX COUNT [--wait|--step] | read | open VVVV:PPPP\n");
  return 2;
}
