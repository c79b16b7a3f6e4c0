// export and import: the settings document written from the settings file and read back through the
// library's setters; a document with one bad entry changes nothing.
#include "cli_fixture.h"

namespace nvx::test {
namespace {

using nlohmann::json;

// One remembered value of every kind the library writes.
const std::map<std::string, int64_t> kEveryKind = {
    {"Output0", 1},          {"Output1", 3},          {"Output2", 0},           {"Output3", 0},
    {"MaxLevel", 1},         {"BANKA_FILTER", 0x0102}, {"BANKB_FILTER", 0x1340}, {"TEMPORARY_FILTER", 0x24FF},
    {"BFX_BANKA0_0", 0x0003}, {"BFX_BANKB3_1", 0x59C0}, {"BFX_TEMP5_2", 0xAA36},  {"CHFADERBANK_A", 0x0002},
    {"CHFADERBANK_B", 0x2001}, {"TAIL_BANK_A", 0x0001}, {"TAIL_BANK_B", 0x1000},  {"TAIL_TEMP", 0x2001},
    {"CRFaderCutLag", 200},  {"4BeatLpBtType", 1},    {"FaderStartMode", 2},    {"PADMode", 1},
    {"CRFaderCutLagMode", 3},
};

class ToolTransfer : public CliTest {
 protected:
  ToolTransfer() { bus.setMixers({VirtualMixer{}, VirtualMixer{}}); }
};

TEST_F(ToolTransfer, ExportThenImportElsewhereRestoresTheFileAndSendsEverySetting) {
  auto keys = kEveryKind;
  keys["PopUp"] = 3;  // read-only, and another program's key: neither is exported
  keys["SomeOtherProgram"] = 5;
  settings.writeIntegers(keys);
  const std::string path = settings.dir().file("settings.json");
  ASSERT_EQ(runTool({"export", path}).exitCode, 0);
  const json document = json::parse(readFile(path));
  // One line per setting, its name first.
  EXPECT_NE(readFile(path).find(R"(
    {"setting": "beat-fx", "args": {"bank": "A", "position": 1, "item": "type"})"),
            std::string::npos);
  EXPECT_EQ(document["format"], "mxrk7-settings");
  EXPECT_EQ(document["version"], 1);
  std::map<std::string, json> exported;
  for (const auto &entry : document["settings"]) exported[entry["key"].get<std::string>()] = entry;
  EXPECT_EQ(exported["BANKB_FILTER"]["fields"], json::parse(R"([{"name": "mode", "index": 3, "text": "PITCH"},
                                                                {"name": "param", "index": 64, "text": null}])"));
  // The shared channel-fader word belongs to the bank it was last set for.
  EXPECT_EQ(exported["CHFADERBANK_B"]["args"]["bank"], "temporary");
  EXPECT_EQ(runTool({"export", "-"}).json(), document) << "standard output gets the same document";

  SettingsHome elsewhere;  // a fresh settings folder, as on another computer
  const auto run = runTool({"import", path, "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(elsewhere.integers(), kEveryKind);
  EXPECT_EQ(bus.writes().size(), 2 * kEveryKind.size());
}

// The changes come in the setting table's order, whatever the document's.
TEST_F(ToolTransfer, DryRunListsTheChangesAndChangesNothing) {
  settings.writeIntegers({{"PADMode", 1}, {"MaxLevel", 2}, {"FaderStartMode", 7}});
  const std::string before = readFile(settings.filePath());
  const std::string path = document(R"(
      {"setting": "pad-mode", "fields": [{"name": "value", "index": 1}]},
      {"setting": "fader-start", "fields": [{"name": "value", "index": 1}]},
      {"setting": "fx-filter", "args": {"bank": 0},
       "fields": [{"name": "mode", "text": "noise"}, {"name": "param", "text": "0x10"}]},
      {"setting": "boost", "fields": [{"name": "level", "text": "-5 dB"}]},
      {"setting": "routing", "args": {"channel": 2}, "fields": [{"name": "source", "text": "mic"}]})");
  const auto run = runTool({"import", path, "--dry-run", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  std::vector<std::string> listed;
  for (const auto &change : run.json()["changes"]) {
    listed.push_back(change["setting"].get<std::string>() + " " + change["change"].get<std::string>());
    for (const auto &field : change["fields"]) listed.back() += " " + field["index"].dump();
  }
  // An invalid stored value is changed, not added; a text may be a number word.
  EXPECT_EQ(listed, (std::vector<std::string>{"routing added 3", "boost changed 0", "fx-filter added 2 16",
                                              "fader-start changed 1", "pad-mode unchanged 1"}));
  EXPECT_TRUE(run.json()["mixers"].is_null());
  const auto text = runTool({"import", path, "--dry-run"});
  EXPECT_NE(text.out.find("changed (was -15 dB (2))"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("2 added, 2 changed, 1 unchanged); nothing was changed"), std::string::npos) << text.out;
  EXPECT_EQ(readFile(settings.filePath()), before);
  EXPECT_TRUE(bus.log().empty()) << "a dry run opens no mixer";
}

// A document with one problem: the import refuses before it changes anything and names the entry
// (here settings[1], after a good one) or says what is wrong with the whole document.
struct BadDocument {
  const char *name;
  std::string text;  // the second entry; a whole document when it starts with "{\"format"
  std::string mentions;
};

void PrintTo(const BadDocument &c, std::ostream *os) { *os << c.name; }

class ToolBadImport : public ToolTransfer, public ::testing::WithParamInterface<BadDocument> {};

TEST_P(ToolBadImport, ChangesNothingAndNamesTheEntry) {
  const auto &c = GetParam();
  const bool whole = c.text.starts_with("{\"format");
  settings.writeIntegers({{"FaderStartMode", 2}});
  const std::string before = readFile(settings.filePath());
  const auto run = runTool(
      {"import",
       whole ? settings.dir().write("document.json", c.text)
             : document(R"({"setting": "fader-start", "fields": [{"name": "value", "index": 1}]}, )" + c.text),
       "--json"});
  EXPECT_EQ(run.exitCode, 1) << run.transcript();
  EXPECT_EQ(run.json()["error"]["exit_code"], 1);
  const std::string message = run.json()["error"]["message"];
  EXPECT_NE(message.find(c.mentions), std::string::npos) << message;
  EXPECT_NE(message.find("nothing was changed"), std::string::npos) << message;
  const auto &problems = run.json()["error"]["problems"];
  ASSERT_EQ(problems.size(), 1u) << problems;
  EXPECT_EQ(problems[0]["entry"], whole ? json() : json(1)) << problems;
  EXPECT_EQ(readFile(settings.filePath()), before);
  EXPECT_TRUE(bus.log().empty()) << "no mixer was opened";
}

INSTANTIATE_TEST_SUITE_P(
    , ToolBadImport,
    ::testing::Values(
        BadDocument{"indexAboveRange", R"({"setting": "pad-mode", "fields": [{"name": "value", "index": 3}]})",
                    "settings[1] (pad-mode): value: index 3 is not allowed"},
        BadDocument{"textAndIndexDisagree",
                    R"({"setting": "boost", "fields": [{"name": "level", "index": 1, "text": "-15 dB"}]})",
                    "(boost): level: index 1 is \"-10 dB\", not \"-15 dB\""},
        BadDocument{"neitherIndexNorText", R"({"setting": "boost", "fields": [{"name": "level"}]})",
                    "(boost): level: needs an \"index\" or a \"text\""},
        BadDocument{"positionsCountFromOne",
                    R"({"setting": "beat-fx", "args": {"bank": "A", "position": 0, "item": "type"},
                        "fields": [{"name": "value", "index": 0}]})",
                    "position: 0 is not allowed"},
        BadDocument{"notAnArgumentOfTheSetting",
                    R"({"setting": "beat-fx-tail", "args": {"bank": "A", "side": 1},
                        "fields": [{"name": "tail", "index": 0}]})",
                    "\"side\" is not an argument of beat-fx-tail"},
        BadDocument{"unknownSetting", R"({"setting": "volume", "fields": []})", "unknown setting \"volume\""},
        BadDocument{"readOnlySetting", R"({"setting": "crossfader-mode", "fields": [{"name": "mode", "index": 1}]})",
                    "crossfader-mode is read-only"},
        BadDocument{"sameInstanceTwice", R"({"setting": "fader-start", "fields": [{"name": "value", "index": 2}]})",
                    "appears twice"},
        BadDocument{"misspelledKey",
                    R"({"setting": "pad-mode", "fields": [{"name": "value", "index": 1}], "feilds": []})",
                    "unknown key \"feilds\""},
        BadDocument{"missingField",
                    R"({"setting": "fx-filter", "args": {"bank": "A"}, "fields": [{"name": "mode", "index": 1}]})",
                    "(fx-filter A): fields: \"param\" is missing"},
        BadDocument{"notAnObject", R"("pad-mode")", "settings[1]"},
        BadDocument{"anotherFormat", R"({"format": "something else", "version": 1, "settings": []})",
                    "this is not a settings document of mxrk7"},
        BadDocument{"newerVersion", R"({"format": "mxrk7-settings", "version": 2, "settings": []})",
                    "written by a newer mxrk7"},
        BadDocument{"settingsNotAList", R"({"format": "mxrk7-settings", "version": 1, "settings": {}})",
                    "\"settings\" is missing or not a list"}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(ToolTransfer, ImportReadsStandardInputAndReplaceForgetsOnlyTheToolsSettings) {
  settings.writeIntegers({{"PADMode", 1}, {"FaderStartMode", 2}, {"Output4", 3}, {"PopUp", 1}, {"Foreign", 7}});
  const std::string path = document(R"({"setting": "pad-mode", "fields": [{"name": "value", "index": 2}]})");
  const auto dry = runTool({"import", "--replace", "--dry-run", path, "--json"});
  ASSERT_EQ(dry.json()["removed"].size(), 1u);
  EXPECT_EQ(dry.json()["removed"][0]["setting"], "fader-start");
  const auto run = runTool({"import", "--replace", "-"}, {.stdinFile = path});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  // Other programs' keys, "Output4" and "PopUp" are never the tool's to forget.
  EXPECT_EQ(settings.integers(),
            (std::map<std::string, int64_t>{{"PADMode", 2}, {"Output4", 3}, {"PopUp", 1}, {"Foreign", 7}}));
  EXPECT_NE(run.out.find("from standard input"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("1 removed"), std::string::npos) << run.out;
}

TEST_F(ToolTransfer, ExportLeavesOutValuesTheLibraryDoesNotAccept) {
  settings.writeIntegers({{"MaxLevel", 9}});
  const auto run = runTool({"export", "-"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.json()["settings"], json::array());
  EXPECT_NE(run.err.find("left out boost: the settings file holds 9"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace nvx::test
