// info, devices, udev-rule, the global options, --virtual and --help.
#include <filesystem>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

using nlohmann::json;

class ToolStatus : public CliTest {};

TEST_F(ToolStatus, InfoReportsEachMixerFromItsOwnAnswers) {
  VirtualMixer first;
  first.firmware = {0x05, 0x01};
  first.selectors = {4, 4, 1, 0};
  first.serato = 1;
  VirtualMixer second;
  second.firmware = {0x10, 0x02};
  second.selectors = {3, 2, 4, 4};
  bus.setMixers({first, second});

  const auto run = runTool({"info", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  const json doc = run.json();
  EXPECT_EQ(doc["connection"], "connected");
  const auto &mixers = doc["bus"]["mixers"];
  ASSERT_EQ(mixers.size(), 2u);
  EXPECT_EQ(mixers[0]["firmware"]["text"], "1.05");
  EXPECT_EQ(mixers[0]["firmware"]["number"], 0x0105);
  EXPECT_EQ(mixers[1]["firmware"]["text"], "2.10");
  EXPECT_EQ(mixers[0]["input_selectors"], json({4, 4, 1, 0}));
  EXPECT_EQ(mixers[1]["input_selectors"], json({3, 2, 4, 4}));
  EXPECT_EQ(mixers[0]["serato"]["active"], true);
  EXPECT_EQ(mixers[1]["serato"]["active"], false);
  EXPECT_NE(runTool({"info"}).out.find("2.10"), std::string::npos) << "the text form";
}

TEST_F(ToolStatus, InfoShowsUnreadableAnswersAsMissingNotAsStaleValues) {
  VirtualMixer mixer;
  mixer.fail = {"0x8001", "0x8004"};
  mixer.shortReads = {{"0x8002", 1}};  // the selector byte is the second one: never arrives
  bus.setMixers({mixer});
  const auto run = runTool({"info", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  const auto &reported = run.json()["bus"]["mixers"][0];
  EXPECT_TRUE(reported["firmware"].is_null());
  EXPECT_TRUE(reported["serato"].is_null());
  EXPECT_EQ(reported["input_selectors"], json({nullptr, nullptr, nullptr, nullptr}));
}

TEST_F(ToolStatus, InfoWithoutMixerOrWithABusyOneStillSucceeds) {
  const auto none = runTool({"info", "--json"});
  ASSERT_EQ(none.exitCode, 0) << none.transcript();
  EXPECT_EQ(none.json()["connection"], "not connected");
  EXPECT_TRUE(none.json()["bus"]["mixers"].empty());

  bus.setMixersOpening({"busy"});
  const auto busy = runTool({"info", "--json"});
  ASSERT_EQ(busy.exitCode, 0) << busy.transcript();
  EXPECT_EQ(busy.json()["bus"]["mixers"][0]["access"], "busy");
  EXPECT_TRUE(busy.json()["bus"]["mixers"][0]["firmware"].is_null());
}

TEST_F(ToolStatus, InfoNamesTheDataFolderAndExplainsTheMissingVersionFiles) {
  const auto doc = runTool({"info", "--json"}).json();
  // The tool carries the library's code and finds the data folder the build stages from its own path.
  EXPECT_EQ(doc["data_folder"]["path"],
            std::filesystem::weakly_canonical(std::filesystem::path(MXRK7_DEMO_CONFIG).parent_path()).string());
  EXPECT_EQ(doc["data_folder"]["exists"], true);
  const auto &versions = doc["versions"];
  EXPECT_TRUE(versions["library"]["text"].is_string());  // the build stages the library's own file
  EXPECT_EQ(versions["library"]["text"], versions["tool"]["text"]);
  EXPECT_TRUE(versions["driver"]["text"].is_null());
  EXPECT_NE(versions["driver"]["missing"].get<std::string>().find("kernel"), std::string::npos);
  EXPECT_TRUE(versions["setup_app"]["text"].is_null());
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
    EXPECT_EQ(listed[i]["number"], i);
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

TEST_F(ToolStatus, UdevRuleIsTheTextTheBuildInstalls) {
  const std::string staged = readFile(MXRK7_STAGED_RULE);
  ASSERT_FALSE(staged.empty());
  const auto run = runTool({"udev-rule"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.out, staged);
  const auto doc = runTool({"udev-rule", "--json"}).json();
  EXPECT_EQ(doc["text"], staged);
  EXPECT_NE(staged.find("ATTR{idVendor}==\"" + doc["vendor"].get<std::string>() + "\""), std::string::npos);
  EXPECT_NE(staged.find("ATTR{idProduct}==\"" + doc["product"].get<std::string>() + "\""), std::string::npos);
}

TEST_F(ToolStatus, UdevRuleFollowsTheUsbIdOverride) {
  env.set("MXRK7_USB_ID", "0A1B:00Cd");
  const auto run = runTool({"udev-rule"});
  EXPECT_NE(run.out.find("ATTR{idVendor}==\"0a1b\", ATTR{idProduct}==\"00cd\""), std::string::npos) << run.out;
}

TEST_F(ToolStatus, GlobalOptionsWorkBeforeAndAfterTheVerb) {
  bus.setMixers({VirtualMixer{}});
  ScratchDir other;
  const auto before = runTool({"--json", "--config-home", other.path(), "show"});
  const auto after = runTool({"show", "--config-home", other.path(), "--json"});
  ASSERT_EQ(before.exitCode, 0) << before.transcript();
  EXPECT_EQ(before.json(), after.json());
  EXPECT_EQ(before.json()["file"]["path"], other.file("com.norvane.MXR-K7autosetup.plist"));
}

TEST_F(ToolStatus, VirtualUsesTheDemoMixersAndADemoSettingsFolder) {
  ScratchDir state;
  env.set("MXRK7_VIRTUAL_MIXERS", std::nullopt);
  env.set("XDG_STATE_HOME", state.path());

  const auto info = runTool({"--virtual", "info", "--json"});
  ASSERT_EQ(info.exitCode, 0) << info.transcript();
  EXPECT_EQ(info.json()["bus"]["mixers"].size(), 2u);
  EXPECT_EQ(std::filesystem::canonical(info.json()["bus"]["virtual_config"].get<std::string>()),
            std::filesystem::canonical(MXRK7_DEMO_CONFIG));

  const auto set = runTool({"set", "pad-mode", "2", "--virtual"});
  ASSERT_EQ(set.exitCode, 0) << set.transcript();
  EXPECT_FALSE(settings.exists()) << "the demo wrote the real settings";
  EXPECT_TRUE(std::filesystem::exists(state.file("mxrk7/demo/com.norvane.MXR-K7autosetup.plist")));
}

TEST_F(ToolStatus, VirtualKeepsMixersAlreadyChosenAndAGivenConfigHome) {
  bus.setMixers({VirtualMixer{}});
  const auto run = runTool({"--virtual", "--config-home", settings.home(), "set", "pad-mode", "1", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.json()["mixers"]["found"], 1);
  EXPECT_EQ(settings.value("PADMode"), 1);
  EXPECT_EQ(writes().size(), 1u);
}

TEST_F(ToolStatus, EveryVerbHasHelpWithExamples) {
  for (const char *verb : {"info", "devices", "udev-rule", "show", "list", "get", "set", "routing", "apply", "watch",
                           "export", "import", "doctor"}) {
    const auto run = runTool({verb, "--help"});
    EXPECT_EQ(run.exitCode, 0) << verb;
    EXPECT_NE(run.out.find("Examples:\n  mxrk7"), std::string::npos) << verb << "\n" << run.out;
  }
  const auto top = runTool({"--help"});
  EXPECT_EQ(top.exitCode, 0);
  EXPECT_NE(top.out.find("Exit codes"), std::string::npos);
}

}  // namespace
}  // namespace nvx::test
