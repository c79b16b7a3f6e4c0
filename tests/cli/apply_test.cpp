// apply: sends exactly what the settings file holds, and nothing for what it lacks.
#include <algorithm>
#include <thread>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

using nlohmann::json;

class Apply : public CliTest {
 protected:
  Apply() { bus.setMixers({VirtualMixer{}}); }

  static std::vector<std::string> sorted(std::vector<std::string> lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
  }
};

TEST_F(Apply, EmptySettingsFolderSendsNothing) {
  const auto run = runTool({"apply", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_TRUE(bus.requests().empty());
  EXPECT_TRUE(run.json()["sent"].empty());
  EXPECT_FALSE(settings.exists());
}

TEST_F(Apply, SendsWhatTheFileHoldsAndNothingElse) {
  settings.writeIntegers({{"MaxLevel", 1},
                          {"Output1", 3},
                          {"PADMode", 2},
                          {"BANKA_FILTER", 0x0340},
                          {"BFX_BANKB3_1", 0x59C0},
                          {"CHFADERBANK_B", 0x2001},
                          {"TAIL_TEMP", 0x2001},
                          {"PopUp", 3}});
  const auto run = runTool({"apply", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  // Nothing for "PopUp", for the two filter banks and all other settings the file lacks.
  EXPECT_EQ(sorted(bus.requests()), sorted({writeLine(0, 0x8002, 0x0207), writeLine(0, 0x8003, 0x0200),
                                            writeLine(0, 0x850D, 0x0340), writeLine(0, 0x850E, 0x59C0),
                                            writeLine(0, 0x850F, 0x2001), writeLine(0, 0x8510, 0x2001),
                                            writeLine(0, 0x8514, 0x0200)}));
  EXPECT_EQ(run.json()["sent"].size(), 7u);
  EXPECT_TRUE(run.json()["skipped"].empty());
}

TEST_F(Apply, WithoutBoostInTheFileNoBoostIsSent) {
  settings.writeIntegers({{"PADMode", 1}});
  ASSERT_EQ(runTool({"apply"}).exitCode, 0);
  EXPECT_EQ(bus.requests(), std::vector<std::string>{writeLine(0, 0x8514, 0x0100)});
}

TEST_F(Apply, AllThreeFilterWordsAreReplayedInBankOrder) {
  settings.writeIntegers({{"TEMPORARY_FILTER", 0x24FF}, {"BANKA_FILTER", 0x0102}, {"BANKB_FILTER", 0x1340}});
  const auto run = runTool({"apply", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(bus.requests(), (std::vector<std::string>{writeLine(0, 0x850D, 0x0102), writeLine(0, 0x850D, 0x1340),
                                                      writeLine(0, 0x850D, 0x24FF)}));
  for (const auto &sent : run.json()["sent"]) EXPECT_EQ(sent["via"], "replay");
}

TEST_F(Apply, InvalidStoredValuesAreSkippedAndNamed) {
  settings.writeIntegers({{"MaxLevel", 9}, {"Output0", 12}, {"FaderStartMode", 2}});
  const auto run = runTool({"apply", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(bus.requests(), std::vector<std::string>{writeLine(0, 0x8513, 0x0200)});
  std::vector<std::string> skipped;
  for (const auto &skip : run.json()["skipped"]) skipped.push_back(skip["setting"]);
  EXPECT_EQ(sorted(skipped), (std::vector<std::string>{"boost", "routing"}));
  EXPECT_NE(runTool({"apply"}).out.find("the file holds 9"), std::string::npos);
}

TEST_F(Apply, ReachesEveryMixer) {
  bus.setMixers({VirtualMixer{}, VirtualMixer{}});
  settings.writeIntegers({{"CRFaderCutLagMode", 2}});
  ASSERT_EQ(runTool({"apply"}).exitCode, 0);
  EXPECT_EQ(bus.requests(), (std::vector<std::string>{writeLine(0, 0x8515, 0x0200), writeLine(1, 0x8515, 0x0200)}));
}

TEST_F(Apply, NeedsAMixerThatCanBeOpened) {
  settings.writeIntegers({{"PADMode", 1}});
  bus.setMixers({});
  const auto none = runTool({"apply", "--json"});
  EXPECT_EQ(none.exitCode, 3) << none.transcript();
  EXPECT_EQ(none.json()["error"]["exit_code"], 3);

  bus.setMixers({busyMixer()});
  const auto busy = runTool({"apply"});
  EXPECT_EQ(busy.exitCode, 4) << busy.transcript();
  EXPECT_NE(busy.out.find("busy"), std::string::npos) << busy.out;
  EXPECT_TRUE(bus.requests().empty());
}

TEST_F(Apply, UnreadableFileIsAFailure) {
  settings.writeRaw("not a property list");
  const auto run = runTool({"apply"});
  EXPECT_EQ(run.exitCode, 5) << run.transcript();
  EXPECT_TRUE(bus.requests().empty());
}

TEST_F(Apply, WaitGivesUpAfterTheTimeout) {
  settings.writeIntegers({{"PADMode", 1}});
  bus.setMixers({});
  const auto run = runTool({"apply", "--wait", "--timeout", "1"});
  EXPECT_EQ(run.exitCode, 3) << run.transcript();
  EXPECT_GE(run.took, std::chrono::milliseconds(1000));
}

TEST_F(Apply, WaitSendsOnceTheMixerCanBeOpened) {
  settings.writeIntegers({{"PADMode", 1}});
  bus.setMixers({busyMixer()});  // plugged in, not yet accessible
  ToolProcess apply({"apply", "--wait", "--timeout", "20"});
  std::this_thread::sleep_for(std::chrono::milliseconds(600));
  bus.setMixers({VirtualMixer{}});
  const auto run = apply.finish();
  EXPECT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(bus.requests(), std::vector<std::string>{writeLine(0, 0x8514, 0x0100)});
}

}  // namespace
}  // namespace nvx::test
