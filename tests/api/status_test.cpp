// The status queries: the only reads from the mixer, and how each handles what the mixers answer.
#include "api_fixture.h"

namespace nvx::test {
namespace {

constexpr const char *kFirmwareRead = " C0 00 00 00 01 80 02 00";

class ApiStatus : public ApiTest {};

TEST_F(ApiStatus, WithoutMixersEveryQueryLeavesItsOutput) {
  int32_t firmware = -7, selector = -7, serato = -7;
  EXPECT_EQ(NVX_GetFirmwareVersionIndex(0, &firmware), NVX_OK);
  EXPECT_EQ(NVX_GetMixerInputSelectorStatus(0, 1, &selector), NVX_OK);
  EXPECT_EQ(NVX_GetMixerSeratoActiveStatus(0, &serato), NVX_OK);
  EXPECT_EQ(firmware, -7);
  EXPECT_EQ(selector, -7);
  EXPECT_EQ(serato, -7);
}

TEST_F(ApiStatus, FirmwareIsReadFromTheFirstMixerOnly) {
  VirtualMixer first, second;
  first.firmware = {0x05, 0x01};
  second.firmware = {0x09, 0x09};
  bus.setMixers({first, second});
  int32_t firmware = 0;
  ASSERT_EQ(NVX_GetFirmwareVersionIndex(0, &firmware), NVX_OK);
  EXPECT_EQ(firmware, 0x0105);
  EXPECT_EQ(bus.log(), (std::vector<std::string>{"0 open", std::string("0") + kFirmwareRead + " -> 05 01", "0 close"}));
}

TEST_F(ApiStatus, FirmwareOutcomesOfTheFirstMixer) {
  struct Case {
    const char *what;
    VirtualMixer mixer;
    int32_t expected;
  };
  VirtualMixer busy, failing, shortAnswer, longAnswer;
  busy.open = "busy";
  failing.fail = {"0x8001"};
  shortAnswer.firmware = {0x07, 0x02};
  shortAnswer.shortReads = {{"0x8001", 1}};
  longAnswer.firmware = {0x01, 0x02, 0x03, 0x04};
  const std::vector<Case> cases = {
      {"busy: not opened, output untouched", busy, -7},
      {"failed read: the cleared buffer, not the provisional value", failing, 0},
      {"one byte only", shortAnswer, 0x07},
      {"only two bytes are asked for", longAnswer, 0x0201},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.what);
    bus.setMixers({c.mixer, VirtualMixer{}});
    int32_t firmware = -7;
    EXPECT_EQ(NVX_GetFirmwareVersionIndex(0, &firmware), NVX_OK);
    EXPECT_EQ(firmware, c.expected);
  }
}

TEST_F(ApiStatus, InputSelectorIndexesTheReplyByChannel) {
  VirtualMixer mixer;
  mixer.selectors = {1, 2, 3, 0};
  bus.setMixers({mixer});
  const int32_t expected[] = {0, 1, 2, 3, 0};  // channel 0 reads the element no request fills
  for (int32_t channel = 0; channel <= 4; ++channel) {
    int32_t status = -7;
    EXPECT_EQ(NVX_GetMixerInputSelectorStatus(0, channel, &status), NVX_OK) << channel;
    EXPECT_EQ(status, expected[channel]) << channel;
  }
  bus.clearLog();
  int32_t status = 0;
  NVX_GetMixerInputSelectorStatus(0, 1, &status);
  EXPECT_EQ(bus.requests(), (std::vector<std::string>{
                                "0 C0 00 01 00 02 80 02 00 -> 00 01", "0 C0 00 02 00 02 80 02 00 -> 00 02",
                                "0 C0 00 03 00 02 80 02 00 -> 00 03", "0 C0 00 04 00 02 80 02 00 -> 00 00"}));
}

TEST_F(ApiStatus, InputSelectorLastMixerWinsAndAnOutOfRangeValueStopsTheLoop) {
  VirtualMixer a, b, c;
  a.selectors = {2, 4, 4, 4};
  b.selectors = {3, 4, 4, 4};
  bus.setMixers({a, b});
  int32_t status = 0;
  EXPECT_EQ(NVX_GetMixerInputSelectorStatus(0, 1, &status), NVX_OK);
  EXPECT_EQ(status, 3);

  a.selectors = {7, 4, 4, 4};
  c.selectors = {1, 4, 4, 4};
  bus.setMixers({a, c});
  bus.clearLog();
  EXPECT_EQ(NVX_GetMixerInputSelectorStatus(0, 1, &status), NVX_ERROR);
  EXPECT_EQ(status, 7) << "the out-of-range value is stored before it is tested";
  for (const auto &line : bus.log()) EXPECT_NE(line.rfind("1 ", 0), 0u) << "the second mixer was asked: " << line;
}

TEST_F(ApiStatus, InputSelectorSkipsAMixerThatDoesNotOpen) {
  VirtualMixer busy, ok;
  busy.open = "busy";
  ok.selectors = {3, 4, 4, 4};
  bus.setMixers({busy, ok});
  int32_t status = 0;
  EXPECT_EQ(NVX_GetMixerInputSelectorStatus(0, 1, &status), NVX_OK);
  EXPECT_EQ(status, 3);
  EXPECT_EQ(bus.log().front(), "0 open failed");
}

TEST_F(ApiStatus, InputSelectorShortAnswersCarryTheLengthOver) {
  // The first answer moves one byte: every later request asks for one byte, and elements 1-4 all
  // get the internal buffer's second byte, which no answer reached (zero).
  VirtualMixer mixer;
  mixer.selectors = {1, 2, 3, 3};
  mixer.shortReads = {{"0x8002", 1}};
  bus.setMixers({mixer});
  int32_t status = -7;
  EXPECT_EQ(NVX_GetMixerInputSelectorStatus(0, 3, &status), NVX_OK);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(bus.requests(), (std::vector<std::string>{
                                "0 C0 00 01 00 02 80 02 00 -> 00", "0 C0 00 02 00 02 80 01 00 -> 00",
                                "0 C0 00 03 00 02 80 01 00 -> 00", "0 C0 00 04 00 02 80 01 00 -> 00"}));
}

TEST_F(ApiStatus, InputSelectorAFailedFirstRequestMakesTheRestZeroLength) {
  VirtualMixer mixer;
  mixer.fail = {"0x8002"};
  bus.setMixers({mixer});
  int32_t status = -7;
  EXPECT_EQ(NVX_GetMixerInputSelectorStatus(0, 2, &status), NVX_OK);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(bus.requests(), (std::vector<std::string>{
                                "0 C0 00 01 00 02 80 02 00 -> error", "0 C0 00 02 00 02 80 00 00 -> error",
                                "0 C0 00 03 00 02 80 00 00 -> error", "0 C0 00 04 00 02 80 00 00 -> error"}));
}

TEST_F(ApiStatus, SeratoLastMixerWinsAndAFailedReadIsAnError) {
  VirtualMixer on, off, failing, busy;
  on.serato = 1;
  off.serato = 0;
  failing.fail = {"0x8004"};
  busy.open = "busy";
  struct Case {
    const char *what;
    std::vector<VirtualMixer> mixers;
    int32_t result;
    int32_t status;
  };
  const std::vector<Case> cases = {
      {"last one wins", {on, off}, NVX_OK, 0},
      {"active", {off, on}, NVX_OK, 1},
      {"failed read leaves the 0xFF preset", {failing}, NVX_ERROR, -7},
      {"stops at the failing one, after the first was stored", {on, failing, off}, NVX_ERROR, 1},
      {"busy mixer skipped", {busy, on}, NVX_OK, 1},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.what);
    bus.setMixers(c.mixers);
    int32_t status = -7;
    EXPECT_EQ(NVX_GetMixerSeratoActiveStatus(0, &status), c.result);
    EXPECT_EQ(status, c.status);
  }
  VirtualMixer two;
  two.serato = 2;
  bus.setMixers({two});
  int32_t status = -7;
  EXPECT_EQ(NVX_GetMixerSeratoActiveStatus(0, &status), NVX_ERROR);
  EXPECT_EQ(status, -7) << "tested before it is stored";
}

}  // namespace
}  // namespace nvx::test
