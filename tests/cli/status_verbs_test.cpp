// info, devices, udev-rule, and --virtual with the global options.
#include <filesystem>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

using nlohmann::json;

class ToolStatus : public CliTest {};

TEST_F(ToolStatus, InfoReportsEachMixerFromItsOwnAnswers) {
  VirtualMixer first, second, busy;
  first.firmware = {0x05, 0x01};
  first.selectors = {4, 4, 1, 0};
  first.serato = 1;
  second.firmware = {0x10, 0x02};
  second.fail = {"0x8004"};
  second.shortReads = {{"0x8002", 1}};  // the selector byte is the second one: never arrives
  busy.open = "busy";
  bus.setMixers({first, second, busy});
  const auto run = runTool({"info", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.json()["connection"], "connected");
  const auto &mixers = run.json()["bus"]["mixers"];
  ASSERT_EQ(mixers.size(), 3u);
  EXPECT_EQ(mixers[0]["firmware"]["number"], 0x0105);
  EXPECT_EQ(mixers[0]["input_selectors"], json({4, 4, 1, 0}));
  EXPECT_EQ(mixers[0]["serato"]["active"], true);
  // An answer that cannot be read is missing, never a stale or made-up value.
  EXPECT_EQ(mixers[1]["firmware"]["text"], "2.10");
  EXPECT_TRUE(mixers[1]["serato"].is_null());
  EXPECT_EQ(mixers[1]["input_selectors"], json({nullptr, nullptr, nullptr, nullptr}));
  EXPECT_EQ(mixers[2]["access"], "busy");
  EXPECT_TRUE(mixers[2]["firmware"].is_null());
}

TEST_F(ToolStatus, DevicesExitCodeFollowsWhatCanBeOpened) {
  const std::vector<std::pair<std::vector<std::string>, int>> cases = {{{}, 3}, {{"busy"}, 4}, {{"busy", "ok"}, 0}};
  for (const auto &[opens, exitCode] : cases) {
    SCOPED_TRACE(::testing::PrintToString(opens));
    bus.setMixersOpening(opens);
    const auto run = runTool({"devices", "--json"});
    EXPECT_EQ(run.exitCode, exitCode) << run.transcript();
    ASSERT_EQ(run.json()["mixers"].size(), opens.size());
    for (size_t i = 0; i < opens.size(); ++i) {
      EXPECT_EQ(run.json()["mixers"][i]["access"], opens[i]);
      EXPECT_EQ(run.json()["mixers"][i]["fix"].is_string(), opens[i] != "ok");
    }
    EXPECT_EQ(runTool({"devices"}).exitCode, exitCode);
  }
}

TEST_F(ToolStatus, UdevRuleIsTheTextTheBuildInstallsAndFollowsTheUsbIdOverride) {
  const auto run = runTool({"udev-rule"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.out, readFile(MXRK7_STAGED_RULE));
  EXPECT_EQ(runTool({"udev-rule", "--json"}).json()["text"], run.out);
  env.set("MXRK7_USB_ID", "0A1B:00Cd");
  const auto other = runTool({"udev-rule"});
  EXPECT_NE(other.out.find("ATTR{idVendor}==\"0a1b\", ATTR{idProduct}==\"00cd\""), std::string::npos) << other.out;
}

TEST_F(ToolStatus, VirtualUsesTheDemoMixersAndADemoSettingsFolderUnlessGivenOthers) {
  // Mixers already chosen and a given folder are kept; global options go before or after the verb.
  bus.setMixers({VirtualMixer{}});
  const auto run = runTool({"--virtual", "--config-home", settings.home(), "set", "pad-mode", "1", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.json()["mixers"]["found"], 1);
  EXPECT_EQ(settings.value("PADMode"), 1);

  ScratchDir state;
  env.set("MXRK7_VIRTUAL_MIXERS", std::nullopt);
  env.set("XDG_STATE_HOME", state.path());
  const auto info = runTool({"--virtual", "info", "--json"});
  ASSERT_EQ(info.exitCode, 0) << info.transcript();
  EXPECT_EQ(info.json()["bus"]["mixers"].size(), 2u);
  ASSERT_EQ(runTool({"set", "pad-mode", "2", "--virtual"}).exitCode, 0);
  EXPECT_EQ(settings.value("PADMode"), 1) << "the demo wrote the real settings";
  EXPECT_TRUE(std::filesystem::exists(state.file("mxrk7/demo/") + kSettingsFileName));
}

}  // namespace
}  // namespace nvx::test
