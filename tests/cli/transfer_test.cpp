// export and import: the settings document written from the settings file and read back through the
// library's setters; a document with one bad entry changes nothing.
#include <functional>
#include <set>

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

  // The settings file holds every kind, a key of another program and the read-only "PopUp".
  void storeEveryKind() {
    auto keys = kEveryKind;
    keys["PopUp"] = 3;
    keys["SomeOtherProgram"] = 5;
    settings.writeIntegers(keys);
  }

  // Exports the current settings to a file of the scratch folder and returns its path.
  std::string exportToFile() {
    const std::string path = files.file("settings.json");
    const auto run = runTool({"export", path});
    EXPECT_EQ(run.exitCode, 0) << run.transcript();
    return path;
  }

  std::string writeDocument(const json &document) { return files.write("document.json", document.dump(2)); }

  ScratchDir files;
};

TEST_F(ToolTransfer, ExportWritesEveryKeyTheLibraryWritesAsReadableValues) {
  storeEveryKind();
  const json document = json::parse(readFile(exportToFile()));
  EXPECT_EQ(document["format"], "mxrk7-settings");
  EXPECT_EQ(document["version"], 1);
  EXPECT_EQ(document["product"], "MXR-K7");

  std::set<std::string> keys;
  for (const auto &entry : document["settings"]) keys.insert(entry["key"].get<std::string>());
  std::set<std::string> expected;
  for (const auto &[key, value] : kEveryKind) expected.insert(key);
  EXPECT_EQ(keys, expected) << "PopUp and the other program's key stay out";

  auto find = [&](const std::string &setting, const json &args) {
    for (const auto &entry : document["settings"])
      if (entry["setting"] == setting && entry["args"] == args) return entry;
    ADD_FAILURE() << setting << " " << args << " missing";
    return json();
  };
  EXPECT_EQ(find("fx-filter", {{"bank", "B"}})["fields"],
            json::parse(R"([{"name": "mode", "index": 3, "text": "PITCH"}, {"name": "param", "index": 64, "text": null}])"));
  EXPECT_EQ(find("routing", {{"channel", 1}})["fields"][0]["text"], "Cross Fader A");
  EXPECT_EQ(find("beat-fx", {{"bank", "temporary"}, {"position", 6}, {"item", "beat"}})["fields"][0]["index"], 54);
  // The shared channel-fader word belongs to the bank it was last set for.
  EXPECT_EQ(find("channel-fader", {{"bank", "temporary"}})["fields"][0]["text"], "FADER FILTER");
  EXPECT_EQ(find("boost", json::object())["fields"][0]["text"], "-10 dB");

  // Standard output gets the same document.
  const auto toStdout = runTool({"export", "-"});
  ASSERT_EQ(toStdout.exitCode, 0) << toStdout.transcript();
  EXPECT_EQ(toStdout.json(), document);
}

TEST_F(ToolTransfer, ImportOfAnExportRestoresTheFileAndSendsEverySetting) {
  storeEveryKind();
  const std::string document = exportToFile();
  const auto same = runTool({"import", document});
  ASSERT_EQ(same.exitCode, 0) << same.transcript();
  EXPECT_NE(same.out.find("0 added, 0 changed, " + std::to_string(kEveryKind.size()) + " unchanged"), std::string::npos)
      << same.out;
  bus.clearLog();

  SettingsHome elsewhere;  // a fresh settings folder, as on another computer
  const auto run = runTool({"import", document, "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(elsewhere.integers(), kEveryKind);
  EXPECT_EQ(writes().size(), 2 * kEveryKind.size());
  EXPECT_EQ(run.json()["mixers"]["took"], 2);
  ASSERT_EQ(run.json()["changes"].size(), kEveryKind.size());
  for (const auto &change : run.json()["changes"]) {
    EXPECT_EQ(change["change"], "added") << change;
    EXPECT_EQ(change["result"], "ok") << change;
  }
}

TEST_F(ToolTransfer, DryRunListsTheChangesAndChangesNothing) {
  settings.writeIntegers({{"PADMode", 1}, {"MaxLevel", 2}, {"BANKB_FILTER", 0x1100}});
  const std::string before = readFile(settings.filePath());
  const std::string document = writeDocument(json::parse(R"({
    "format": "mxrk7-settings", "version": 1, "settings": [
      {"setting": "pad-mode", "fields": [{"name": "value", "index": 1}]},
      {"setting": "boost", "fields": [{"name": "level", "text": "-5 dB"}]},
      {"setting": "fx-filter", "args": {"bank": "b"}, "fields": [{"name": "mode", "text": "pitch"}, {"name": "param", "index": 64}]},
      {"setting": "routing", "args": {"channel": 1}, "fields": [{"name": "source", "text": "MIC"}]}
    ]})"));
  const auto run = runTool({"import", document, "--dry-run", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(readFile(settings.filePath()), before);
  EXPECT_TRUE(bus.log().empty()) << "a dry run opens no mixer";

  std::map<std::string, json> byTarget;
  for (const auto &change : run.json()["changes"]) byTarget[change["setting"].get<std::string>()] = change;
  EXPECT_EQ(run.json()["dry_run"], true);
  EXPECT_TRUE(run.json()["mixers"].is_null());
  EXPECT_EQ(byTarget["pad-mode"]["change"], "unchanged");
  EXPECT_EQ(byTarget["boost"]["change"], "changed");
  EXPECT_EQ(byTarget["boost"]["before"]["fields"][0]["text"], "-15 dB");
  EXPECT_EQ(byTarget["fx-filter"]["change"], "changed");
  EXPECT_EQ(byTarget["fx-filter"]["fields"][0]["text"], "PITCH");
  EXPECT_EQ(byTarget["routing"]["change"], "added");
  EXPECT_TRUE(byTarget["routing"]["result"].is_null());

  const auto text = runTool({"import", document, "--dry-run"});
  EXPECT_NE(text.out.find("changed (was -15 dB (2))"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("1 added, 2 changed, 1 unchanged"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("nothing was changed"), std::string::npos) << text.out;
  EXPECT_EQ(readFile(settings.filePath()), before);
}

// A valid document made invalid in one place. The import refuses before it changes anything, and
// the message names the entry.
struct BadDocument {
  const char *name;
  std::function<void(json &)> spoil;
  std::string mentions;
  bool wholeDocument = false;  // the problem is the document's, not one entry's
};

void PrintTo(const BadDocument &c, std::ostream *os) { *os << c.name; }

json &entryOf(json &document, const std::string &setting, const json &args = json::object()) {
  for (auto &entry : document["settings"])
    if (entry["setting"] == setting && entry["args"] == args) return entry;
  throw std::runtime_error(setting + " is not in the document");
}

size_t positionOf(const json &document, const std::string &setting, const json &args = json::object()) {
  const auto &entries = document["settings"];
  for (size_t i = 0; i < entries.size(); ++i)
    if (entries[i]["setting"] == setting && entries[i]["args"] == args) return i;
  throw std::runtime_error(setting + " is not in the document");
}

class ToolBadImport : public ToolTransfer, public ::testing::WithParamInterface<BadDocument> {};

TEST_P(ToolBadImport, ChangesNothingAndNamesTheEntry) {
  storeEveryKind();
  json document = json::parse(readFile(exportToFile()));
  GetParam().spoil(document);
  const std::string before = readFile(settings.filePath());
  bus.clearLog();
  const auto run = runTool({"import", writeDocument(document), "--json"});
  EXPECT_EQ(run.exitCode, 1) << run.transcript();
  const std::string message = run.json()["error"]["message"];
  EXPECT_NE(message.find(GetParam().mentions), std::string::npos) << message;
  EXPECT_NE(message.find("nothing was changed"), std::string::npos) << message;
  const auto &problems = run.json()["error"]["problems"];
  ASSERT_EQ(problems.size(), 1u) << problems;
  EXPECT_EQ(problems[0]["entry"].is_null(), GetParam().wholeDocument) << problems;
  EXPECT_EQ(readFile(settings.filePath()), before);
  EXPECT_TRUE(bus.log().empty()) << "no mixer was opened";
}

INSTANTIATE_TEST_SUITE_P(
    , ToolBadImport,
    ::testing::Values(
        BadDocument{"indexAboveRange",
                    [](json &d) { entryOf(d, "pad-mode")["fields"][0]["index"] = 3; },
                    "(pad-mode): value: index 3 is not allowed", false},
        BadDocument{"misspelledMenuText",
                    [](json &d) {
                      auto &fields = entryOf(d, "fx-filter", {{"bank", "B"}})["fields"];
                      fields[0].erase("index");
                      fields[0]["text"] = "PTICH";
                    },
                    "(fx-filter B): mode: \"PTICH\" is not allowed", false},
        BadDocument{"textAndIndexDisagree",
                    [](json &d) { entryOf(d, "boost")["fields"][0]["text"] = "-15 dB"; },
                    "(boost): level: index 1 is \"-10 dB\", not \"-15 dB\"", false},
        BadDocument{"positionSeven",
                    [](json &d) { entryOf(d, "beat-fx", {{"bank", "B"}, {"position", 4}, {"item", "depth"}})["args"]["position"] = 7; },
                    "position: 7 is not allowed", false},
        BadDocument{"unknownSetting",
                    [](json &d) { d["settings"].push_back({{"setting", "volume"}, {"fields", json::array()}}); },
                    "unknown setting \"volume\"", false},
        BadDocument{"readOnlySetting",
                    [](json &d) {
                      d["settings"].push_back({{"setting", "crossfader-mode"}, {"fields", {{{"name", "mode"}, {"index", 1}}}}});
                    },
                    "crossfader-mode is read-only", false},
        BadDocument{"routingChannelFour",
                    [](json &d) {
                      d["settings"].push_back({{"setting", "routing"}, {"args", {{"channel", 4}}},
                                               {"fields", {{{"name", "source"}, {"index", 0}}}}});
                    },
                    "routing channel 4 cannot be set", false},
        BadDocument{"sameInstanceTwice",
                    [](json &d) { d["settings"].push_back(entryOf(d, "fader-start")); },
                    "appears twice", false},
        BadDocument{"misspelledKey",
                    [](json &d) { entryOf(d, "fader-start")["feilds"] = json::array(); },
                    "unknown key \"feilds\"", false},
        BadDocument{"missingField",
                    [](json &d) { entryOf(d, "fx-filter", {{"bank", "A"}})["fields"].erase(1); },
                    "(fx-filter A): fields: \"param\" is missing", false},
        BadDocument{"anotherFormat", [](json &d) { d["format"] = "something else"; },
                    "this is not a settings document of mxrk7", true},
        BadDocument{"newerVersion", [](json &d) { d["version"] = 2; }, "written by a newer mxrk7", true},
        BadDocument{"settingsNotAList", [](json &d) { d["settings"] = json::object(); },
                    "\"settings\" is missing or not a list", true}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(ToolTransfer, ABadEntryIsNamedByItsPosition) {
  storeEveryKind();
  json document = json::parse(readFile(exportToFile()));
  const size_t at = positionOf(document, "beat-fx-tail", {{"bank", "temporary"}});
  entryOf(document, "beat-fx-tail", {{"bank", "temporary"}})["fields"][0]["index"] = 2;
  const auto run = runTool({"import", writeDocument(document), "--json"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.json()["error"]["problems"][0]["entry"], at);
  EXPECT_EQ(run.json()["error"]["problems"][0]["target"], "beat-fx-tail temporary");
  EXPECT_NE(run.json()["error"]["message"].get<std::string>().find("settings[" + std::to_string(at) +
                                                                  "] (beat-fx-tail temporary)"),
            std::string::npos);
}

TEST_F(ToolTransfer, ImportReadsStandardInput) {
  const std::string path = writeDocument(json::parse(R"({
    "format": "mxrk7-settings", "version": 1,
    "settings": [{"setting": "cut-lag-mode", "fields": [{"name": "value", "index": 2}]}]})"));
  const auto run = runTool({"import", "-"}, {.stdinFile = path});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(settings.integers(), (std::map<std::string, int64_t>{{"CRFaderCutLagMode", 2}}));
  EXPECT_NE(run.out.find("from standard input"), std::string::npos) << run.out;
}

TEST_F(ToolTransfer, ImportWarnsForARoutingTheMixerCannotCarry) {
  VirtualMixer deckOff;
  deckOff.selectors = {2, 4, 4, 4};
  bus.setMixers({deckOff});
  const std::string path = writeDocument(json::parse(R"({
    "format": "mxrk7-settings", "version": 1,
    "settings": [{"setting": "routing", "args": {"channel": 0}, "fields": [{"name": "source", "text": "MIC"}]}]})"));
  const auto run = runTool({"import", path, "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.json()["changes"][0]["result"], "warning");
  EXPECT_TRUE(run.json()["changes"][0]["warning"].is_string());
  EXPECT_EQ(settings.value("Output0"), 5);
}

TEST_F(ToolTransfer, ImportReplaceForgetsTheToolsSettingsTheDocumentLacks) {
  settings.writeIntegers({{"PADMode", 1}, {"FaderStartMode", 2}, {"Output4", 3}, {"PopUp", 1}, {"Foreign", 7}});
  const std::string path = writeDocument(json::parse(R"({
    "format": "mxrk7-settings", "version": 1,
    "settings": [{"setting": "pad-mode", "fields": [{"name": "value", "index": 2}]}]})"));
  const auto dry = runTool({"import", "--replace", "--dry-run", path, "--json"});
  ASSERT_EQ(dry.exitCode, 0) << dry.transcript();
  ASSERT_EQ(dry.json()["removed"].size(), 1u);
  EXPECT_EQ(dry.json()["removed"][0]["setting"], "fader-start");
  const auto run = runTool({"import", "--replace", path});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  // Other programs' keys, "Output4" and "PopUp" are never the tool's to forget.
  EXPECT_EQ(settings.integers(),
            (std::map<std::string, int64_t>{{"PADMode", 2}, {"Output4", 3}, {"PopUp", 1}, {"Foreign", 7}}));
  EXPECT_NE(run.out.find("1 removed"), std::string::npos) << run.out;
}

TEST_F(ToolTransfer, ExportLeavesOutValuesTheLibraryDoesNotAccept) {
  settings.writeIntegers({{"MaxLevel", 9}, {"PADMode", 2}});
  const auto run = runTool({"export", files.file("out.json"), "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.json()["exported"], 1);
  ASSERT_EQ(run.json()["skipped"].size(), 1u);
  EXPECT_EQ(run.json()["skipped"][0]["setting"], "boost");
  EXPECT_NE(run.err.find("left out boost: the settings file holds 9"), std::string::npos) << run.err;
  const json document = json::parse(readFile(files.file("out.json")));
  ASSERT_EQ(document["settings"].size(), 1u);
  EXPECT_EQ(document["settings"][0]["setting"], "pad-mode");
}

TEST_F(ToolTransfer, NoSettingsMakeAnEmptyDocumentWhoseImportTouchesNothing) {
  const auto run = runTool({"export", "-"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.json()["settings"], json::array());
  EXPECT_FALSE(settings.exists());

  const auto import = runTool({"import", writeDocument(run.json())});
  ASSERT_EQ(import.exitCode, 0) << import.transcript();
  EXPECT_NE(import.out.find("Nothing to import"), std::string::npos) << import.out;
  EXPECT_FALSE(settings.exists());
  EXPECT_TRUE(bus.log().empty());
}

}  // namespace
}  // namespace nvx::test
