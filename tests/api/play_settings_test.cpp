#include "api_fixture.h"

namespace nvx::test {
namespace {

using Setter = int32_t (*)(int32_t, uint32_t);
using Getter = int32_t (*)(int32_t, uint32_t *);

struct PlayCase {
  const char *name;
  Setter set;
  Getter get;
  uint32_t maximum;
  uint16_t wIndex;
  const char *key;
  bool untouchedWhenMissing;  // else 0
};

const PlayCase kPlayCases[] = {
    {"cut lag", NVX_SetCROSSFADERCUTLAGIndex, NVX_GetCROSSFADERCUTLAGIndex, 255, 0x8511, "CRFaderCutLag", true},
    {"loop button", NVX_Set4BEATLOOPBUTTONTypeIndex, NVX_Get4BEATLOOPBUTTONTypeIndex, 1, 0x8512, "4BeatLpBtType", true},
    {"fader start", NVX_SetFADERSTARTIndex, NVX_GetFADERSTARTIndex, 2, 0x8513, "FaderStartMode", false},
    {"pad mode", NVX_SetPADModeIndex, NVX_GetPADModeIndex, 2, 0x8514, "PADMode", false},
    {"cut lag mode", NVX_SetCROSSFADERCUTLAGModeIndex, NVX_GetCROSSFADERCUTLAGModeIndex, 3, 0x8515,
     "CRFaderCutLagMode", false},
};

class PlaySettingTest : public ApiTest, public ::testing::WithParamInterface<PlayCase> {};

TEST_P(PlaySettingTest, TheHighestIndexIsSentInTheHighByteAndStoredBare) {
  const auto &c = GetParam();
  bus.setMixers(mixers(2));
  ASSERT_EQ(c.set(0, c.maximum), NVX_OK);
  EXPECT_EQ(bus.requests(), writesToEach(2, c.wIndex, static_cast<uint16_t>(c.maximum << 8)));
  EXPECT_EQ(settings.integers(), (std::map<std::string, int64_t>{{c.key, c.maximum}}));
  uint32_t out = 77;
  EXPECT_EQ(c.get(0, &out), NVX_OK);
  EXPECT_EQ(out, c.maximum);
}

TEST_P(PlaySettingTest, OutOfRangeAndOtherProductsChangeNothing) {
  const auto &c = GetParam();
  bus.setMixers(mixers(1));
  EXPECT_EQ(c.set(0, c.maximum + 1), NVX_ERROR);
  EXPECT_EQ(c.set(0, static_cast<uint32_t>(-1)), NVX_ERROR);
  EXPECT_EQ(c.set(1, 0), NVX_ERROR);
  EXPECT_TRUE(bus.log().empty());
  EXPECT_FALSE(settings.exists());
  uint32_t out = 0;
  EXPECT_EQ(c.get(1, &out), NVX_ERROR);
  EXPECT_EQ(c.get(0, nullptr), NVX_ERROR);
}

TEST_P(PlaySettingTest, MissingFileOrKeyFollowsTheSettingsRule) {
  const auto &c = GetParam();
  const uint32_t expected = c.untouchedWhenMissing ? 77u : 0u;
  uint32_t out = 77;
  EXPECT_EQ(c.get(0, &out), NVX_OK);
  EXPECT_EQ(out, expected) << "no file";
  settings.writeIntegers({{"SomethingElse", 5}});
  out = 77;
  EXPECT_EQ(c.get(0, &out), NVX_OK);
  EXPECT_EQ(out, expected) << "key absent";
  settings.writeRaw("not a property list");
  out = 77;
  EXPECT_EQ(c.get(0, &out), NVX_OK);
  EXPECT_EQ(out, expected) << "unreadable file";
}

TEST_P(PlaySettingTest, TheGetterHandsOutTheLowByteWithoutARangeTest) {
  const auto &c = GetParam();
  for (const auto &[stored, expected] : std::vector<std::pair<int64_t, uint32_t>>{{7, 7}, {0x0102, 2}, {-1, 255}}) {
    settings.writeIntegers({{c.key, stored}});
    uint32_t out = 77;
    EXPECT_EQ(c.get(0, &out), NVX_OK);
    EXPECT_EQ(out, expected) << stored;
  }
}

INSTANTIATE_TEST_SUITE_P(FiveSettings, PlaySettingTest, ::testing::ValuesIn(kPlayCases),
                         [](const auto &param) {
                           std::string name = param.param.name;
                           for (auto &ch : name) ch = ch == ' ' ? '_' : ch;
                           return name;
                         });

class CrossfaderModeTest : public ApiTest {};

TEST_F(CrossfaderModeTest, ReadsBitsEightToFifteenOfTheCutLagModeKey) {
  ASSERT_EQ(NVX_SetCROSSFADERCUTLAGModeIndex(0, 3), NVX_OK);
  uint32_t cutLagMode = 0, mode = 77;
  EXPECT_EQ(NVX_GetCROSSFADERCUTLAGModeIndex(0, &cutLagMode), NVX_OK);
  EXPECT_EQ(NVX_GetCurrentCROSSFADERModeIndex(0, &mode), NVX_OK);
  EXPECT_EQ(cutLagMode, 3u);
  EXPECT_EQ(mode, 0u) << "what this library stores always reads as NONE";

  settings.writeIntegers({{"CRFaderCutLagMode", 0x0201}});
  EXPECT_EQ(NVX_GetCROSSFADERCUTLAGModeIndex(0, &cutLagMode), NVX_OK);
  EXPECT_EQ(NVX_GetCurrentCROSSFADERModeIndex(0, &mode), NVX_OK);
  EXPECT_EQ(cutLagMode, 1u);
  EXPECT_EQ(mode, 2u);
}

TEST_F(CrossfaderModeTest, TextsCountAndBounds) {
  uint32_t count = 0;
  EXPECT_EQ(NVX_GetNumOfCROSSFADERModeIndex(0, &count), NVX_OK);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(NVX_GetNumOfCROSSFADERModeIndex(1, &count), NVX_ERROR);
  EXPECT_EQ(NVX_GetNumOfCROSSFADERModeIndex(0, nullptr), NVX_ERROR);
  const char *text = nullptr;
  EXPECT_EQ(NVX_GetCROSSFADERModeText(0, 2, 12345, &text), NVX_OK);
  EXPECT_STREQ(text, "LARGE");
  EXPECT_EQ(NVX_GetCROSSFADERModeText(0, 3, 0, &text), NVX_ERROR);
  EXPECT_EQ(NVX_GetCROSSFADERModeText(0, 0, 0, nullptr), NVX_ERROR);
  uint32_t mode = 77;
  EXPECT_EQ(NVX_GetCurrentCROSSFADERModeIndex(0, &mode), NVX_OK);
  EXPECT_EQ(mode, 0u) << "no file: 0";
}

TEST_F(CrossfaderModeTest, ASetterWithoutMixersStillStores) {
  EXPECT_EQ(NVX_SetPADModeIndex(0, 2), NVX_OK);
  EXPECT_EQ(settings.value("PADMode"), 2);
  EXPECT_EQ(settings.keyCount(), 1u);
}

}  // namespace
}  // namespace nvx::test
