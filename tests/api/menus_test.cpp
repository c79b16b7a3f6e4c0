// The menus: counts and texts, with the null end entry that some text functions hand out (the C
// translation unit of tests/abi reads a few more).
#include "api_fixture.h"

namespace nvx::test {
namespace {

const char *text;
uint32_t count;

TEST(ApiMenus, CountsAndTextsUpToTheirBounds) {
  const std::pair<Call, const char *> texts[] = {  // nullptr: the table's null end entry
      {CALL(NVX_GetUSBInputAudioText(0, 3, 5, 0, &text)), "None"},
      {CALL(NVX_GetUSBInputAudioText(0, 0, 6, 0, &text)), "AUX"},
      {CALL(NVX_GetFXBANKFILTERModeText(0, 3, 0, &text)), "PITCH"},
      {CALL(NVX_GetFXBANKFILTERModeText(0, 5, 0, &text)), nullptr},
      {CALL(NVX_GetFXBANKBEATEFFECTModeText(0, 0, 14, 0, &text)), "FADER SYNTH3"},
      {CALL(NVX_GetFXBANKBEATEFFECTModeText(0, 6, 15, 0, &text)), nullptr},
      {CALL(NVX_GetCROSSFADERModeText(0, 2, 12345, &text)), "LARGE"},
  };
  for (const auto &[call, expected] : texts) {
    text = "untouched";
    EXPECT_EQ(call.call(), NVX_OK) << call.what;
    EXPECT_EQ(std::string(text ? text : "<null>"), expected ? expected : "<null>") << call.what;
  }
  const std::pair<Call, uint32_t> counts[] = {
      {CALL(NVX_GetNumOfInputAudioIndex(0, 0, &count)), 7},
      {CALL(NVX_GetNumOfInputAudioIndex(0, 3, &count)), 6},
      {CALL(NVX_GetNumOfInputAudioIndex(0, 4, &count)), 1},
      {CALL(NVX_GetNumOfFXBANKFILTERModeIndex(0, &count)), 5},
      {CALL(NVX_GetNumOfFXBANKBEATEFFECTModeIndex(0, 6, &count)), 15},
      {CALL(NVX_GetNumOfCROSSFADERModeIndex(0, &count)), 3},
  };
  for (const auto &[call, expected] : counts) {
    count = 0;
    EXPECT_EQ(call.call(), NVX_OK) << call.what;
    EXPECT_EQ(count, expected) << call.what;
  }
}

}  // namespace
}  // namespace nvx::test
