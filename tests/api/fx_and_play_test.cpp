// The FX bank and play settings' quirks: replays, the shared "PopUp" number, what the getters hand
// out of a stored word, and the banks a setter sends but cannot store.
#include "api_fixture.h"

namespace nvx::test {
namespace {

constexpr uint16_t kFilter = 0x850D, kBeatFx = 0x850E, kTail = 0x8510;

class ApiFxBank : public ApiTest {};

TEST_F(ApiFxBank, FilterReplaySendsTheBanksInOrderAndZeroForAMissingOne) {
  bus.setMixers(mixers(2));
  settings.writeIntegers({{"TEMPORARY_FILTER", 0x24FF}, {"BANKA_FILTER", 0x1001}});
  EXPECT_EQ(NVX_SendFXBANKFILTERModeIndex(0), NVX_OK);
  std::vector<std::string> expected;
  for (const uint16_t word : std::initializer_list<uint16_t>{0x1001, 0x0000, 0x24FF}) {  // the stored bank bits are sent as they are
    auto each = writesToEach(2, kFilter, word);
    expected.insert(expected.end(), each.begin(), each.end());
  }
  EXPECT_EQ(bus.requests(), expected);
  EXPECT_EQ(settings.keyCount(), 2u) << "the replay stores nothing";
}

TEST_F(ApiFxBank, FilterGetterIgnoresBankBitsAndDoesNotRangeTestTheMode) {
  settings.writeIntegers({{"BANKB_FILTER", 0x2F7E}});
  uint32_t mode = 0, param = 0;
  EXPECT_EQ(NVX_GetFXBANKFILTERModeIndex(0, 1, &mode, &param), NVX_OK);
  EXPECT_EQ(mode, 15u);
  EXPECT_EQ(param, 0x7Eu);
}

TEST_F(ApiFxBank, PopUpIsTheCurrentFilterModeAndTheCurrentBeatEffect) {
  bus.setMixers(mixers(1));
  struct Case {
    int64_t popUp;
    int32_t filterReplay, effectReplay;
  };
  for (const Case &c : {Case{4, NVX_OK, NVX_OK}, Case{7, NVX_ERROR, NVX_OK}, Case{15, NVX_ERROR, NVX_OK},
                        Case{16, NVX_ERROR, NVX_ERROR}}) {
    SCOPED_TRACE(c.popUp);
    settings.writeIntegers({{"PopUp", c.popUp}});
    uint32_t filter = 77, effect = 77;
    EXPECT_EQ(NVX_GetCurrentFXBANKFILTERModeIndex(0, &filter), NVX_OK);
    EXPECT_EQ(NVX_GetCurrentFXBANKBEATEFFECTModeIndex(0, 0, &effect), NVX_OK);
    EXPECT_EQ(filter, c.popUp);
    EXPECT_EQ(effect, c.popUp);
    const auto word = static_cast<uint16_t>(c.popUp << 8);
    bus.clearLog();
    EXPECT_EQ(NVX_SetCurrentFXBANKFILTERModeIndex(0), c.filterReplay);
    EXPECT_EQ(bus.requests(), c.filterReplay == NVX_OK ? writesToEach(1, kFilter, word) : std::vector<std::string>{});
    bus.clearLog();
    EXPECT_EQ(NVX_SetCurrentFXBANKBEATEFFECTModeIndex(0, 2), c.effectReplay);
    EXPECT_EQ(bus.requests(), c.effectReplay == NVX_OK ? writesToEach(1, kBeatFx, word) : std::vector<std::string>{});
  }
  EXPECT_EQ(settings.keyCount(), 1u) << "replays store nothing";
}

TEST_F(ApiFxBank, BeatFxBankThreeIsSentButHasNoKey) {
  bus.setMixers(mixers(1));
  ASSERT_EQ(NVX_SetFXBANKBFXModeIndex(0, 3, 0, 0, 1), NVX_OK);
  EXPECT_EQ(bus.requests(), writesToEach(1, kBeatFx, 0xC001));
  EXPECT_FALSE(settings.exists());
}

TEST_F(ApiFxBank, BeatFxGetterLimitsPerItem) {
  settings.writeIntegers({{"BFX_BANKA1_0", 15}, {"BFX_BANKA1_1", 255}, {"BFX_BANKA1_2", 55}, {"BFX_BANKA1_3", 9},
                          {"BFX_BANKA2_0", 0x0F0E}});
  struct Case {
    uint32_t position, item, expected;
  };
  const Case cases[] = {
      {1, 0, 77},   // FXType 15: past the last effect, left alone
      {1, 1, 255},  // depth: any byte
      {1, 2, 77},   // BEAT 55: past the last code
      {1, 3, 0},    // an item past the table reads a key ending in _3 and yields 0
      {2, 0, 14},   // only the low byte counts
  };
  for (const auto &c : cases) {
    uint32_t out = 77;
    EXPECT_EQ(NVX_GetFXBANKBFXModeIndex(0, 0, c.position, c.item, &out), NVX_OK) << c.position << "/" << c.item;
    EXPECT_EQ(out, c.expected) << c.position << "/" << c.item;
  }
}

TEST_F(ApiFxBank, TailBankThreeIsSentThenRefusedAndAStoredTwoIsAnError) {
  bus.setMixers(mixers(2));
  EXPECT_EQ(NVX_SetFXBANKBFXTAILIndex(0, 3, 1), NVX_ERROR);
  EXPECT_EQ(bus.requests(), writesToEach(2, kTail, 0x3001));
  EXPECT_FALSE(settings.exists());
  settings.writeIntegers({{"TAIL_BANK_A", 0x1002}});
  uint32_t tail = 77;
  EXPECT_EQ(NVX_GetFXBANKBFXTAILIndex(0, 0, &tail), NVX_ERROR);
  EXPECT_EQ(tail, 0u);
}

TEST_F(ApiTest, PlayGettersHandOutTheLowByteWithoutARangeTest) {
  for (const auto &[stored, expected] : std::vector<std::pair<int64_t, uint32_t>>{{7, 7}, {0x0102, 2}, {-1, 255}}) {
    settings.writeIntegers({{"FaderStartMode", stored}});
    uint32_t out = 77;
    EXPECT_EQ(NVX_GetFADERSTARTIndex(0, &out), NVX_OK);
    EXPECT_EQ(out, expected) << stored;
  }
}

TEST_F(ApiTest, CrossfaderModeIsBitsEightToFifteenOfTheCutLagModeKey) {
  ASSERT_EQ(NVX_SetCROSSFADERCUTLAGModeIndex(0, 3), NVX_OK);
  uint32_t mode = 77;
  EXPECT_EQ(NVX_GetCurrentCROSSFADERModeIndex(0, &mode), NVX_OK);
  EXPECT_EQ(mode, 0u) << "what this library stores always reads as NONE";
  settings.writeIntegers({{"CRFaderCutLagMode", 0x0201}});
  uint32_t cutLagMode = 77;
  EXPECT_EQ(NVX_GetCROSSFADERCUTLAGModeIndex(0, &cutLagMode), NVX_OK);
  EXPECT_EQ(NVX_GetCurrentCROSSFADERModeIndex(0, &mode), NVX_OK);
  EXPECT_EQ(cutLagMode, 1u);
  EXPECT_EQ(mode, 2u);
}

}  // namespace
}  // namespace nvx::test
