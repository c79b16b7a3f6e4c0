// Crash safety: a writer process that changes beat FX values through the public setters is killed
// with SIGKILL at random moments, again and again, on the same settings file. After every kill the
// file must parse, and every value whose setter had returned must read back (through the public
// getter) as the value last returned, or as one whose setter had started but not returned (its
// update may have been renamed into place just before the kill).
#include <gtest/gtest.h>
#include <signal.h>

#include <iostream>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "NorvaneMXRK7Setup.h"
#include "stress.h"
#include "support/plist_integers.h"
#include "support/process.h"
#include "support/sandbox.h"

namespace nvx::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRounds = 200;
constexpr int kSlots = 54;  // 3 banks x 6 positions x 3 items, as the helper numbers them

struct Known {
  std::optional<uint32_t> returned;  // the value of the last setter call that returned
  std::set<uint32_t> started;        // values of calls started since then that never returned
};

class StressCrash : public ::testing::Test, public Sandbox {
 protected:
  StressCrash() { bus.setMixers({VirtualMixer{}}); }

  // Takes in what a writer reported; whether it was killed inside a setter call.
  bool account(const std::vector<std::string> &lines) {
    bool inside = false;
    for (const std::string &line : lines) {
      std::istringstream words(line);
      std::string what;
      uint32_t slot = 0, value = 0;
      if (!(words >> what >> slot >> value) || slot >= kSlots || what == "failed") {
        ADD_FAILURE() << "unexpected writer output: " << line;
        continue;
      }
      Known &known = known_[slot];
      inside = what == "start";
      if (inside) known.started.insert(value);
      else known = {value, {}};
    }
    return inside;
  }

  // The file parses, and every returned value reads back as allowed.
  void verify(int round) {
    if (!settings.exists()) return;
    ASSERT_TRUE(plistIntegers(readFile(settings.filePath()))) << "round " << round << ": the file does not parse";
    for (uint32_t slot = 0; slot < kSlots; ++slot) {
      const Known &known = known_[slot];
      if (!known.returned) continue;
      uint32_t value = 9999;
      ASSERT_EQ(NVX_GetFXBANKBFXModeIndex(0, slot / 18, slot / 3 % 6, slot % 3, &value), NVX_OK);
      ASSERT_TRUE(value == *known.returned || known.started.contains(value))
          << "round " << round << ", slot " << slot << ": reads " << value
          << ", but the last setter that returned stored " << *known.returned;
    }
  }

  std::vector<Known> known_ = std::vector<Known>(kSlots);
};

TEST_F(StressCrash, KilledWritersLeaveAReadableFileWithEveryReturnedValue) {
  // How long one setter call takes here, so that kills can be spread over a few calls.
  constexpr int kCalibration = 50;  // enough calls that the start of the process hardly counts
  const auto from = Clock::now();
  account(run({NVX_API_HELPER, "write", "1", std::to_string(kCalibration)}).lines());
  const auto perCall = (Clock::now() - from) / kCalibration;
  ASSERT_NO_FATAL_FAILURE(verify(-1));

  const int rounds = kRounds * testScale();
  const char *seedText = std::getenv("MXRK7_STRESS_SEED");
  const auto seed = seedText ? static_cast<std::mt19937::result_type>(std::strtoul(seedText, nullptr, 10))
                             : std::random_device{}();
  std::mt19937 random(seed);
  std::uniform_int_distribution<int64_t> delay(
      0, std::max<int64_t>(std::chrono::duration_cast<std::chrono::microseconds>(perCall * 3).count(), 1));
  int insideCalls = 0, withTempFiles = 0;
  SCOPED_TRACE("seed " + std::to_string(seed));
  for (int round = 0; round < rounds; ++round) {
    Process writer({NVX_API_HELPER, "write", std::to_string(seed + static_cast<unsigned>(round) + 2)});
    // Most kills land among the setter calls; every tenth while the process is still starting.
    std::optional<std::string> started;
    if (round % 10 != 0) {
      started = writer.readLine(30s);
      ASSERT_TRUE(started) << "the writer did not start";
      std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
    }
    writer.signal(SIGKILL);
    const auto end = writer.finish();
    ASSERT_EQ(end.exitCode, 128 + SIGKILL) << "the writer ended before the kill";
    auto reported = end.lines();
    if (started) reported.insert(reported.begin(), *started);
    insideCalls += account(reported);
    withTempFiles += !temporaryFilesIn(settings.home()).empty();
    ASSERT_NO_FATAL_FAILURE(verify(round));
  }

  // The next update removes what killed writers left; nothing was unreadable, so nothing was kept.
  EXPECT_EQ(run({NVX_API_HELPER, "write", "0", "1"}).exitCode, 0);
  EXPECT_EQ(temporaryFilesIn(settings.home()), std::vector<std::string>{});
  EXPECT_FALSE(std::filesystem::exists(settings.filePath() + ".bak")) << "an unreadable file was replaced";
  EXPECT_GT(insideCalls, rounds / 2) << "without kills inside setter calls the test proves nothing";
  std::cout << "crash safety: " << rounds << " kills, " << insideCalls << " inside a setter call, " << withTempFiles
            << " left a temporary file; one setter call took "
            << std::chrono::duration<double, std::milli>(perCall).count() << " ms; seed " << seed << "\n";
}

}  // namespace
}  // namespace nvx::test
