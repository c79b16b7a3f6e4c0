// export and import: the settings document written from the settings file and read back through the
// library's setters; a document with one bad entry changes nothing.
#include <algorithm>
#include <functional>
#include <set>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

using nlohmann::json;

// One remembered value of every kind the library writes: the key and number in the settings file,
// and the write request a mixer receives when it is set again.
struct Stored {
  std::string key;
  int64_t value;
  uint16_t wIndex;
  uint16_t wValue;
};

const std::vector<Stored> kEveryKind = {
    {"Output0", 1, 0x8002, 0x0100},           {"Output1", 3, 0x8002, 0x0207},
    {"Output2", 0, 0x8002, 0x030A},           {"Output3", 0, 0x8002, 0x040C},
    {"MaxLevel", 1, 0x8003, 0x0200},          {"BANKA_FILTER", 0x0102, 0x850D, 0x0102},
    {"BANKB_FILTER", 0x1340, 0x850D, 0x1340}, {"TEMPORARY_FILTER", 0x24FF, 0x850D, 0x24FF},
    {"BFX_BANKA0_0", 0x0003, 0x850E, 0x0003}, {"BFX_BANKB3_1", 0x59C0, 0x850E, 0x59C0},
    {"BFX_TEMP5_2", 0xAA36, 0x850E, 0xAA36},  {"CHFADERBANK_A", 0x0002, 0x850F, 0x0002},
    {"CHFADERBANK_B", 0x2001, 0x850F, 0x2001}, {"TAIL_BANK_A", 0x0001, 0x8510, 0x0001},
    {"TAIL_BANK_B", 0x1000, 0x8510, 0x1000},  {"TAIL_TEMP", 0x2001, 0x8510, 0x2001},
    {"CRFaderCutLag", 200, 0x8511, 0xC800},   {"4BeatLpBtType", 1, 0x8512, 0x0100},
    {"FaderStartMode", 2, 0x8513, 0x0200},    {"PADMode", 1, 0x8514, 0x0100},
    {"CRFaderCutLagMode", 3, 0x8515, 0x0300},
};

std::map<std::string, int64_t> keysOf(const std::vector<Stored> &stored) {
  std::map<std::string, int64_t> keys;
  for (const auto &s : stored) keys[s.key] = s.value;
  return keys;
}

std::vector<std::string> sorted(std::vector<std::string> lines) {
  std::sort(lines.begin(), lines.end());
  return lines;
}

class Transfer : public CliTest {
 protected:
  Transfer() { bus.setMixers({VirtualMixer{}, VirtualMixer{}}); }

  // The settings file holds every kind, a key of another program and the read-only "PopUp".
  void storeEveryKind() {
    auto keys = keysOf(kEveryKind);
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

TEST_F(Transfer, ExportWritesEveryKeyTheLibraryWritesAsReadableValues) {
  storeEveryKind();
  const json document = json::parse(readFile(exportToFile()));
  EXPECT_EQ(document["format"], "mxrk7-settings");
  EXPECT_EQ(document["version"], 1);
  EXPECT_EQ(document["product"], "MXR-K7");

  std::set<std::string> keys;
  for (const auto &entry : document["settings"]) keys.insert(entry["key"].get<std::string>());
  std::set<std::string> expected;
  for (const auto &s : kEveryKind) expected.insert(s.key);
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

TEST_F(Transfer, ImportOfAnExportRestoresTheFileAndResendsEveryWord) {
  storeEveryKind();
  const std::string document = exportToFile();
  bus.clearLog();

  SettingsHome elsewhere;  // a fresh settings folder, as on another computer
  const auto run = runTool({"import", document, "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(elsewhere.integers(), keysOf(kEveryKind));

  std::vector<std::string> expected;
  for (const auto &s : kEveryKind)
    for (int device = 0; device < 2; ++device) expected.push_back(writeLine(device, s.wIndex, s.wValue));
  EXPECT_EQ(sorted(writes()), sorted(expected));

  EXPECT_EQ(run.json()["mixers"]["took"], 2);
  EXPECT_EQ(run.json()["stored"]["ok"], true);
  ASSERT_EQ(run.json()["changes"].size(), kEveryKind.size());
  for (const auto &change : run.json()["changes"]) {
    EXPECT_EQ(change["change"], "added") << change;
    EXPECT_EQ(change["result"], "ok") << change;
  }
}

TEST_F(Transfer, ImportIntoTheSameSettingsChangesNoValueButSendsThemAll) {
  storeEveryKind();
  const std::string document = exportToFile();
  bus.clearLog();
  const auto run = runTool({"import", document});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  auto expected = keysOf(kEveryKind);
  expected["PopUp"] = 3;
  expected["SomeOtherProgram"] = 5;
  EXPECT_EQ(settings.integers(), expected);
  EXPECT_EQ(writes().size(), 2 * kEveryKind.size());
  EXPECT_NE(run.out.find("0 added, 0 changed, " + std::to_string(kEveryKind.size()) + " unchanged"), std::string::npos)
      << run.out;
}

TEST_F(Transfer, DryRunListsTheChangesAndChangesNothing) {
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

class BadImport : public Transfer, public ::testing::WithParamInterface<BadDocument> {};

TEST_P(BadImport, ChangesNothingAndNamesTheEntry) {
  storeEveryKind();
  json document = json::parse(readFile(exportToFile()));
  GetParam().spoil(document);
  const std::string path = writeDocument(document);
  const std::string before = readFile(settings.filePath());
  bus.clearLog();

  const auto run = runTool({"import", path});
  EXPECT_EQ(run.exitCode, 1) << run.transcript();
  EXPECT_NE(run.err.find(GetParam().mentions), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("nothing was changed"), std::string::npos) << run.err;
  EXPECT_EQ(readFile(settings.filePath()), before);
  EXPECT_TRUE(bus.log().empty()) << "no mixer was opened";

  const auto asJson = runTool({"import", path, "--json"});
  EXPECT_EQ(asJson.exitCode, 1);
  const auto &problems = asJson.json()["error"]["problems"];
  ASSERT_EQ(problems.size(), 1u) << problems;
  EXPECT_EQ(problems[0]["entry"].is_null(), GetParam().wholeDocument) << problems;
  EXPECT_EQ(readFile(settings.filePath()), before);
}

INSTANTIATE_TEST_SUITE_P(
    , BadImport,
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

TEST_F(Transfer, ABadEntryIsNamedByItsPosition) {
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

TEST_F(Transfer, EveryProblemOfADocumentIsListed) {
  const std::string path = writeDocument(json::parse(R"({
    "format": "mxrk7-settings", "version": 1, "settings": [
      {"setting": "pad-mode", "fields": [{"name": "value", "index": 9}]},
      {"setting": "fader-start", "fields": [{"name": "value", "index": 1}]},
      {"setting": "boost", "fields": [{"name": "level", "text": "-11 dB"}]}
    ]})"));
  const auto run = runTool({"import", path, "--json"});
  EXPECT_EQ(run.exitCode, 1);
  const auto &problems = run.json()["error"]["problems"];
  ASSERT_EQ(problems.size(), 2u) << problems;
  EXPECT_EQ(problems[0]["entry"], 0);
  EXPECT_EQ(problems[1]["entry"], 2);
  EXPECT_FALSE(settings.exists());
}

TEST_F(Transfer, ImportReadsStandardInput) {
  const std::string path = writeDocument(json::parse(R"({
    "format": "mxrk7-settings", "version": 1,
    "settings": [{"setting": "cut-lag-mode", "fields": [{"name": "value", "index": 2}]}]})"));
  ToolOptions fromFile;
  fromFile.stdinFile = path;
  const auto run = runTool({"import", "-"}, fromFile);
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(settings.integers(), (std::map<std::string, int64_t>{{"CRFaderCutLagMode", 2}}));
  EXPECT_NE(run.out.find("from standard input"), std::string::npos) << run.out;
}

TEST_F(Transfer, ImportWarnsForARoutingTheMixerCannotCarry) {
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

TEST_F(Transfer, ImportReplaceForgetsTheToolsSettingsTheDocumentLacks) {
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

TEST_F(Transfer, ExportLeavesOutValuesTheLibraryDoesNotAccept) {
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

TEST_F(Transfer, NoSettingsMakeAnEmptyDocumentWhoseImportTouchesNothing) {
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

struct FailureCase {
  const char *name;
  // The words of the command line, after preparing the settings and the scratch folder.
  std::function<std::vector<std::string>(const SettingsHome &, const ScratchDir &)> words;
  int exitCode;
  std::string mentions;
};

void PrintTo(const FailureCase &c, std::ostream *os) { *os << c.name; }

class TransferFailures : public Transfer, public ::testing::WithParamInterface<FailureCase> {};

TEST_P(TransferFailures, ExitWithTheDocumentedCode) {
  const auto run = runTool(GetParam().words(settings, files));
  EXPECT_EQ(run.exitCode, GetParam().exitCode) << run.transcript();
  EXPECT_NE(run.err.find(GetParam().mentions), std::string::npos) << run.err;
  EXPECT_TRUE(bus.log().empty());
}

INSTANTIATE_TEST_SUITE_P(
    , TransferFailures,
    ::testing::Values(
        FailureCase{"exportOfAnUnreadableSettingsFile",
                    [](const SettingsHome &home, const ScratchDir &) {
                      home.writeRaw("not a property list");
                      return std::vector<std::string>{"export", "-"};
                    },
                    5, "cannot be read"},
        FailureCase{"exportIntoAMissingFolder",
                    [](const SettingsHome &, const ScratchDir &files) {
                      return std::vector<std::string>{"export", files.file("no/such/folder/x.json")};
                    },
                    5, "cannot write"},
        FailureCase{"importOfAMissingFile",
                    [](const SettingsHome &, const ScratchDir &files) {
                      return std::vector<std::string>{"import", files.file("none.json")};
                    },
                    5, "cannot read"},
        FailureCase{"importOfTextThatIsNotJson",
                    [](const SettingsHome &, const ScratchDir &files) {
                      return std::vector<std::string>{"import", files.write("x.json", "{\"format\": ")};
                    },
                    1, "is not a JSON document"},
        FailureCase{"importWithoutFile", [](const SettingsHome &, const ScratchDir &) { return std::vector<std::string>{"import"}; }, 1,
                    "FILE"},
        FailureCase{"exportWithoutFile", [](const SettingsHome &, const ScratchDir &) { return std::vector<std::string>{"export"}; }, 1,
                    "FILE"}),
    [](const auto &test) { return std::string(test.param.name); });

}  // namespace
}  // namespace nvx::test
