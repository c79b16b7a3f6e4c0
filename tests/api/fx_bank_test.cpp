#include "api_fixture.h"

namespace nvx::test {
namespace {

constexpr uint16_t kFilter = 0x850D, kBeatFx = 0x850E, kChannelFader = 0x850F, kTail = 0x8510;

class FxBankTest : public ApiTest {};

// --- Filter mode -------------------------------------------------------------------------------

TEST_F(FxBankTest, FilterWordIsSentAndStoredUnderTheBanksKey) {
  struct Case {
    uint32_t bank, mode, param;
    uint16_t word;
    const char *key;
  };
  const Case cases[] = {
      {1, 3, 0x40, 0x1340, "BANKB_FILTER"},
      {2, 4, 0x1FF, 0x24FF, "TEMPORARY_FILTER"},  // only the parameter's low byte is kept
      {0, 0, 0, 0x0000, "BANKA_FILTER"},
  };
  bus.setMixers(mixers(2));
  for (const auto &c : cases) {
    bus.clearLog();
    ASSERT_EQ(NVX_SetFXBANKFILTERModeIndex(0, c.bank, c.mode, c.param), NVX_OK);
    EXPECT_EQ(bus.requests(), writesToEach(2, kFilter, c.word));
    EXPECT_EQ(settings.value(c.key), c.word);
    uint32_t mode = 99, param = 99;
    EXPECT_EQ(NVX_GetFXBANKFILTERModeIndex(0, c.bank, &mode, &param), NVX_OK);
    EXPECT_EQ(mode, c.mode);
    EXPECT_EQ(param, c.param & 0xFF);
  }
}

TEST_F(FxBankTest, FilterRefusalsSendAndStoreNothing) {
  bus.setMixers(mixers(1));
  EXPECT_EQ(NVX_SetFXBANKFILTERModeIndex(0, 3, 0, 0), NVX_ERROR);
  EXPECT_EQ(NVX_SetFXBANKFILTERModeIndex(0, 0, 5, 0), NVX_ERROR);
  EXPECT_EQ(NVX_SetFXBANKFILTERModeIndex(1, 0, 0, 0), NVX_ERROR);
  EXPECT_TRUE(bus.log().empty());
  EXPECT_FALSE(settings.exists());
}

TEST_F(FxBankTest, FilterGetterAndReplayWithoutFileOrKey) {
  bus.setMixers(mixers(1));
  uint32_t mode = 99, param = 99;
  EXPECT_EQ(NVX_GetFXBANKFILTERModeIndex(0, 0, &mode, &param), NVX_ERROR) << "no file";
  EXPECT_EQ(NVX_SendFXBANKFILTERModeIndex(0), NVX_ERROR) << "no file";
  EXPECT_TRUE(bus.requests().empty());

  settings.writeIntegers({{"BANKA_FILTER", 0x0213}});
  EXPECT_EQ(NVX_GetFXBANKFILTERModeIndex(0, 1, &mode, &param), NVX_OK);
  EXPECT_EQ(mode, 99u) << "a missing key leaves both outputs";
  EXPECT_EQ(param, 99u);

  bus.clearLog();
  EXPECT_EQ(NVX_SendFXBANKFILTERModeIndex(0), NVX_OK);
  EXPECT_EQ(bus.requests(), (std::vector<std::string>{writeLine(0, kFilter, 0x0213), writeLine(0, kFilter, 0),
                                                      writeLine(0, kFilter, 0)}))
      << "A as stored, then 0 for the missing B and temporary keys";
  EXPECT_EQ(settings.keyCount(), 1u) << "the replay stores nothing";
}

TEST_F(FxBankTest, FilterReplaySendsTheBanksInOrderToEveryMixer) {
  bus.setMixers(mixers(2));
  settings.writeIntegers({{"TEMPORARY_FILTER", 0x24FF}, {"BANKB_FILTER", 0x1340}, {"BANKA_FILTER", 0x1001}});
  EXPECT_EQ(NVX_SendFXBANKFILTERModeIndex(0), NVX_OK);
  std::vector<std::string> expected;
  for (uint16_t word : std::initializer_list<uint16_t>{0x1001, 0x1340, 0x24FF}) {  // the stored bank bits are not compared with the key
    auto each = writesToEach(2, kFilter, word);
    expected.insert(expected.end(), each.begin(), each.end());
  }
  EXPECT_EQ(bus.requests(), expected);
  EXPECT_EQ(NVX_SendFXBANKFILTERModeIndex(1), NVX_ERROR);
}

TEST_F(FxBankTest, FilterDecodeIgnoresBankBitsAndDoesNotRangeTestTheMode) {
  settings.writeIntegers({{"BANKB_FILTER", 0x2F7E}});
  uint32_t mode = 0, param = 0;
  EXPECT_EQ(NVX_GetFXBANKFILTERModeIndex(0, 1, &mode, &param), NVX_OK);
  EXPECT_EQ(mode, 15u);
  EXPECT_EQ(param, 0x7Eu);
  EXPECT_EQ(NVX_GetFXBANKFILTERModeIndex(0, 3, &mode, &param), NVX_ERROR);
  EXPECT_EQ(NVX_GetFXBANKFILTERModeIndex(0, 0, nullptr, &param), NVX_ERROR);
}

TEST_F(FxBankTest, TextTablesAdmitTheirNullEndEntry) {
  const char *text = "x";
  EXPECT_EQ(NVX_GetFXBANKFILTERModeText(0, 3, 0, &text), NVX_OK);
  EXPECT_STREQ(text, "PITCH");
  EXPECT_EQ(NVX_GetFXBANKFILTERModeText(0, 5, 0, &text), NVX_OK);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(NVX_GetFXBANKFILTERModeText(0, 6, 0, &text), NVX_ERROR);
  EXPECT_EQ(NVX_GetFXBANKBEATEFFECTModeText(0, 6, 15, 0, &text), NVX_OK);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(NVX_GetFXBANKBEATEFFECTModeText(0, 0, 14, 0, &text), NVX_OK);
  EXPECT_STREQ(text, "FADER SYNTH3");
  EXPECT_EQ(NVX_GetFXBANKBEATEFFECTModeText(0, 7, 0, 0, &text), NVX_ERROR);
  EXPECT_EQ(NVX_GetFXBANKBEATEFFECTModeText(0, 0, 16, 0, &text), NVX_ERROR);
  uint32_t count = 0;
  EXPECT_EQ(NVX_GetNumOfFXBANKFILTERModeIndex(0, &count), NVX_OK);
  EXPECT_EQ(count, 5u);
  EXPECT_EQ(NVX_GetNumOfFXBANKBEATEFFECTModeIndex(0, 6, &count), NVX_OK);
  EXPECT_EQ(count, 15u);
  EXPECT_EQ(NVX_GetNumOfFXBANKBEATEFFECTModeIndex(0, 7, &count), NVX_ERROR);
}

// --- The shared "PopUp" number -----------------------------------------------------------------

TEST_F(FxBankTest, PopUpIsTheCurrentFilterModeAndTheCurrentBeatEffect) {
  bus.setMixers(mixers(1));
  uint32_t filter = 77, effect = 77;
  EXPECT_EQ(NVX_GetCurrentFXBANKFILTERModeIndex(0, &filter), NVX_OK);
  EXPECT_EQ(NVX_GetCurrentFXBANKBEATEFFECTModeIndex(0, 3, &effect), NVX_OK);
  EXPECT_EQ(filter, 0u);
  EXPECT_EQ(effect, 0u);

  struct Case {
    int64_t popUp;
    int32_t filterReplay;
    int32_t effectReplay;
  };
  const Case cases[] = {{4, NVX_OK, NVX_OK}, {7, NVX_ERROR, NVX_OK}, {15, NVX_ERROR, NVX_OK}, {16, NVX_ERROR, NVX_ERROR}};
  for (const auto &c : cases) {
    SCOPED_TRACE(c.popUp);
    settings.writeIntegers({{"PopUp", c.popUp}});
    EXPECT_EQ(NVX_GetCurrentFXBANKFILTERModeIndex(0, &filter), NVX_OK);
    EXPECT_EQ(NVX_GetCurrentFXBANKBEATEFFECTModeIndex(0, 0, &effect), NVX_OK);
    EXPECT_EQ(filter, c.popUp);
    EXPECT_EQ(effect, c.popUp);
    bus.clearLog();
    EXPECT_EQ(NVX_SetCurrentFXBANKFILTERModeIndex(0), c.filterReplay);
    EXPECT_EQ(bus.requests(), c.filterReplay == NVX_OK ? writesToEach(1, kFilter, static_cast<uint16_t>(c.popUp << 8))
                                                      : std::vector<std::string>{});
    bus.clearLog();
    EXPECT_EQ(NVX_SetCurrentFXBANKBEATEFFECTModeIndex(0, 2), c.effectReplay);
    EXPECT_EQ(bus.requests(), c.effectReplay == NVX_OK ? writesToEach(1, kBeatFx, static_cast<uint16_t>(c.popUp << 8))
                                                      : std::vector<std::string>{});
  }
  EXPECT_EQ(NVX_SetCurrentFXBANKBEATEFFECTModeIndex(0, 7), NVX_ERROR);
  EXPECT_EQ(settings.keyCount(), 1u) << "replays store nothing";
}

// --- Beat FX -----------------------------------------------------------------------------------

TEST_F(FxBankTest, BeatFxWordAndKey) {
  struct Case {
    uint32_t bank, position, item, value;
    uint16_t word;
    const char *key;
    uint32_t readBack;
  };
  const Case cases[] = {
      {1, 3, 0, 9, 0x5809, "BFX_BANKB3_0", 9},
      {1, 3, 1, 0x1C0, 0x59C0, "BFX_BANKB3_1", 0xC0},
      {2, 5, 2, 0xFF, 0xAAFF, "BFX_TEMP5_2", 77},  // a beat code above 54 is not handed out
      {0, 0, 2, 54, 0x0236, "BFX_BANKA0_2", 54},
  };
  bus.setMixers(mixers(1));
  for (const auto &c : cases) {
    SCOPED_TRACE(c.key);
    bus.clearLog();
    ASSERT_EQ(NVX_SetFXBANKBFXModeIndex(0, c.bank, c.position, c.item, c.value), NVX_OK);
    EXPECT_EQ(bus.requests(), writesToEach(1, kBeatFx, c.word));
    EXPECT_EQ(settings.value(c.key), c.word);
    uint32_t out = 77;
    EXPECT_EQ(NVX_GetFXBANKBFXModeIndex(0, c.bank, c.position, c.item, &out), NVX_OK);
    EXPECT_EQ(out, c.readBack);
  }
}

TEST_F(FxBankTest, BeatFxBankIsNotTestedBySetterButHasNoKeyAboveTwo) {
  bus.setMixers(mixers(1));
  ASSERT_EQ(NVX_SetFXBANKBFXModeIndex(0, 3, 0, 0, 1), NVX_OK);
  EXPECT_EQ(bus.requests(), writesToEach(1, kBeatFx, 0xC001));
  EXPECT_FALSE(settings.exists()) << "no key exists for bank 3";
  bus.clearLog();
  EXPECT_EQ(NVX_SetFXBANKBFXModeIndex(0, 0, 6, 0, 0), NVX_ERROR);
  EXPECT_EQ(NVX_SetFXBANKBFXModeIndex(0, 0, 0, 3, 0), NVX_ERROR);
  EXPECT_TRUE(bus.log().empty());
}

TEST_F(FxBankTest, BeatFxGetterLimitsPerItem) {
  settings.writeIntegers({{"BFX_BANKA1_0", 15}, {"BFX_BANKA1_1", 255}, {"BFX_BANKA1_2", 55}, {"BFX_BANKA1_3", 9},
                          {"BFX_BANKA2_0", 0x0F0E}});
  struct Case {
    uint32_t position, item;
    uint32_t expected;
  };
  const Case cases[] = {
      {1, 0, 77},   // FXType 15: past the last effect, left alone
      {1, 1, 255},  // depth: any byte
      {1, 2, 77},   // BEAT 55: past the last code
      {1, 3, 0},    // an item past the table reads a key ending in _3 and yields 0
      {2, 0, 14},   // only the low byte counts
      {4, 0, 77},   // key missing
  };
  for (const auto &c : cases) {
    uint32_t out = 77;
    EXPECT_EQ(NVX_GetFXBANKBFXModeIndex(0, 0, c.position, c.item, &out), NVX_OK) << c.position << "/" << c.item;
    EXPECT_EQ(out, c.expected) << c.position << "/" << c.item;
  }
  uint32_t out = 77;
  EXPECT_EQ(NVX_GetFXBANKBFXModeIndex(0, 3, 0, 0, &out), NVX_ERROR) << "bank 3, after the file was read";
  EXPECT_EQ(NVX_GetFXBANKBFXModeIndex(0, 0, 6, 0, &out), NVX_ERROR);
}

TEST_F(FxBankTest, BeatFxGetterWithoutFileIsAnErrorEvenForABadBank) {
  uint32_t out = 77;
  EXPECT_EQ(NVX_GetFXBANKBFXModeIndex(0, 0, 0, 0, &out), NVX_ERROR);
  EXPECT_EQ(NVX_GetFXBANKBFXModeIndex(0, 9, 0, 0, &out), NVX_ERROR);
  EXPECT_EQ(out, 77u);
}

// --- Channel fader and tail --------------------------------------------------------------------

TEST_F(FxBankTest, ChannelFaderBanksShareTheSecondKey) {
  bus.setMixers(mixers(1));
  ASSERT_EQ(NVX_SetFXBANKCHFADERModeIndex(0, 1, 2), NVX_OK);
  EXPECT_EQ(settings.value("CHFADERBANK_B"), 0x1002);
  ASSERT_EQ(NVX_SetFXBANKCHFADERModeIndex(0, 2, 1), NVX_OK);
  EXPECT_EQ(settings.value("CHFADERBANK_B"), 0x2001) << "the temporary bank overwrites bank B's word";
  ASSERT_EQ(NVX_SetFXBANKCHFADERModeIndex(0, 3, 3), NVX_OK);
  EXPECT_EQ(settings.value("CHFADERBANK_B"), 0x3003);
  ASSERT_EQ(NVX_SetFXBANKCHFADERModeIndex(0, 0, 3), NVX_OK);
  EXPECT_EQ(settings.value("CHFADERBANK_A"), 0x0003);
  EXPECT_EQ(bus.requests(), (std::vector<std::string>{writeLine(0, kChannelFader, 0x1002), writeLine(0, kChannelFader, 0x2001),
                                                      writeLine(0, kChannelFader, 0x3003), writeLine(0, kChannelFader, 0x0003)}));
  bus.clearLog();
  EXPECT_EQ(NVX_SetFXBANKCHFADERModeIndex(0, 0, 4), NVX_ERROR);
  EXPECT_EQ(NVX_SetFXBANKCHFADERModeIndex(0, 4, 0), NVX_ERROR);
  EXPECT_TRUE(bus.log().empty());
}

TEST_F(FxBankTest, TailBankThreeIsSentThenRefused) {
  bus.setMixers(mixers(2));
  EXPECT_EQ(NVX_SetFXBANKBFXTAILIndex(0, 3, 1), NVX_ERROR);
  EXPECT_EQ(bus.requests(), writesToEach(2, kTail, 0x3001));
  EXPECT_FALSE(settings.exists());
  bus.clearLog();
  EXPECT_EQ(NVX_SetFXBANKBFXTAILIndex(0, 0, 2), NVX_ERROR);
  EXPECT_TRUE(bus.log().empty());
}

TEST_F(FxBankTest, TailRoundTripAndItsMissingValueRules) {
  uint32_t tail = 77;
  EXPECT_EQ(NVX_GetFXBANKBFXTAILIndex(0, 1, &tail), NVX_ERROR);
  EXPECT_EQ(tail, 0u) << "no file: an error, but the output is written 0 first";

  ASSERT_EQ(NVX_SetFXBANKBFXTAILIndex(0, 1, 1), NVX_OK);
  ASSERT_EQ(NVX_SetFXBANKBFXTAILIndex(0, 2, 1), NVX_OK);
  EXPECT_EQ(settings.value("TAIL_BANK_B"), 0x1001);
  EXPECT_EQ(settings.value("TAIL_TEMP"), 0x2001);
  EXPECT_EQ(NVX_GetFXBANKBFXTAILIndex(0, 1, &tail), NVX_OK);
  EXPECT_EQ(tail, 1u);

  tail = 77;
  EXPECT_EQ(NVX_GetFXBANKBFXTAILIndex(0, 0, &tail), NVX_OK);
  EXPECT_EQ(tail, 0u) << "a missing key reads 0";
  tail = 77;
  EXPECT_EQ(NVX_GetFXBANKBFXTAILIndex(0, 3, &tail), NVX_ERROR);
  EXPECT_EQ(tail, 0u);

  settings.writeIntegers({{"TAIL_BANK_A", 0x1002}});
  tail = 77;
  EXPECT_EQ(NVX_GetFXBANKBFXTAILIndex(0, 0, &tail), NVX_ERROR);
  EXPECT_EQ(tail, 0u);
  tail = 77;
  EXPECT_EQ(NVX_GetFXBANKBFXTAILIndex(0, 4, &tail), NVX_ERROR);
  EXPECT_EQ(tail, 77u) << "argument errors come before the output is written";
}

}  // namespace
}  // namespace nvx::test
