// The status queries, the only reads from the mixer: which mixers each asks, and how each handles
// what they answer. Every query starts with its output at -7.
#include <array>

#include "api_fixture.h"

namespace nvx::test {
namespace {

int32_t status;

const Call kFirmware = CALL(NVX_GetFirmwareVersionIndex(0, &status));
const Call kSerato = CALL(NVX_GetMixerSeratoActiveStatus(0, &status));
Call selector(int32_t channel) {
  return {"selector", [channel] { return NVX_GetMixerInputSelectorStatus(0, channel, &status); }};
}

struct StatusCase {
  const char *what;
  std::vector<VirtualMixer> mixers;
  Call query;
  int32_t result, status;
  std::vector<std::string> log = {};  // checked when given
};

void PrintTo(const StatusCase &c, std::ostream *os) { *os << c.what; }

// The four selector reads (wValue 1-4) of mixer 0, each answering "-> <bytes>".
std::vector<std::string> selectorReads(const char *length, const std::array<const char *, 4> &answers) {
  std::vector<std::string> log{"0 open", std::string("0 C0 00 01 00 02 80 02 00 -> ") + answers[0]};
  for (int n = 1; n < 4; ++n)
    log.push_back("0 C0 00 0" + std::to_string(n + 1) + " 00 02 80 " + length + " 00 -> " + answers[n]);
  log.push_back("0 close");
  return log;
}

const StatusCase kStatus[] = {
    {"firmware, no mixer", {}, kFirmware, NVX_OK, -7},
    {"firmware of the first mixer only", {{.firmware = {0x05, 0x01}}, {.firmware = {0x09, 0x09}}}, kFirmware, NVX_OK,
     0x0105, {"0 open", "0 C0 00 00 00 01 80 02 00 -> 05 01", "0 close"}},
    {"firmware, first mixer busy", {{.open = "busy"}, {}}, kFirmware, NVX_OK, -7},
    {"firmware, a failed read gives the cleared buffer", {{.fail = {"0x8001"}}}, kFirmware, NVX_OK, 0},
    {"firmware, one byte only", {{.firmware = {7, 2}, .shortReads = {{"0x8001", 1}}}}, kFirmware, NVX_OK, 0x07},
    {"selector, no mixer", {}, selector(1), NVX_OK, -7},
    {"selector of deck 3", {{.selectors = {1, 2, 3, 0}}}, selector(3), NVX_OK, 3,
     selectorReads("02", {"00 01", "00 02", "00 03", "00 00"})},
    {"selector of deck 4", {{.selectors = {1, 2, 3, 0}}}, selector(4), NVX_OK, 0},
    {"selector of channel 0: the element no request fills", {{.selectors = {1, 2, 3, 0}}}, selector(0), NVX_OK, 0},
    {"selector, the last mixer wins", {{.selectors = {2, 4, 4, 4}}, {.selectors = {3, 4, 4, 4}}}, selector(1), NVX_OK,
     3},
    // Stored before it is tested; the loop stops there and the second mixer is not asked.
    {"selector out of range", {{.selectors = {7, 4, 4, 4}}, {.selectors = {1, 4, 4, 4}}}, selector(1), NVX_ERROR, 7,
     selectorReads("02", {"00 07", "00 04", "00 04", "00 04"})},
    // The first answer moves one byte: every later request asks for one byte, and elements 1-4 all
    // get the internal buffer's second byte, which no answer reached.
    {"selector, short answers", {{.selectors = {1, 2, 3, 3}, .shortReads = {{"0x8002", 1}}}}, selector(3), NVX_OK, 0,
     selectorReads("01", {"00", "00", "00", "00"})},
    {"selector, a failed first request makes the rest zero-length", {{.fail = {"0x8002"}}}, selector(2), NVX_OK, 0,
     selectorReads("00", {"error", "error", "error", "error"})},
    {"serato, no mixer", {}, kSerato, NVX_OK, -7},
    {"serato, the last mixer wins", {{.serato = 1}, {.serato = 0}}, kSerato, NVX_OK, 0},
    {"serato active", {{.serato = 0}, {.serato = 1}}, kSerato, NVX_OK, 1,
     {"0 open", "0 C0 00 00 00 04 80 02 00 -> 00 00", "0 close", "1 open", "1 C0 00 00 00 04 80 02 00 -> 01 00",
      "1 close"}},
    {"serato, a failed read leaves the preset", {{.fail = {"0x8004"}}}, kSerato, NVX_ERROR, -7},
    {"serato stops at a failing mixer", {{.serato = 1}, {.fail = {"0x8004"}}, {.serato = 0}}, kSerato, NVX_ERROR, 1},
    {"serato 2 is tested before it is stored", {{.serato = 2}}, kSerato, NVX_ERROR, -7},
};

class ApiStatus : public ApiTest, public ::testing::WithParamInterface<StatusCase> {};

TEST_P(ApiStatus, AsksTheMixersAndHandsOutWhatTheyAnswer) {
  const auto &c = GetParam();
  bus.setMixers(c.mixers);
  status = -7;
  EXPECT_EQ(c.query.call(), c.result);
  EXPECT_EQ(status, c.status);
  if (!c.log.empty()) {
    EXPECT_EQ(bus.log(), c.log);
  }
}

INSTANTIATE_TEST_SUITE_P(, ApiStatus, ::testing::ValuesIn(kStatus));

}  // namespace
}  // namespace nvx::test
