// The menus: counts and texts, with the null end entry that some text functions hand out.
#include <functional>

#include "api_fixture.h"

namespace nvx::test {
namespace {

TEST(ApiMenus, CountsAndTextsUpToTheirBounds) {
  using TextCall = std::function<int32_t(const char **)>;
  const std::pair<TextCall, const char *> texts[] = {  // nullptr: the table's null end entry
      {[](auto t) { return NVX_GetUSBInputAudioText(0, 3, 5, 0, t); }, "None"},
      {[](auto t) { return NVX_GetUSBInputAudioText(0, 2, 0, 0, t); }, "MIX(REC OUT)"},
      {[](auto t) { return NVX_GetUSBInputAudioText(0, 0, 6, 0, t); }, "AUX"},
      {[](auto t) { return NVX_GetBoostLevelText(0, 1, 0, t); }, "-10 dB"},
      {[](auto t) { return NVX_GetFXBANKFILTERModeText(0, 3, 0, t); }, "PITCH"},
      {[](auto t) { return NVX_GetFXBANKFILTERModeText(0, 5, 0, t); }, nullptr},
      {[](auto t) { return NVX_GetFXBANKBEATEFFECTModeText(0, 0, 14, 0, t); }, "FADER SYNTH3"},
      {[](auto t) { return NVX_GetFXBANKBEATEFFECTModeText(0, 6, 15, 0, t); }, nullptr},
      {[](auto t) { return NVX_GetCROSSFADERModeText(0, 2, 12345, t); }, "LARGE"},
  };
  for (const auto &[call, expected] : texts) {
    const char *text = "untouched";
    EXPECT_EQ(call(&text), NVX_OK) << (expected ? expected : "null end");
    EXPECT_EQ(std::string(text ? text : "<null>"), expected ? expected : "<null>");
  }
  using CountCall = std::function<int32_t(uint32_t *)>;
  const std::pair<CountCall, uint32_t> counts[] = {
      {[](auto c) { return NVX_GetNumOfInputAudioIndex(0, 0, c); }, 7},
      {[](auto c) { return NVX_GetNumOfInputAudioIndex(0, 3, c); }, 6},
      {[](auto c) { return NVX_GetNumOfInputAudioIndex(0, 4, c); }, 1},
      {[](auto c) { return NVX_GetNumOfBoostLevelIndex(0, c); }, 4},
      {[](auto c) { return NVX_GetNumOfFXBANKFILTERModeIndex(0, c); }, 5},
      {[](auto c) { return NVX_GetNumOfFXBANKBEATEFFECTModeIndex(0, 6, c); }, 15},
      {[](auto c) { return NVX_GetNumOfCROSSFADERModeIndex(0, c); }, 3},
  };
  for (const auto &[call, expected] : counts) {
    uint32_t count = 0;
    EXPECT_EQ(call(&count), NVX_OK);
    EXPECT_EQ(count, expected);
  }
  EXPECT_STREQ(MidiChannelText[15], "CH 16");
}

}  // namespace
}  // namespace nvx::test
