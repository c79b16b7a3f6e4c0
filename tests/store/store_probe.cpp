// Runs store operations from the command line, for tests that need other processes:
//   store_probe set KEY VALUE          one update; prints its outcome: "stored", "replaced" (an
//                                      unreadable file) or "not stored: <reason>"
//   store_probe set-many PREFIX COUNT  COUNT updates of PREFIX0 .. PREFIX<COUNT-1>, value = index
//   store_probe get KEY                prints the integer under KEY, or "absent" / "unreadable"
// Exit status 0 unless the arguments are wrong.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "outcome_text.h"
#include "store/auto_setup_file.h"

int main(int argc, char **argv) {
  if (argc == 4 && std::strcmp(argv[1], "set") == 0) {
    const nvx::store::KeyUpdate change{argv[2], static_cast<int32_t>(std::strtol(argv[3], nullptr, 10))};
    std::puts(nvx::test::outcomeText(nvx::store::UpdateAutoSetupFile({&change, 1})).c_str());
    return 0;
  }
  if (argc == 4 && std::strcmp(argv[1], "set-many") == 0) {
    const int count = std::atoi(argv[3]);
    for (int i = 0; i < count; ++i) nvx::store::StoreAutoSetupValue(std::string(argv[2]) + std::to_string(i), i);
    return 0;
  }
  if (argc == 3 && std::strcmp(argv[1], "get") == 0) {
    const auto file = nvx::store::LoadAutoSetupFile();
    if (!file) {
      std::puts("unreadable");
    } else if (const auto value = file->integer(argv[2])) {
      std::printf("%d\n", *value);
    } else {
      std::puts("absent");
    }
    return 0;
  }
  std::fprintf(stderr, "usage: store_probe set KEY VALUE | set-many PREFIX COUNT | get KEY\n");
  return 2;
}
