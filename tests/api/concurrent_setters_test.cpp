// Several processes calling the exported setters at once lose no key: the update of the settings
// file is serialised between processes.
#include <sys/wait.h>
#include <unistd.h>

#include "api_fixture.h"

namespace nvx::test {
namespace {

class ConcurrentSettersTest : public ApiTest {};

TEST_F(ConcurrentSettersTest, SixProcessesShareTheFiftyFourBeatFxKeys) {
  constexpr int kProcesses = 6;
  constexpr int kRounds = 3;  // each key is written several times; the last value must win
  // Key n of 54 (bank, position, item) belongs to process n % 6.
  auto valueOf = [](int key, int round) { return static_cast<uint32_t>((key * 7 + round) & 0xFF); };
  std::vector<pid_t> children;
  for (int p = 0; p < kProcesses; ++p) {
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      int failures = 0;
      for (int round = 0; round < kRounds; ++round) {
        for (int key = p; key < 54; key += kProcesses) {
          const auto bank = static_cast<uint32_t>(key / 18), position = static_cast<uint32_t>(key / 3 % 6),
                     item = static_cast<uint32_t>(key % 3);
          if (NVX_SetFXBANKBFXModeIndex(0, bank, position, item, valueOf(key, round)) != NVX_OK) ++failures;
        }
      }
      _exit(failures == 0 ? 0 : 1);
    }
    children.push_back(pid);
  }
  for (pid_t pid : children) {
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  const auto stored = settings.integers();
  EXPECT_EQ(stored.size(), 54u);
  for (int key = 0; key < 54; ++key) {
    const auto bank = static_cast<uint32_t>(key / 18), position = static_cast<uint32_t>(key / 3 % 6),
               item = static_cast<uint32_t>(key % 3);
    uint32_t value = 999;
    ASSERT_EQ(NVX_GetFXBANKBFXModeIndex(0, bank, position, item, &value), NVX_OK);
    const uint32_t last = valueOf(key, kRounds - 1);
    // The getter hands out a type above 14 or a beat above 54 as "untouched".
    const uint32_t limit = item == 0 ? 14 : item == 1 ? 255 : 54;
    EXPECT_EQ(value, last <= limit ? last : 999u) << "key " << key;
    const char *const banks[] = {"BANKA", "BANKB", "TEMP"};
    const std::string name = std::string("BFX_") + banks[bank] + std::to_string(position) + "_" + std::to_string(item);
    EXPECT_EQ(stored.count(name), 1u) << name;
  }
}

}  // namespace
}  // namespace nvx::test
