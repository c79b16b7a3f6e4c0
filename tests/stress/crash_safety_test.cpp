// Crash safety: a writer process that changes settings through the public setters is killed with
// SIGKILL at random moments, again and again, on the same settings file. After every kill the file
// must parse, and every setting whose setter had returned must read back (through the public
// getter) as the value last returned, or as a value whose setter had started but not returned (its
// update may have been renamed into place just before the kill).
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "crash_settings.h"
#include "stress_support.h"
#include "support/scratch_dir.h"

namespace nvx::stress {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 200;
constexpr long kCalibrationCalls = 20;

struct Known {
  std::optional<uint32_t> returned;  // the value of the last setter call that returned
  std::set<uint32_t> started;        // values of calls started since then that never returned
};

class CrashSafetyTest : public ::testing::Test {
 protected:
  CrashSafetyTest() {
    env_.set("XDG_CONFIG_HOME", dir_.path());
    env_.set("MXRK7_VIRTUAL_MIXERS", dir_.write("mixers.json", R"({"mixers": [{}]})"));
    env_.set("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    env_.set("XDG_RUNTIME_DIR", std::nullopt);
  }

  std::string settingsFile() const { return dir_.file(kSettingsName); }

  // Takes in what a writer reported; false (with a failure) on a setter that did not return NVX_OK.
  bool account(const std::vector<std::string> &lines, bool *killedInsideACall) {
    *killedInsideACall = false;
    for (const std::string &line : lines) {
      std::istringstream words(line);
      std::string what;
      uint32_t setting = 0, value = 0;
      if (!(words >> what >> setting >> value) || setting >= kCrashSettings) {
        ADD_FAILURE() << "unexpected writer output: " << line;
        return false;
      }
      Known &known = known_[setting];
      if (what == "start") {
        known.started.insert(value);
        *killedInsideACall = true;
      } else if (what == "done") {
        known.returned = value;
        known.started.clear();
        *killedInsideACall = false;
      } else {
        ADD_FAILURE() << "a setter failed: " << line;
        return false;
      }
    }
    return true;
  }

  // The file parses, and every returned setting reads back as allowed.
  void verify(int round) {
    const bool exists = access(settingsFile().c_str(), F_OK) == 0;
    if (exists) {
      ASSERT_TRUE(readIntegers(settingsFile()).has_value())
          << "round " << round << ": the settings file does not parse:\n" << fileBytes(settingsFile());
    }
    for (uint32_t setting = 0; setting < kCrashSettings; ++setting) {
      const Known &known = known_[setting];
      if (!known.returned) continue;
      ASSERT_TRUE(exists) << "round " << round << ": settings were stored, but the file is gone";
      uint32_t value = 9999;
      ASSERT_EQ(getSetting(setting, &value), NVX_OK) << "round " << round << ", setting " << setting;
      const bool allowed = value == *known.returned || known.started.contains(value);
      ASSERT_TRUE(allowed) << "round " << round << ", setting " << setting << ": reads " << value
                           << ", but the last setter that returned stored " << *known.returned;
    }
  }

  test::ScratchDir dir_;
  test::EnvGuard env_;
  std::vector<Known> known_ = std::vector<Known>(kCrashSettings);
};

TEST_F(CrashSafetyTest, KilledWritersLeaveAReadableFileWithEveryReturnedSetting) {
  // How long one setter call takes here, so that kills can be spread over a few calls.
  Clock::duration perCall{};
  {
    Process writer({NVX_STRESS_WRITER, "1", std::to_string(kCalibrationCalls)});
    const auto firstLine = writer.readLine(30s);
    ASSERT_TRUE(firstLine.has_value()) << "the writer did not start";
    const auto first = Clock::now();
    auto lines = writer.drain();
    perCall = (Clock::now() - first) / kCalibrationCalls;
    ASSERT_EQ(writer.wait(), 0);
    lines.insert(lines.begin(), *firstLine);
    bool inside = false;
    ASSERT_TRUE(account(lines, &inside));
    ASSERT_NO_FATAL_FAILURE(verify(-1));
  }

  const int rounds = kRounds * scale();
  const char *seedText = std::getenv("MXRK7_STRESS_SEED");
  const auto seed = seedText ? static_cast<std::mt19937::result_type>(std::strtoul(seedText, nullptr, 10))
                             : std::random_device{}();
  std::mt19937 random(seed);
  const auto window = std::chrono::duration_cast<std::chrono::microseconds>(perCall * 3);
  std::uniform_int_distribution<int64_t> delay(0, std::max<int64_t>(window.count(), 1));
  int insideCalls = 0, withTempFiles = 0;

  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Process writer({NVX_STRESS_WRITER, std::to_string(seed + static_cast<unsigned>(round) + 2)});
    // Most kills land among the setter calls; every tenth while the process is still starting.
    std::optional<std::string> firstLine;
    if (round % 10 != 0) {
      firstLine = writer.readLine(30s);
      ASSERT_TRUE(firstLine.has_value()) << "the writer did not start";
      std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
    }
    writer.kill(SIGKILL);
    auto lines = writer.drain();
    if (firstLine) lines.insert(lines.begin(), *firstLine);
    const int status = writer.wait();
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the writer ended before the kill";
    bool inside = false;
    ASSERT_TRUE(account(lines, &inside));
    insideCalls += inside ? 1 : 0;
    withTempFiles += leftoverTempFiles(dir_.path()).empty() ? 0 : 1;
    ASSERT_NO_FATAL_FAILURE(verify(round));
  }

  // The next update removes what killed writers left behind; nothing was ever unreadable, so no
  // backup of an unreadable file was made.
  Process last({NVX_STRESS_WRITER, "0", "1"});
  last.drain();
  ASSERT_EQ(last.wait(), 0);
  EXPECT_EQ(leftoverTempFiles(dir_.path()), std::vector<std::string>{});
  EXPECT_NE(access((settingsFile() + ".bak").c_str(), F_OK), 0) << "an unreadable file was replaced";

  // Without kills inside setter calls the test would prove nothing.
  EXPECT_GT(insideCalls, rounds / 2);
  std::cout << "crash safety: " << rounds << " kills, " << insideCalls << " inside a setter call, " << withTempFiles
            << " left a temporary file; one setter call took " << std::chrono::duration<double, std::milli>(perCall).count()
            << " ms; seed " << seed << "\n";
  RecordProperty("kills", rounds);
  RecordProperty("kills_inside_a_call", insideCalls);
  RecordProperty("kills_leaving_a_temporary_file", withTempFiles);
}

}  // namespace
}  // namespace nvx::stress
