// The replays: each sends what the settings file holds (or its default without a file) to every
// mixer and stores nothing. Bytes as in the setters' table.
#include "api_fixture.h"

namespace nvx::test {
namespace {

struct ReplayCase {
  std::map<std::string, int64_t> file;  // empty: no file
  Call replay;
  int32_t result;
  std::vector<std::string> sent;
};

void PrintTo(const ReplayCase &c, std::ostream *os) { *os << c.replay.what; }

const ReplayCase kReplays[] = {
    // Routing: row 4 is reachable only here; an index outside the menu sends nothing.
    {{{"Output4", 5}}, CALL(NVX_SetCurrentUSBInputAudio(0, 4)), NVX_OK, {"40 03 12 05 02 80 00 00"}},
    {{{"Output2", 9}}, CALL(NVX_SetCurrentUSBInputAudio(0, 2)), NVX_OK, {}},
    {{{"Output0", -1}}, CALL(NVX_SetCurrentUSBInputAudio(0, 0)), NVX_OK, {}},
    {{}, CALL(NVX_SetCurrentUSBInputAudio(0, 1)), NVX_OK, {"40 03 03 02 02 80 00 00"}},
    // Boost: a stored 4 is admitted and sends the quietest code.
    {{{"MaxLevel", 0}}, CALL(NVX_SetCurrentBoostLevelIndex(0)), NVX_OK, {"40 03 00 03 03 80 00 00"}},
    {{{"MaxLevel", 4}}, CALL(NVX_SetCurrentBoostLevelIndex(0)), NVX_OK, {"40 03 00 00 03 80 00 00"}},
    {{{"MaxLevel", 5}}, CALL(NVX_SetCurrentBoostLevelIndex(0)), NVX_ERROR, {}},
    {{{"MaxLevel", -1}}, CALL(NVX_SetCurrentBoostLevelIndex(0)), NVX_ERROR, {}},
    {{}, CALL(NVX_SetCurrentBoostLevelIndex(0)), NVX_OK, {"40 03 00 00 03 80 00 00"}},
    // Filter: banks A, B and temporary in order, the stored bank bits as they are, zero for a missing bank.
    {{{"TEMPORARY_FILTER", 0x24FF}, {"BANKA_FILTER", 0x1001}},
     CALL(NVX_SendFXBANKFILTERModeIndex(0)),
     NVX_OK,
     {"40 03 01 10 0D 85 00 00", "40 03 00 00 0D 85 00 00", "40 03 FF 24 0D 85 00 00"}},
    {{}, CALL(NVX_SendFXBANKFILTERModeIndex(0)), NVX_ERROR, {}},
    // "PopUp" is both the current filter mode and the current beat effect, each with its own bound.
    {{{"PopUp", 4}}, CALL(NVX_SetCurrentFXBANKFILTERModeIndex(0)), NVX_OK, {"40 03 00 04 0D 85 00 00"}},
    {{{"PopUp", 5}}, CALL(NVX_SetCurrentFXBANKFILTERModeIndex(0)), NVX_ERROR, {}},
    {{}, CALL(NVX_SetCurrentFXBANKFILTERModeIndex(0)), NVX_OK, {"40 03 00 00 0D 85 00 00"}},
    {{{"PopUp", 15}}, CALL(NVX_SetCurrentFXBANKBEATEFFECTModeIndex(0, 2)), NVX_OK, {"40 03 00 0F 0E 85 00 00"}},
    {{{"PopUp", 16}}, CALL(NVX_SetCurrentFXBANKBEATEFFECTModeIndex(0, 2)), NVX_ERROR, {}},
};

class ApiReplays : public ApiTest, public ::testing::WithParamInterface<ReplayCase> {};

TEST_P(ApiReplays, SendWhatTheFileHoldsAndStoreNothing) {
  const auto &c = GetParam();
  if (!c.file.empty()) settings.writeIntegers(c.file);
  bus.setMixers(mixers(1));
  EXPECT_EQ(c.replay.call(), c.result);
  std::vector<std::string> expected;
  for (const auto &wire : c.sent) expected.push_back("0 " + wire);
  EXPECT_EQ(bus.writes(), expected);
  ASSERT_EQ(settings.exists(), !c.file.empty());
  if (settings.exists()) {
    EXPECT_EQ(settings.integers(), c.file);
  }
}

INSTANTIATE_TEST_SUITE_P(, ApiReplays, ::testing::ValuesIn(kReplays));

}  // namespace
}  // namespace nvx::test
