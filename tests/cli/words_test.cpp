// The tool's words read into a setting, its instance and its values; bad input is refused with exit
// code 1 (5 for a file that cannot be read or written) before anything is sent or stored.
#include "cli_fixture.h"

namespace nvx::test {
namespace {

using nlohmann::json;

struct WordsCase {
  std::vector<std::string> words;  // after "set"
  const char *args;                // the instance, as --json reports it
  std::vector<uint32_t> fields;    // the values' indices
};

void PrintTo(const WordsCase &c, std::ostream *os) { *os << ::testing::PrintToString(c.words); }

class ToolWords : public CliTest, public ::testing::WithParamInterface<WordsCase> {};

TEST_P(ToolWords, AreReadAsTheSettingTheInstanceAndTheValues) {
  const auto &c = GetParam();
  std::vector<std::string> words{"set", "--json"};
  words.insert(words.end(), c.words.begin(), c.words.end());
  const auto run = runTool(words);
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  EXPECT_EQ(run.json()["args"], json::parse(c.args));
  std::vector<uint32_t> fields;
  for (const auto &field : run.json()["fields"]) fields.push_back(field["index"]);
  EXPECT_EQ(fields, c.fields);
}

INSTANTIATE_TEST_SUITE_P(
    , ToolWords,
    ::testing::Values(
        WordsCase{{"PAD-Mode", "0x1"}, "{}", {1}},  // a name in any case, a hexadecimal index
        WordsCase{{"fx-filter", "B", "PITCH", "0x40"}, R"({"bank": "B"})", {3, 64}},
        WordsCase{{"fx-filter", "temporary", "wide filter", "255"}, R"({"bank": "temporary"})", {4, 255}},
        WordsCase{{"beat-fx", "temporary", "3", "depth", "200"},
                  R"({"bank": "temporary", "position": 3, "item": "depth"})",
                  {200}},
        WordsCase{{"beat-fx", "b", "BTFX_4", "FXType", "echo"}, R"({"bank": "B", "position": 4, "item": "type"})", {3}},
        WordsCase{{"beat-fx", "A", "1", "Deprh", "7"}, R"({"bank": "A", "position": 1, "item": "depth"})", {7}},
        WordsCase{{"routing", "1", "Cross Fader A"}, R"({"channel": 1})", {3}},
        WordsCase{{"routing", "3", "none"}, R"({"channel": 3})", {1}},  // a repeated text: its lowest index
        WordsCase{{"boost", "-10DB"}, "{}", {1}}));                     // blanks and case do not count

struct BadCase {
  std::vector<std::string> words;  // "@" stands for a scratch folder
  int exitCode;
  std::string mentions;            // in the message
  std::string settingsFile = {};   // the settings file's bytes, when there is one
};

void PrintTo(const BadCase &c, std::ostream *os) { *os << ::testing::PrintToString(c.words); }

class ToolBadInput : public CliTest, public ::testing::WithParamInterface<BadCase> {};

TEST_P(ToolBadInput, ChangesNothingAndSaysWhatIsAllowed) {
  const auto &c = GetParam();
  bus.setMixers({VirtualMixer{}});
  if (!c.settingsFile.empty()) settings.writeRaw(c.settingsFile);
  ScratchDir scratch;
  std::vector<std::string> words;
  for (const auto &word : c.words) words.push_back(word.starts_with("@") ? scratch.path() + word.substr(1) : word);
  const auto run = runTool(words);
  EXPECT_EQ(run.exitCode, c.exitCode) << run.transcript();
  EXPECT_NE(run.err.find(c.mentions), std::string::npos) << run.err;
  EXPECT_TRUE(bus.log().empty());
  EXPECT_EQ(settings.exists(), !c.settingsFile.empty());
}

INSTANTIATE_TEST_SUITE_P(
    , ToolBadInput,
    ::testing::Values(BadCase{{}, 1, "verb"}, BadCase{{"frobnicate"}, 1, "unknown verb \"frobnicate\""},
                      BadCase{{"set", "nosuch", "1"}, 1, "crossfader-cut-lag"},
                      BadCase{{"set", "pad-mode", "3"}, 1, "0-2"}, BadCase{{"set", "fader-start", "-1"}, 1, "0-2"},
                      BadCase{{"set", "fx-filter", "C", "PITCH", "1"}, 1, "A, B, temporary"},
                      BadCase{{"set", "fx-filter", "A", "PTICH", "1"}, 1, "WIDE FILTER"},
                      BadCase{{"set", "routing", "4", "MIC"}, 1, "cannot be set"},
                      BadCase{{"set", "routing", "3", "MIC"}, 1, "FX SEND"},
                      BadCase{{"set", "beat-fx", "A", "7", "type", "echo"}, 1, "6"},
                      BadCase{{"set", "beat-fx", "A", "1", "beat", "55"}, 1, "0-54"},
                      BadCase{{"set", "beat-fx", "A", "1", "type", "15"}, 1, "FADER SYNTH3"},
                      BadCase{{"set", "crossfader-mode", "1"}, 1, "read-only"},
                      BadCase{{"set", "pad-mode"}, 1, "set pad-mode VALUE"},
                      BadCase{{"set", "pad-mode", "1", "--mixer", "x"}, 1, "BUS-PORT"},
                      BadCase{{"import"}, 1, "FILE"}, BadCase{{"import", "@/none.json"}, 5, "cannot read"},
                      BadCase{{"import", "/dev/null"}, 1, "is not a JSON document"},
                      BadCase{{"export", "@/no/such/folder/x.json"}, 5, "cannot write"},
                      BadCase{{"export", "-"}, 5, "cannot be read", "not a property list"}));

}  // namespace
}  // namespace nvx::test
