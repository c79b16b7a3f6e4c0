// info, devices, udev-rule, the global options, --virtual and --help.
#include <filesystem>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

using nlohmann::json;

class ToolStatus : public CliTest {};

TEST_F(ToolStatus, InfoReportsEachMixerFromItsOwnAnswers) {
  EXPECT_EQ(runTool({"info", "--json"}).json()["connection"], "not connected");
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
  EXPECT_EQ(mixers[0]["firmware"]["text"], "1.05");
  EXPECT_EQ(mixers[0]["firmware"]["number"], 0x0105);
  EXPECT_EQ(mixers[0]["input_selectors"], json({4, 4, 1, 0}));
  EXPECT_EQ(mixers[0]["serato"]["active"], true);
  // An answer that cannot be read is missing, never a stale or made-up value.
  EXPECT_EQ(mixers[1]["firmware"]["text"], "2.10");
  EXPECT_TRUE(mixers[1]["serato"].is_null());
  EXPECT_EQ(mixers[1]["input_selectors"], json({nullptr, nullptr, nullptr, nullptr}));
  EXPECT_EQ(mixers[2]["access"], "busy");
  EXPECT_TRUE(mixers[2]["firmware"].is_null());
  EXPECT_NE(runTool({"info"}).out.find("2.10"), std::string::npos) << "the text form";
}

struct DevicesCase {
  const char *name;
  std::vector<std::string> opens;  // "ok" or "busy", one per mixer
  int exitCode;
};

void PrintTo(const DevicesCase &c, std::ostream *os) { *os << c.name; }

class ToolDevices : public CliTest, public ::testing::WithParamInterface<DevicesCase> {};

TEST_P(ToolDevices, ExitCodeFollowsWhatCanBeOpened) {
  bus.setMixersOpening(GetParam().opens);
  const auto run = runTool({"devices", "--json"});
  EXPECT_EQ(run.exitCode, GetParam().exitCode) << run.transcript();
  const auto &listed = run.json()["mixers"];
  ASSERT_EQ(listed.size(), GetParam().opens.size());
  for (size_t i = 0; i < GetParam().opens.size(); ++i) {
    EXPECT_EQ(listed[i]["access"], GetParam().opens[i]);
    EXPECT_EQ(listed[i]["fix"].is_string(), GetParam().opens[i] != "ok");
  }
  EXPECT_EQ(runTool({"devices"}).exitCode, GetParam().exitCode);
}

INSTANTIATE_TEST_SUITE_P(, ToolDevices,
                         ::testing::Values(DevicesCase{"none", {}, 3}, DevicesCase{"one", {"ok"}, 0},
                                           DevicesCase{"busy", {"busy"}, 4},
                                           DevicesCase{"busyThenFree", {"busy", "ok"}, 0},
                                           DevicesCase{"allBusy", {"busy", "busy"}, 4}),
                         [](const auto &test) { return std::string(test.param.name); });

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

TEST_F(ToolStatus, EveryVerbHasHelpWithExamples) {
  for (const char *verb : {"info", "devices", "udev-rule", "show", "list", "get", "set", "routing", "apply", "watch",
                           "export", "import", "doctor"}) {
    const auto run = runTool({verb, "--help"});
    EXPECT_EQ(run.exitCode, 0) << verb;
    EXPECT_NE(run.out.find("Examples:\n  mxrk7"), std::string::npos) << verb << "\n" << run.out;
  }
  EXPECT_NE(runTool({"--help"}).out.find("Exit codes"), std::string::npos);
}

}  // namespace
}  // namespace nvx::test
