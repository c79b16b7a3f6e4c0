// show, get, list and routing: what the settings file holds and the menus, as the tool prints them.
#include <map>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

using nlohmann::json;

class ToolShow : public CliTest {};

TEST_F(ToolShow, ShowMarksFileValuesDefaultsAndUnsetSettings) {
  settings.writeIntegers({{"PADMode", 2}, {"FaderStartMode", 7}, {"CHFADERBANK_B", 0x2001}});
  const auto run = runTool({"show", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  std::map<std::string, std::vector<json>> shown;
  for (const auto &entry : run.json()["settings"]) shown[entry["setting"]].push_back(entry);
  EXPECT_EQ(shown["beat-fx"].size(), 3u * 6u * 3u) << "each instance once";
  EXPECT_EQ(shown["boost"][0]["source"], "default");
  EXPECT_EQ(shown["boost"][0]["fields"][0]["text"], "-19 dB");
  EXPECT_EQ(shown["fx-filter"][0]["source"], "unset");
  EXPECT_TRUE(shown["fx-filter"][0]["fields"].is_null());
  EXPECT_EQ(shown["pad-mode"][0]["source"], "file");
  EXPECT_EQ(shown["fader-start"][0]["source"], "invalid");
  EXPECT_EQ(shown["fader-start"][0]["stored"], 7);
  // The shared channel-fader key holds the temporary bank's word: bank B has none of its own.
  ASSERT_EQ(shown["channel-fader"].size(), 3u);
  EXPECT_EQ(shown["channel-fader"][1]["source"], "unset");
  EXPECT_EQ(shown["channel-fader"][2]["fields"][0]["text"], "FADER FILTER");

  const auto text = runTool({"show"});
  for (const char *mark : {"[default]", "[not set]", "[invalid: the file holds 7]"})
    EXPECT_NE(text.out.find(mark), std::string::npos) << mark;
}

TEST_F(ToolShow, GetWithFewerArgumentsListsEveryMatchingInstance) {
  const auto bank = runTool({"get", "beat-fx", "A", "--json"});
  ASSERT_EQ(bank.exitCode, 0) << bank.transcript();
  EXPECT_EQ(bank.json()["settings"].size(), 18u);
  for (const auto &entry : bank.json()["settings"]) EXPECT_EQ(entry["args"]["bank"], "A");
  EXPECT_EQ(runTool({"get", "beat-fx", "A", "2", "--json"}).json()["settings"].size(), 3u);
  EXPECT_EQ(runTool({"routing", "--json"}).json()["settings"].size(), 5u) << "the routing verb: every channel";
}

TEST_F(ToolShow, ListGivesMenusAndRanges) {
  const auto boost = runTool({"list", "boost", "--json"});
  ASSERT_EQ(boost.exitCode, 0) << boost.transcript();
  EXPECT_EQ(boost.json()["fields"][0]["domains"][0]["domain"]["choices"][1]["text"], "-10 dB");
  const auto pad = runTool({"list", "pad-mode", "--json"});
  EXPECT_EQ(pad.json()["fields"][0]["domains"][0]["domain"]["indices"], (json{{"first", 0}, {"last", 2}}));
  // The routing menu differs per channel; naming a channel lists only its menu.
  const auto routing = runTool({"list", "routing", "2", "--json"});
  ASSERT_EQ(routing.json()["fields"][0]["domains"].size(), 1u);
  EXPECT_EQ(routing.json()["fields"][0]["domains"][0]["for"]["channel"], 2);
  EXPECT_EQ(runTool({"list", "routing", "--json"}).json()["fields"][0]["domains"].size(), 5u);
  const auto text = runTool({"list", "beat-fx"});
  EXPECT_NE(text.out.find("FADER SYNTH3"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("a number 0-54"), std::string::npos) << text.out;
}

}  // namespace
}  // namespace nvx::test
