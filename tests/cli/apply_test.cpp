// apply: sends what the settings file holds to every mixer, and nothing for what it lacks.
#include <algorithm>
#include <thread>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

struct ApplyCase {
  const char *name;
  std::map<std::string, int64_t> file;  // empty: no file
  std::vector<std::string> sent;        // setting and instance, as --json reports them
  std::vector<std::string> skipped;
};

void PrintTo(const ApplyCase &c, std::ostream *os) { *os << c.name; }

std::vector<std::string> targets(const nlohmann::json &entries) {
  std::vector<std::string> out;
  for (const auto &entry : entries) out.push_back(entry["setting"].get<std::string>() + entry["args"].dump());
  std::sort(out.begin(), out.end());
  return out;
}

class ToolApply : public CliTest, public ::testing::WithParamInterface<ApplyCase> {};

TEST_P(ToolApply, SendsWhatTheFileHoldsAndNothingElse) {
  const auto &c = GetParam();
  bus.setMixers({VirtualMixer{}, VirtualMixer{}});
  if (!c.file.empty()) settings.writeIntegers(c.file);
  const auto run = runTool({"apply", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(targets(run.json()["sent"]), c.sent);
  EXPECT_EQ(targets(run.json()["skipped"]), c.skipped);
  EXPECT_EQ(bus.writes().size(), 2 * c.sent.size()) << "one write of each to each mixer";
  EXPECT_EQ(settings.exists(), !c.file.empty()) << "apply stores nothing";
}

INSTANTIATE_TEST_SUITE_P(
    , ToolApply,
    ::testing::Values(
        ApplyCase{"noFile", {}, {}, {}},
        // Nothing for "PopUp", the filter banks and the other settings the file lacks; the stored
        // words carry the bank of the channel fader and the tail.
        ApplyCase{"everyKindOnce",
                  {{"MaxLevel", 1}, {"Output1", 3}, {"PADMode", 2}, {"BANKA_FILTER", 0x0340}, {"BFX_BANKB3_1", 0x59C0},
                   {"CHFADERBANK_B", 0x2001}, {"TAIL_TEMP", 0x2001}, {"PopUp", 3}},
                  {R"(beat-fx-tail{"bank":"temporary"})", R"(beat-fx{"bank":"B","item":"depth","position":4})",
                   "boost{}",
                   R"(channel-fader{"bank":"temporary"})", R"(fx-filter{"bank":"A"})", "pad-mode{}",
                   R"(routing{"channel":1})"},
                  {}},
        ApplyCase{"invalidValuesAreSkipped",
                  {{"MaxLevel", 9}, {"Output0", 12}, {"FaderStartMode", 2}},
                  {"fader-start{}"},
                  {"boost{}", R"(routing{"channel":0})"}}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(CliTest, ApplyNeedsAMixerAndCanWaitForOne) {
  settings.writeIntegers({{"PADMode", 1}});
  EXPECT_EQ(runTool({"apply"}).exitCode, 3) << "no mixer";
  EXPECT_EQ(runTool({"apply", "--wait", "--timeout", "0"}).exitCode, 3);
  // Plugged in, not yet accessible: --wait tries again until it can open the mixer.
  bus.setMixersOpening({"busy"});
  Process apply({MXRK7_TOOL, "apply", "--wait", "--timeout", "20"});
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (bus.log().empty() && std::chrono::steady_clock::now() < deadline) std::this_thread::sleep_for(10ms);
  ASSERT_FALSE(bus.log().empty()) << "apply did not try the mixer";
  bus.setMixers({VirtualMixer{}});
  const auto run = apply.finish();
  EXPECT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(bus.writes(), std::vector<std::string>{writeLine(0, 0x8514, 0x0100)});
}

}  // namespace
}  // namespace nvx::test
