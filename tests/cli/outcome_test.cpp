// What a change reports, per mixer and for the file, and how the tool exits: the first matching row
// of the exit table wins (5 not stored, 4 no mixer took it, 6 some did, 0), for set and import alike.
#include <filesystem>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

struct OutcomeCase {
  const char *name;
  std::vector<std::string> mixers;  // one per entry: "ok", "busy", "denied", or "fail" (its request fails)
  bool folderWritable;
  int exitCode;
  std::string result;
  std::vector<std::string> each;  // each mixer's "result"
  std::string says;               // in the text for people
};

void PrintTo(const OutcomeCase &c, std::ostream *os) { *os << c.name; }

class ToolOutcome : public CliTest, public ::testing::WithParamInterface<OutcomeCase> {};

TEST_P(ToolOutcome, ReportsEachMixerAndTheFileAndExitsByTheTable) {
  const auto &c = GetParam();
  std::vector<VirtualMixer> mixers;
  for (const auto &how : c.mixers) {
    mixers.emplace_back().open = how == "fail" ? "ok" : how;
    if (how == "fail") mixers.back().fail = {"0x8514"};
  }
  bus.setMixers(mixers);
  const std::string padMode = document(R"({"setting": "pad-mode", "fields": [{"name": "value", "index": 2}]})");
  // A folder that cannot be made, whoever runs the test: its parent is a file.
  const std::string unwritable = settings.dir().write("plain-file", "") + "/config";
  for (const std::vector<std::string> &verb : {std::vector<std::string>{"set", "pad-mode", "2"}, {"import", padMode}}) {
    SCOPED_TRACE(verb[0]);
    std::filesystem::remove(settings.filePath());
    std::vector<std::string> words = verb;
    if (!c.folderWritable) words.insert(words.end(), {"--config-home", unwritable});
    const auto text = runTool(words);
    EXPECT_EQ(text.exitCode, c.exitCode) << text.transcript();
    EXPECT_NE(text.out.find(c.says), std::string::npos) << text.out;
    words.push_back("--json");
    const auto run = runTool(words);
    EXPECT_EQ(run.exitCode, c.exitCode) << run.transcript();
    EXPECT_EQ(run.json()["result"], c.result);
    std::vector<std::string> each;
    for (const auto &mixer : run.json()["mixers"]["each"]) each.push_back(mixer["result"]);
    EXPECT_EQ(each, c.each);
    EXPECT_EQ(run.json()["stored"]["ok"], c.folderWritable);
    EXPECT_EQ(settings.value("PADMode"), c.folderWritable ? std::optional<int64_t>(2) : std::nullopt);
  }
}

INSTANTIATE_TEST_SUITE_P(
    , ToolOutcome,
    ::testing::Values(
        OutcomeCase{"noMixer", {}, true, 0, "ok", {}, "no mixer is connected"},
        OutcomeCase{"everyMixerTookIt", {"ok", "ok"}, true, 0, "ok", {"ok", "ok"}, "sent to 2 mixers; stored"},
        OutcomeCase{"theRequestFailed", {"fail"}, true, 4, "not-sent", {"failed"}, "NOT sent"},
        OutcomeCase{"onlyABusyMixer", {"busy"}, true, 4, "not-sent", {"busy"}, "is busy"},
        OutcomeCase{"busyBesideAWorkingOne", {"busy", "ok"}, true, 6, "partial", {"busy", "ok"}, "sent to mixer 1;"},
        OutcomeCase{
            "deniedBesideAWorkingOne", {"ok", "denied"}, true, 6, "partial", {"ok", "denied"}, "may not be opened"},
        OutcomeCase{"folderNotWritable", {"ok"}, false, 5, "not-stored", {"ok"}, "NOT stored"},
        OutcomeCase{"notStoredWinsOverNotSent", {"busy"}, false, 5, "not-stored", {"busy"}, "NOT stored"}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(CliTest, MixerOptionSendsToOneMixerAndStoresAsUsual) {
  bus.setMixers({VirtualMixer{}, VirtualMixer{}});
  EXPECT_EQ(runTool({"set", "pad-mode", "2", "--mixer", "1"}).exitCode, 0);
  EXPECT_EQ(bus.writes(), std::vector<std::string>{writeLine(1, 0x8514, 0x0200)});
  EXPECT_EQ(runTool({"set", "pad-mode", "0", "--mixer", "7"}).exitCode, 3) << "a mixer that is not connected";
  EXPECT_EQ(settings.value("PADMode"), 2) << "nothing changed for a mixer that is not there";
}

TEST_F(CliTest, ARoutingWarningIsShownAndTheChangeStillSucceeds) {
  VirtualMixer deckOff;
  deckOff.selectors = {2, 4, 4, 4};  // deck 1's selector is not on the position the routing needs
  bus.setMixers({VirtualMixer{}, deckOff});
  const auto set = runTool({"set", "routing", "0", "MIC", "--json"});
  ASSERT_EQ(set.exitCode, 0) << set.transcript();
  EXPECT_EQ(set.json()["result"], "warning");
  EXPECT_FALSE(set.json()["warning"].get<std::string>().empty());
  EXPECT_NE(runTool({"set", "routing", "0", "MIC"}).out.find("Warning: "), std::string::npos);
  const std::string routing =
      document(R"({"setting": "routing", "args": {"channel": 0}, "fields": [{"name": "source", "text": "MIC"}]})");
  const auto import = runTool({"import", routing, "--json"});
  EXPECT_EQ(import.exitCode, 0) << import.transcript();
  EXPECT_EQ(import.json()["changes"][0]["result"], "warning");
}

}  // namespace
}  // namespace nvx::test
