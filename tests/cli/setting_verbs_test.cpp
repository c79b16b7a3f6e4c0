// set, get, show, list and routing: what reaches the mixers, what the file holds, what is printed.
#include <algorithm>
#include <map>
#include <set>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

using nlohmann::json;

class SettingVerbs : public CliTest {
 protected:
  SettingVerbs() { bus.setMixers({VirtualMixer{}, VirtualMixer{}}); }
};

// One setting set through the tool: the words, the one key the file then holds, and the write
// request every mixer receives.
struct SetCase {
  const char *name;
  std::vector<std::string> words;  // after "set"
  size_t argWords;                 // how many of them address the instance (the rest is the value)
  std::string key;
  int64_t stored;
  uint16_t wIndex;
  uint16_t wValue;
  std::vector<uint32_t> fields;  // what get reports afterwards
};

void PrintTo(const SetCase &c, std::ostream *os) { *os << c.name; }

class SetAndGet : public SettingVerbs, public ::testing::WithParamInterface<SetCase> {};

TEST_P(SetAndGet, SendsStoresAndReadsBack) {
  const auto &c = GetParam();
  std::vector<std::string> set{"set"};
  set.insert(set.end(), c.words.begin(), c.words.end());
  const auto run = runTool(set);
  ASSERT_EQ(run.exitCode, 0) << run.transcript();

  EXPECT_EQ(writes(), (std::vector<std::string>{writeLine(0, c.wIndex, c.wValue), writeLine(1, c.wIndex, c.wValue)}));
  EXPECT_EQ(settings.integers(), (std::map<std::string, int64_t>{{c.key, c.stored}}));

  std::vector<std::string> get{"get", "--json"};
  get.insert(get.end(), c.words.begin() + 1, c.words.begin() + 1 + static_cast<ptrdiff_t>(c.argWords));
  get.insert(get.begin() + 1, c.words.front());
  const auto read = runTool(get);
  ASSERT_EQ(read.exitCode, 0) << read.transcript();
  const auto &entries = read.json()["settings"];
  ASSERT_EQ(entries.size(), 1u) << read.out;
  EXPECT_EQ(entries[0]["source"], "file");
  EXPECT_EQ(entries[0]["stored"], c.stored);
  std::vector<uint32_t> got;
  for (const auto &field : entries[0]["fields"]) got.push_back(field["index"]);
  EXPECT_EQ(got, c.fields);
}

INSTANTIATE_TEST_SUITE_P(
    , SetAndGet,
    ::testing::Values(
        SetCase{"padMode", {"pad-mode", "2"}, 0, "PADMode", 2, 0x8514, 0x0200, {2}},
        SetCase{"nameAnyCaseHexIndex", {"PAD-Mode", "0x1"}, 0, "PADMode", 1, 0x8514, 0x0100, {1}},
        SetCase{"filterTextAndHexParam", {"fx-filter", "B", "PITCH", "0x40"}, 1, "BANKB_FILTER", 0x1340, 0x850D, 0x1340, {3, 64}},
        SetCase{"filterBankByLibraryName", {"fx-filter", "temporary", "wide filter", "255"}, 1, "TEMPORARY_FILTER", 0x24FF, 0x850D, 0x24FF, {4, 255}},
        SetCase{"beatFxDepth", {"beat-fx", "temporary", "3", "depth", "200"}, 3, "BFX_TEMP2_1", 0x91C8, 0x850E, 0x91C8, {200}},
        SetCase{"beatFxTypeByNames", {"beat-fx", "b", "BTFX_4", "FXType", "echo"}, 3, "BFX_BANKB3_0", 0x5803, 0x850E, 0x5803, {3}},
        SetCase{"beatFxDeprhSpelling", {"beat-fx", "A", "1", "Deprh", "7"}, 3, "BFX_BANKA0_1", 0x0107, 0x850E, 0x0107, {7}},
        SetCase{"routingByText", {"routing", "1", "Cross Fader A"}, 1, "Output1", 3, 0x8002, 0x0207, {3}},
        SetCase{"routingRepeatedTextTakesLowestIndex", {"routing", "3", "none"}, 1, "Output3", 1, 0x8002, 0x040F, {1}},
        SetCase{"boostIgnoringBlanksAndCase", {"boost", "-10dB"}, 0, "MaxLevel", 1, 0x8003, 0x0200, {1}},
        SetCase{"boostLowest", {"boost", "-19 DB"}, 0, "MaxLevel", 3, 0x8003, 0x0000, {3}},
        SetCase{"channelFaderTemporary", {"channel-fader", "temporary", "fader roll"}, 1, "CHFADERBANK_B", 0x2003, 0x850F, 0x2003, {3}},
        SetCase{"channelFaderA", {"channel-fader", "A", "1"}, 1, "CHFADERBANK_A", 0x0001, 0x850F, 0x0001, {1}},
        SetCase{"tail", {"beat-fx-tail", "B", "1"}, 1, "TAIL_BANK_B", 0x1001, 0x8510, 0x1001, {1}},
        SetCase{"cutLag", {"crossfader-cut-lag", "0xff"}, 0, "CRFaderCutLag", 255, 0x8511, 0xFF00, {255}},
        SetCase{"loopButton", {"loop-button-type", "1"}, 0, "4BeatLpBtType", 1, 0x8512, 0x0100, {1}},
        SetCase{"faderStart", {"fader-start", "2"}, 0, "FaderStartMode", 2, 0x8513, 0x0200, {2}},
        SetCase{"cutLagMode", {"cut-lag-mode", "3"}, 0, "CRFaderCutLagMode", 3, 0x8515, 0x0300, {3}}),
    [](const auto &test) { return std::string(test.param.name); });

// Words the tool refuses: nothing is sent, nothing is stored, and the message names what is allowed.
struct BadCase {
  const char *name;
  std::vector<std::string> words;
  std::string mentions;
};

void PrintTo(const BadCase &c, std::ostream *os) { *os << c.name; }

class BadWords : public SettingVerbs, public ::testing::WithParamInterface<BadCase> {};

TEST_P(BadWords, AreUsageErrorsThatChangeNothing) {
  const auto &c = GetParam();
  const auto run = runTool(c.words);
  EXPECT_EQ(run.exitCode, 1) << run.transcript();
  EXPECT_NE(run.err.find(c.mentions), std::string::npos) << run.err;
  EXPECT_TRUE(bus.requests().empty());
  EXPECT_FALSE(settings.exists());

  std::vector<std::string> asJson = c.words;
  asJson.push_back("--json");
  const auto doc = runTool(asJson);
  EXPECT_EQ(doc.exitCode, 1);
  EXPECT_EQ(doc.json()["error"]["exit_code"], 1);
  EXPECT_NE(doc.json()["error"]["message"].get<std::string>().find(c.mentions), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    , BadWords,
    ::testing::Values(BadCase{"unknownSetting", {"set", "nosuch", "1"}, "crossfader-cut-lag"},
                      BadCase{"valueAboveRange", {"set", "pad-mode", "3"}, "0-2"},
                      BadCase{"negativeValue", {"set", "fader-start", "-1"}, "0-2"},
                      BadCase{"unknownBank", {"set", "fx-filter", "C", "PITCH", "1"}, "A, B, temporary"},
                      BadCase{"unknownMenuText", {"set", "fx-filter", "A", "PTICH", "1"}, "WIDE FILTER"},
                      BadCase{"paramAboveByte", {"set", "fx-filter", "B", "PITCH", "256"}, "0-255"},
                      BadCase{"boostText", {"set", "boost", "-11dB"}, "-10 dB"},
                      BadCase{"routingChannelFour", {"set", "routing", "4", "MIC"}, "cannot be set"},
                      BadCase{"routingTextOfAnotherChannel", {"set", "routing", "3", "MIC"}, "FX SEND"},
                      BadCase{"positionSeven", {"set", "beat-fx", "A", "7", "type", "echo"}, "6"},
                      BadCase{"beatAbove54", {"set", "beat-fx", "A", "1", "beat", "55"}, "0-54"},
                      BadCase{"effectTypeAboveList", {"set", "beat-fx", "A", "1", "type", "15"}, "FADER SYNTH3"},
                      BadCase{"tailTwo", {"set", "beat-fx-tail", "A", "2"}, "0-1"},
                      BadCase{"readOnly", {"set", "crossfader-mode", "1"}, "read-only"},
                      BadCase{"valueMissing", {"set", "pad-mode"}, "set pad-mode VALUE"},
                      BadCase{"wordTooMany", {"set", "pad-mode", "1", "2"}, "set pad-mode VALUE"},
                      BadCase{"getUnknown", {"get", "nosuch"}, "pad-mode"},
                      BadCase{"getBadBank", {"get", "fx-filter", "D"}, "temporary"},
                      BadCase{"listUnknown", {"list", "nosuch"}, "routing"}),
    [](const auto &test) { return std::string(test.param.name); });

// What a change reports and how the tool exits, per mixer and for the file (the first matching row
// of the exit table wins: 5 not stored, 4 no mixer took it, 6 some did, 0).
struct OutcomeCase {
  const char *name;
  std::vector<std::string> opens;  // one mixer per entry: "ok", "busy", "denied", or "fail" (its request fails)
  bool folderWritable;
  int exitCode;
  std::string result;
  std::vector<std::string> each;  // each mixer's "result"
  std::string says;               // in the text for people
};

void PrintTo(const OutcomeCase &c, std::ostream *os) { *os << c.name; }

class SetOutcome : public SettingVerbs, public ::testing::WithParamInterface<OutcomeCase> {};

TEST_P(SetOutcome, ReportsEachMixerAndTheFile) {
  const auto &c = GetParam();
  std::vector<VirtualMixer> mixers;
  for (const auto &open : c.opens) {
    VirtualMixer mixer;
    if (open == "fail") mixer.fail = {"0x8514"};
    else mixer.open = open;
    mixers.push_back(mixer);
  }
  bus.setMixers(mixers);
  std::vector<std::string> words = {"set", "pad-mode", "2"};
  if (!c.folderWritable) {
    // A folder that cannot be made, whoever runs the test: its parent is a file.
    words.push_back("--config-home");
    words.push_back(settings.dir().write("plain-file", "") + "/config");
  }
  std::vector<std::string> asJson = words;
  asJson.push_back("--json");
  const auto run = runTool(asJson);
  EXPECT_EQ(run.exitCode, c.exitCode) << run.transcript();
  const auto doc = run.json();
  EXPECT_EQ(doc["result"], c.result);
  std::vector<std::string> each;
  for (const auto &mixer : doc["mixers"]["each"]) each.push_back(mixer["result"]);
  EXPECT_EQ(each, c.each);
  EXPECT_EQ(doc["mixers"]["found"], c.opens.size());
  EXPECT_EQ(doc["stored"]["ok"], c.folderWritable);
  EXPECT_EQ(settings.value("PADMode"), c.folderWritable ? std::optional<int64_t>(2) : std::nullopt);
  const auto text = runTool(words);
  EXPECT_NE(text.out.find(c.says), std::string::npos) << text.out;
}

INSTANTIATE_TEST_SUITE_P(
    , SetOutcome,
    ::testing::Values(
        OutcomeCase{"noMixer", {}, true, 0, "ok", {}, "no mixer is connected"},
        OutcomeCase{"everyMixerTookIt", {"ok", "ok"}, true, 0, "ok", {"ok", "ok"}, "sent to 2 mixers; stored"},
        OutcomeCase{"theRequestFailed", {"fail"}, true, 4, "not-sent", {"failed"}, "NOT sent"},
        OutcomeCase{"onlyABusyMixer", {"busy"}, true, 4, "not-sent", {"busy"}, "is busy"},
        OutcomeCase{"busyBesideAWorkingOne", {"busy", "ok"}, true, 6, "partial", {"busy", "ok"}, "sent to mixer 1;"},
        OutcomeCase{"deniedBesideAWorkingOne", {"ok", "denied"}, true, 6, "partial", {"ok", "denied"}, "may not be opened"},
        OutcomeCase{"folderNotWritable", {"ok"}, false, 5, "not-stored", {"ok"}, "NOT stored"}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(SettingVerbs, MixerOptionSendsToOneMixerAndStoresAsUsual) {
  const auto run = runTool({"set", "pad-mode", "2", "--mixer", "1"});
  EXPECT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(writes(), std::vector<std::string>{writeLine(1, 0x8514, 0x0200)});
  EXPECT_EQ(settings.value("PADMode"), 2);
  EXPECT_EQ(runTool({"set", "pad-mode", "1", "--mixer", "0-virtual-0"}).exitCode, 0);
  EXPECT_EQ(runTool({"set", "pad-mode", "1", "--mixer", "7"}).exitCode, 3) << "a mixer that is not connected";
  EXPECT_EQ(settings.value("PADMode"), 1) << "nothing changed for a mixer that is not there";
}

TEST_F(SettingVerbs, RoutingWarningIsShownAndStillSucceeds) {
  VirtualMixer deckOff;
  deckOff.selectors = {2, 4, 4, 4};  // deck 1's selector is not on the position the routing needs
  bus.setMixers({VirtualMixer{}, deckOff});
  const auto run = runTool({"set", "routing", "0", "MIC", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.json()["result"], "warning");
  ASSERT_TRUE(run.json()["warning"].is_string());
  EXPECT_FALSE(run.json()["warning"].get<std::string>().empty());
  EXPECT_NE(runTool({"set", "routing", "0", "MIC"}).out.find("Warning: "), std::string::npos);

  const auto quiet = runTool({"set", "routing", "2", "MIC", "--json"});  // channel 2 never warns
  EXPECT_EQ(quiet.json()["result"], "ok");
  EXPECT_TRUE(quiet.json()["warning"].is_null());
}

TEST_F(SettingVerbs, ShowMarksFileValuesDefaultsAndUnsetSettings) {
  auto entriesOf = [](const json &doc) {
    std::map<std::string, std::vector<json>> bySetting;
    for (const auto &entry : doc["settings"]) bySetting[entry["setting"]].push_back(entry);
    return bySetting;
  };
  const auto empty = runTool({"show", "--json"});
  ASSERT_EQ(empty.exitCode, 0) << empty.transcript();
  EXPECT_EQ(empty.json()["file"]["state"], "missing");
  auto shown = entriesOf(empty.json());

  // Every setting of the tool appears, each instance once.
  std::set<std::string> names;
  const auto listed = runTool({"list", "--json"});
  for (const auto &s : listed.json()["settings"]) names.insert(s["setting"]);
  std::set<std::string> shownNames;
  for (const auto &[name, entries] : shown) shownNames.insert(name);
  EXPECT_EQ(shownNames, names);
  EXPECT_EQ(shown["beat-fx"].size(), 3u * 6u * 3u);
  EXPECT_EQ(shown["routing"].size(), 5u);
  for (const auto &entry : empty.json()["settings"]) EXPECT_NE(entry["source"], "file") << entry;
  EXPECT_EQ(shown["boost"][0]["source"], "default");
  EXPECT_EQ(shown["boost"][0]["fields"][0]["text"], "-19 dB");
  EXPECT_EQ(shown["fx-filter"][0]["source"], "unset");
  EXPECT_TRUE(shown["fx-filter"][0]["fields"].is_null());

  settings.writeIntegers({{"PADMode", 2}, {"MaxLevel", 9}, {"CHFADERBANK_B", 0x2001}});
  const auto filled = runTool({"show", "--json"});
  shown = entriesOf(filled.json());
  EXPECT_EQ(shown["pad-mode"][0]["source"], "file");
  EXPECT_EQ(shown["boost"][0]["source"], "invalid");
  EXPECT_EQ(shown["boost"][0]["stored"], 9);
  // The shared channel-fader key holds the temporary bank's word: bank B has none of its own.
  ASSERT_EQ(shown["channel-fader"].size(), 3u);
  EXPECT_EQ(shown["channel-fader"][1]["args"]["bank"], "B");
  EXPECT_EQ(shown["channel-fader"][1]["source"], "unset");
  EXPECT_EQ(shown["channel-fader"][2]["source"], "file");
  EXPECT_EQ(shown["channel-fader"][2]["fields"][0]["text"], "FADER FILTER");

  const auto text = runTool({"show"});
  EXPECT_NE(text.out.find("[default]"), std::string::npos);
  EXPECT_NE(text.out.find("[not set]"), std::string::npos);
  EXPECT_NE(text.out.find("[invalid: the file holds 9]"), std::string::npos);
}

TEST_F(SettingVerbs, GetWithFewerArgumentsListsEveryMatchingInstance) {
  const auto bank = runTool({"get", "beat-fx", "A", "--json"});
  ASSERT_EQ(bank.exitCode, 0) << bank.transcript();
  EXPECT_EQ(bank.json()["settings"].size(), 18u);
  for (const auto &entry : bank.json()["settings"]) EXPECT_EQ(entry["args"]["bank"], "A");
  EXPECT_EQ(runTool({"get", "beat-fx", "A", "2", "--json"}).json()["settings"].size(), 3u);
}

TEST_F(SettingVerbs, ListGivesMenusAndRanges) {
  const auto boost = runTool({"list", "boost", "--json"});
  ASSERT_EQ(boost.exitCode, 0) << boost.transcript();
  std::vector<std::string> texts;
  for (const auto &choice : boost.json()["fields"][0]["domains"][0]["domain"]["choices"]) texts.push_back(choice["text"]);
  EXPECT_EQ(texts, (std::vector<std::string>{"-5 dB", "-10 dB", "-15 dB", "-19 dB"}));

  const auto pad = runTool({"list", "pad-mode", "--json"}).json();
  EXPECT_TRUE(pad["fields"][0]["domains"][0]["domain"]["choices"].empty());
  EXPECT_EQ(pad["fields"][0]["domains"][0]["domain"]["indices"], (json{{"first", 0}, {"last", 2}}));

  // The routing menu differs per channel; naming a channel lists only its menu.
  const auto routing = runTool({"list", "routing", "2", "--json"}).json();
  const auto &domains = routing["fields"][0]["domains"];
  ASSERT_EQ(domains.size(), 1u);
  EXPECT_EQ(domains[0]["for"]["channel"], 2);
  EXPECT_EQ(domains[0]["domain"]["choices"][0]["text"], "MIX(REC OUT)");
  EXPECT_EQ(runTool({"list", "routing", "--json"}).json()["fields"][0]["domains"].size(), 5u);

  const auto text = runTool({"list", "beat-fx"});
  EXPECT_NE(text.out.find("FADER SYNTH3"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("a number 0-54"), std::string::npos) << text.out;
}

TEST_F(SettingVerbs, RoutingListsTheFiveChannels) {
  ASSERT_EQ(runTool({"set", "routing", "1", "Cross Fader A"}).exitCode, 0);
  const auto run = runTool({"routing", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  const auto &channels = run.json()["settings"];
  ASSERT_EQ(channels.size(), 5u);
  for (size_t channel = 0; channel < 5; ++channel) EXPECT_EQ(channels[channel]["args"]["channel"], channel);
  EXPECT_EQ(channels[1]["fields"][0]["text"], "Cross Fader A");
  EXPECT_EQ(channels[1]["source"], "file");
  EXPECT_EQ(channels[0]["source"], "default");
  EXPECT_NE(runTool({"routing"}).out.find("Cross Fader A (3)"), std::string::npos);
}

}  // namespace
}  // namespace nvx::test
